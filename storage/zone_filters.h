// ZoneFilters: which values one word of the records may have in each zone (a fixed number of bytes)
// of a file, so that a walk that looks for one value passes over most of a large file.
//
// Each zone has a Bloom filter (B. Bloom, Space/time trade-offs in hash coding with allowable
// errors, CACM 13, 1970). A filter may say "perhaps" of a value that its zone does not have, but it
// never says "no" of one that was added. A value sets two bits: one for its low digit, one for its
// high digit. So a false "perhaps" needs one value of the zone with the same low digit and one with
// the same high digit, which is rare for numbers that lie in order. Bit n of all filters lies side
// by side, so that a search for one value reads few bytes.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zvrsit {

class ZoneFilters {
 public:
  // Where the zone ends that `offset` lies in.
  static std::int64_t ZoneEnd(std::int32_t offset) {
    return (std::int64_t{offset} / kZone + 1) * kZone;
  }

  // Follows the first `bytes` bytes of the file, of which no value is known yet.
  void Follow(std::int32_t bytes) {
    rowWords_ = (static_cast<std::size_t>(bytes) + kZone * 64 - 1) / (kZone * 64);
    rows_.assign(kBits * rowWords_, 0);
    end_ = bytes;
    runEnd_ = 0;
  }
  // All records in it are dead.
  void Clear() { std::fill(rows_.begin(), rows_.end(), 0); }
  // A record that begins at `offset` has this word. Those behind what it follows need not be told.
  void Add(std::int32_t offset, std::int32_t word) {
    if (offset >= end_) return;
    const std::size_t zone = ZoneOf(offset);
    for (const std::size_t row : RowsOf(word)) {
      rows_[row + zone / 64] |= std::uint64_t{1} << zone % 64;
    }
  }
  // The same for record after record from the begin on, in less time where many have one word.
  void AddNext(std::int32_t offset, std::int32_t word) {
    if (word == runWord_ && offset < runEnd_) return;
    Add(offset, word);
    runWord_ = word;
    runEnd_ = ZoneEnd(offset);
  }

  // The first offset from `offset` on of a place where a record with this word may begin: `offset`
  // itself, or the begin of a zone, or the end of what it follows.
  std::int32_t Next(std::int32_t offset, std::int32_t word) const {
    if (offset >= end_) return offset;
    const auto [low, high] = RowsOf(word);
    const std::size_t first = ZoneOf(offset);
    std::size_t at = first / 64;
    std::uint64_t bits = (rows_[low + at] & rows_[high + at]) >> first % 64 << first % 64;
    while (bits == 0 && ++at < rowWords_) bits = rows_[low + at] & rows_[high + at];
    if (bits == 0) return end_;
    const std::size_t zone = at * 64 + static_cast<std::size_t>(std::countr_zero(bits));
    return zone == first ? offset : static_cast<std::int32_t>(zone) * kZone;
  }

 private:
  static constexpr std::int32_t kZone = 32 << 10;    // bytes
  static constexpr std::uint32_t kDigits = 1024;     // that a number has
  static constexpr std::size_t kBits = 2 * kDigits;  // of a filter

  static std::size_t ZoneOf(std::int32_t offset) {
    return static_cast<std::size_t>(offset) / static_cast<std::size_t>(kZone);
  }
  // Where the rows of a word's bits begin.
  std::array<std::size_t, 2> RowsOf(std::int32_t word) const {
    const auto value = static_cast<std::uint32_t>(word);
    return {value % kDigits * rowWords_, (kDigits + value / kDigits % kDigits) * rowWords_};
  }

  std::vector<std::uint64_t> rows_;  // by bit of the filters, one bit for each zone
  std::size_t rowWords_ = 0;
  std::int32_t end_ = 0;
  // Up to there records with this word need not be added: the last that AddNext was told had it.
  std::int64_t runEnd_ = 0;
  std::int32_t runWord_ = 0;
};

}  // namespace zvrsit
