// ZoneFilters: where in a large file a record with a given number in one of its words may lie.
//
// One saved page looks for its own links among all links of the site. An index over all of them
// would cost more than the rest of the save. So the file is divided into zones of equal length, and
// each zone has a filter that tells of a number whether a record of the zone may have it. The links
// of one page mostly lie side by side, so a walk that asks the filters first reads very few zones.
//
// The filter is a Bloom filter (B. Bloom, Space/time trade-offs in hash coding with allowable
// errors, CACM 13, 1970). It never says "no" of a number that was added, but it may say "perhaps"
// of one that was not. A number is written with two digits, and sets one bit for each. A wrong
// "perhaps" needs another number of the zone with the same first digit and one with the same
// second, which is rare where the numbers of a zone are close to each other. The filters are stored
// bit by bit, not zone by zone: all first bits, then all second bits. So a search for one number
// reads two rows only.
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
  // All records are dead now.
  void Clear() { std::fill(rows_.begin(), rows_.end(), 0); }
  // A record that begins at `offset` has this word. Records beyond the bytes that are followed need
  // not be added.
  void Add(std::int32_t offset, std::int32_t word) {
    if (offset >= end_) return;
    const std::size_t zone = ZoneOf(offset);
    for (const std::size_t row : RowsOf(word)) {
      rows_[row + zone / 64] |= std::uint64_t{1} << zone % 64;
    }
  }
  // The same, called for one record after another from the first on. It is quicker, because many
  // records in a row have the same word.
  void AddNext(std::int32_t offset, std::int32_t word) {
    if (word == runWord_ && offset < runEnd_) return;
    Add(offset, word);
    runWord_ = word;
    runEnd_ = ZoneEnd(offset);
  }

  // The first place, from `offset` on, where a record with this word may begin: `offset` itself,
  // the begin of a zone, or the end of the bytes that are followed.
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
  static constexpr std::uint32_t kDigits = 1024;     // values of one digit
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
  // Records before this offset with this word need not be added: AddNext has just added it there.
  std::int64_t runEnd_ = 0;
  std::int32_t runWord_ = 0;
};

}  // namespace zvrsit
