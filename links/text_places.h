// Places in a text as people count them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "links/ignored_tag.h"
#include "links/link_place.h"
#include "platform/code_page.h"
#include "platform/code_page_text.h"

namespace zvrsit {

// Lines and columns of places in a text, asked for from front to back.
class TextPlaces {
 public:
  explicit TextPlaces(std::string_view text) : text_(text) {}

  LinkPlace Of(std::size_t offset) {
    if (hasLeadBytes_) {
      StepTo(offset);
    } else {
      SkipTo(offset);
    }
    return place_;
  }

  // The same for a reference of a page, which says whether it is to be told of.
  LinkPlace OfReference(std::size_t offset) {
    LinkPlace place = Of(offset);
    place.isIgnored = IsIgnoredAt(text_, offset);
    return place;
  }

 private:
  void StepTo(std::size_t offset) {
    const std::array<bool, 256>& isLead = platform::LeadBytes();
    while (seen_ < offset) {
      const auto byte = static_cast<unsigned char>(text_[seen_]);
      seen_ += isLead[byte] ? 2 : 1;
      if (byte == '\n') {
        ++place_.line;
        place_.column = 1;
      } else {
        ++place_.column;
      }
    }
  }

  // Columns count in the last line only.
  void SkipTo(std::size_t offset) {
    std::string_view skipped = text_.substr(seen_, offset - seen_);
    seen_ = offset;
    const int feeds = CountBytes(skipped, [](char c) { return c == '\n'; });
    if (feeds > 0) {
      skipped.remove_prefix(skipped.rfind('\n') + 1);
      place_.line += feeds;
      place_.column = 1;
    }
    place_.column += isUtf8_ ? CountBytes(skipped, [](char c) { return (c & 0xC0) != 0x80; })
                             : static_cast<int>(skipped.size());
  }

  // Counts in single bytes, which compilers add 16 at a time. They are emptied before any is full.
  template <typename Wanted>
  static int CountBytes(std::string_view text, Wanted isWanted) {
    constexpr std::size_t kLanes = 64;
    int count = 0;
    while (text.size() >= kLanes) {
      std::array<unsigned char, kLanes> lanes{};
      const std::size_t rounds = std::min<std::size_t>(text.size() / kLanes, 255);
      for (std::size_t round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < kLanes; ++i) lanes[i] += isWanted(text[i]) ? 1 : 0;
        text.remove_prefix(kLanes);
      }
      for (const unsigned char lane : lanes) count += lane;
    }
    for (const char c : text) count += isWanted(c) ? 1 : 0;
    return count;
  }

  const std::string_view text_;
  const bool hasLeadBytes_ = platform::HasLeadBytes();
  const bool isUtf8_ = platform::CodePage() == platform::kUtf8;
  std::size_t seen_ = 0;
  LinkPlace place_{1, 1};
};

}  // namespace zvrsit
