// What the last few texts stood for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zvrsit {

// For texts of which the same few come again and again. A look-up compares with each and computes
// no hash.
template <class Value>
class RecentTexts {
 public:
  static constexpr std::size_t kKept = 16;
  // Longer texts are not kept.
  static constexpr std::size_t kLongest = 1024;

  // Null when the text is not among them; else good until the next Put() or clear().
  const Value* Find(std::string_view text) const {
    for (const auto& [known, value] : entries_) {
      if (known == text) return &value;
    }
    return nullptr;
  }

  // Remembers a text that Find() did not find, in place of the one that came first.
  void Put(std::string_view text, Value value) {
    if (text.size() > kLongest) return;
    if (entries_.size() < kKept) {
      entries_.emplace_back(text, std::move(value));
    } else {
      entries_[oldest_] = {std::string(text), std::move(value)};
      oldest_ = (oldest_ + 1) % kKept;
    }
  }

  void clear() {
    entries_.clear();
    oldest_ = 0;
  }

 private:
  std::vector<std::pair<std::string, Value>> entries_;
  std::size_t oldest_ = 0;  // once all places are taken
};

}  // namespace zvrsit
