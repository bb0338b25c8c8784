// ZoneFilters: which values one word of the records may have in each zone (a fixed number of bytes)
// of a file, so that a walk that looks for one value passes over most of a large file.
//
// Each zone has a Bloom filter of one hash function (B. Bloom, Space/time trade-offs in hash coding
// with allowable errors, CACM 13, 1970). A value that was added to a zone is always told there; of
// others a share that is the number of the zone's values over kBits.
#pragma once

#include <algorithm>
#include <array>
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
    zones_.assign((static_cast<std::size_t>(bytes) + kZone - 1) / kZone, {});
    end_ = bytes;
    runEnd_ = 0;
  }
  // All records in it are dead.
  void Clear() { std::fill(zones_.begin(), zones_.end(), Filter{}); }
  // A record that begins at `offset` has this word. Those behind what it follows need not be told.
  void Add(std::int32_t offset, std::int32_t word) {
    if (offset >= end_) return;
    const std::size_t bit = BitOf(word);
    zones_[ZoneOf(offset)][bit / 64] |= std::uint64_t{1} << bit % 64;
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
    const std::size_t bit = BitOf(word);
    const auto mayHave = [bit](const Filter& zone) {
      return (zone[bit / 64] >> bit % 64 & 1) != 0;
    };
    const auto from = zones_.begin() + static_cast<std::ptrdiff_t>(ZoneOf(offset));
    const auto zone = std::find_if(from, zones_.end(), mayHave);
    if (zone == from) return offset;
    return zone == zones_.end() ? end_ : static_cast<std::int32_t>(zone - zones_.begin()) * kZone;
  }

 private:
  static constexpr std::int32_t kZone = 32 << 10;  // bytes
  static constexpr std::size_t kBits = 512;        // a power of two
  using Filter = std::array<std::uint64_t, kBits / 64>;

  static std::size_t ZoneOf(std::int32_t offset) {
    return static_cast<std::size_t>(offset) / static_cast<std::size_t>(kZone);
  }
  // Numbers that follow one another get bits of their own.
  static std::size_t BitOf(std::int32_t word) { return static_cast<std::uint32_t>(word) % kBits; }

  std::vector<Filter> zones_;
  std::int32_t end_ = 0;
  // The records from the last that AddNext was told to there have this word.
  std::int64_t runEnd_ = 0;
  std::int32_t runWord_ = 0;
};

}  // namespace zvrsit
