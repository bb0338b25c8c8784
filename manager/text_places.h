// Places in a text as people count them.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "manager/site_link.h"
#include "platform/code_page.h"
#include "platform/code_page_text.h"

namespace zvrsit {

// Gives lines and columns for places in a text. The places must be given in ascending order.
class TextPlaces {
 public:
  explicit TextPlaces(std::string_view text) : text_(text) {}

  LinkPlace Of(std::size_t offset) {
    const std::array<bool, 256>& isLead = platform::LeadBytes();
    if (!hasLeadBytes_) SkipLines(offset);
    while (seen_ < offset) {
      const auto byte = static_cast<unsigned char>(text_[seen_]);
      seen_ += isLead[byte] ? 2 : 1;
      if (byte == '\n') {
        ++place_.line;
        place_.column = 1;
      } else if (!isUtf8_ || (byte & 0xC0) != 0x80) {
        ++place_.column;
      }
    }
    return place_;
  }

 private:
  // Columns count in the last line only.
  void SkipLines(std::size_t offset) {
    while (seen_ < offset) {
      const void* const feed = std::memchr(text_.data() + seen_, '\n', offset - seen_);
      if (feed == nullptr) return;
      seen_ = static_cast<std::size_t>(static_cast<const char*>(feed) - text_.data()) + 1;
      ++place_.line;
      place_.column = 1;
    }
  }

  const std::string_view text_;
  const bool hasLeadBytes_ = platform::HasLeadBytes();
  const bool isUtf8_ = platform::CodePage() == platform::kUtf8;
  std::size_t seen_ = 0;
  LinkPlace place_{1, 1};
};

}  // namespace zvrsit
