// ProbeTable: a growing hash table with linear probing. The caller gives the hash and says which
// entries are equal, so an entry can stand for a text that lies elsewhere. It differs from the hash
// tables of the standard library in two ways: an entry has no memory of its own, and the caller can
// have the memory of a look-up fetched before the look-up.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/large_memory.h"

namespace zvrsit {

// Entry is a small plain struct with a member `std::uint32_t hash`.
template <class Entry>
class ProbeTable {
 public:
  std::size_t size() const { return used_; }
  bool empty() const { return used_ == 0; }

  // The entry with this hash for which equal(entry) holds, or null. Good until the next change.
  template <class Equal>
  const Entry* Find(std::uint32_t hash, Equal equal) const {
    if (active_ == 0) return nullptr;
    const std::uint32_t mark = Mark(hash);
    for (std::size_t at = mark & mask();; at = (at + 1) & mask()) {
      const Entry& entry = slots_[at];
      if (entry.hash == 0) return nullptr;
      if (entry.hash == mark && equal(entry)) return &entry;
    }
  }
  template <class Equal>
  Entry* Find(std::uint32_t hash, Equal equal) {
    return const_cast<Entry*>(std::as_const(*this).Find(hash, equal));
  }

  // Where Find will look first for this hash, for PrefetchMemory.
  const void* Home(std::uint32_t hash) const {
    return active_ == 0 ? nullptr : &slots_[Mark(hash) & mask()];
  }
  // The first entry with this hash, equal or not; null for none.
  const Entry* Guess(std::uint32_t hash) const {
    return Find(hash, [](const Entry&) { return true; });
  }

  // Adds an entry that Find did not find; its `hash` is set here.
  Entry& Insert(std::uint32_t hash, Entry entry) {
    if ((used_ + 1) * 4 > active_ * 3) Rehash(active_ == 0 ? kFirstSize : active_ * 2);
    entry.hash = Mark(hash);
    ++used_;
    return Place(entry);
  }

  // Takes away an entry that Find gave.
  void Erase(Entry* entry) {
    assert(entry->hash != 0 && used_ > 0);
    std::size_t hole = static_cast<std::size_t>(entry - slots_.data());
    for (std::size_t at = (hole + 1) & mask(); slots_[at].hash != 0; at = (at + 1) & mask()) {
      const std::size_t home = slots_[at].hash & mask();
      // An entry may move back into the hole unless its home lies between the two.
      if (((at - home) & mask()) >= ((at - hole) & mask())) {
        slots_[hole] = slots_[at];
        hole = at;
      }
    }
    slots_[hole].hash = 0;
    --used_;
  }

  // Empties it. This takes time in proportion to the entries that it held. Its memory is kept,
  // except that of a large table.
  void Clear() {
    if (slots_.size() * sizeof(Entry) > kKeptBytes && slots_.size() > used_ * kShare) {
      slots_ = {};
      active_ = 0;
    }
    while (active_ > kFirstSize && active_ > used_ * kShare) active_ /= 2;
    Zero(active_);
    used_ = 0;
  }

  // Makes room for `count` entries at once.
  void Reserve(std::size_t count) {
    std::size_t wanted = kFirstSize;
    while (wanted * 3 < count * 4) wanted *= 2;
    if (wanted > active_) Rehash(wanted);
  }

  template <class Visit>
  void ForEach(Visit visit) {
    for (std::size_t at = 0; at < active_; ++at) {
      if (slots_[at].hash != 0) visit(slots_[at]);
    }
  }

 private:
  using Slots = std::vector<Entry, platform::LargeAllocator<Entry>>;

  static constexpr std::size_t kFirstSize = 16;
  static constexpr std::size_t kKeptBytes = std::size_t{1} << 20;
  static constexpr std::size_t kShare = 4;  // slots for each entry that a table keeps when emptied

  // 0 marks a free slot.
  static std::uint32_t Mark(std::uint32_t hash) { return hash == 0 ? 1 : hash; }
  std::size_t mask() const { return active_ - 1; }

  void Zero(std::size_t count) {
    if (count != 0) std::memset(static_cast<void*>(slots_.data()), 0, count * sizeof(Entry));
  }

  Entry& Place(const Entry& entry) {
    std::size_t at = entry.hash & mask();
    while (slots_[at].hash != 0) at = (at + 1) & mask();
    return slots_[at] = entry;
  }
  void Rehash(std::size_t wanted) {
    if (wanted > slots_.size()) {
      Slots old(wanted);
      old.swap(slots_);
      const std::size_t count = std::exchange(active_, wanted);
      for (std::size_t at = 0; at < count; ++at) {
        if (old[at].hash != 0) Place(old[at]);
      }
      return;
    }
    std::vector<Entry> kept;
    kept.reserve(used_);
    ForEach([&kept](const Entry& entry) { kept.push_back(entry); });
    Zero(wanted);
    active_ = wanted;
    for (const Entry& entry : kept) Place(entry);
  }

  Slots slots_;
  std::size_t active_ = 0;  // a power of two of them are in use, from the first on
  std::size_t used_ = 0;
};

}  // namespace zvrsit
