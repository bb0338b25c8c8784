// ProbeTable: a growing hash table with linear probing. The caller brings the hash and says what
// equals what, so that an entry can stand for a text that lies elsewhere.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/large_memory.h"

namespace zvrsit {

// Asks for memory that is to be written a little later, to be there by then.
inline void PrefetchMemory(const void* place) {
#if defined(__GNUC__)
  __builtin_prefetch(place, 1);
#else
  static_cast<void>(place);
#endif
}

// Entry is a small plain struct with a member `std::uint32_t hash`.
template <class Entry>
class ProbeTable {
 public:
  std::size_t size() const { return used_; }
  bool empty() const { return used_ == 0; }

  // The entry with this hash for which equal(entry) holds, or null. Good until the next change.
  template <class Equal>
  const Entry* Find(std::uint32_t hash, Equal equal) const {
    if (slots_.empty()) return nullptr;
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

  // Brings the place near where a Find of this hash will look first.
  void Prefetch(std::uint32_t hash) const {
    if (!slots_.empty()) PrefetchMemory(&slots_[Mark(hash) & mask()]);
  }
  // The first entry with this hash, equal or not; null for none.
  const Entry* Guess(std::uint32_t hash) const {
    return Find(hash, [](const Entry&) { return true; });
  }

  // Adds an entry that Find did not find; its `hash` is set here.
  Entry& Insert(std::uint32_t hash, Entry entry) {
    if ((used_ + 1) * 4 > slots_.size() * 3)
      Rehash(slots_.empty() ? kFirstSize : slots_.size() * 2);
    entry.hash = Mark(hash);
    ++used_;
    return Place(entry);
  }

  // Takes away an entry that Find gave.
  void Erase(Entry* entry) {
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

  // Empties it; the memory is kept unless far more than it was in use.
  void Clear() {
    if (slots_.size() > kKeptSize && slots_.size() / kKeptShare > used_) {
      slots_ = {};
    } else if (!slots_.empty()) {
      std::memset(static_cast<void*>(slots_.data()), 0, slots_.size() * sizeof(Entry));
    }
    used_ = 0;
  }

  // Makes room for `count` entries at once.
  void Reserve(std::size_t count) {
    std::size_t wanted = kFirstSize;
    while (wanted * 3 < count * 4) wanted *= 2;
    if (wanted > slots_.size()) Rehash(wanted);
  }

  template <class Visit>
  void ForEach(Visit visit) {
    for (Entry& entry : slots_) {
      if (entry.hash != 0) visit(entry);
    }
  }

 private:
  using Slots = std::vector<Entry, platform::LargeAllocator<Entry>>;

  static constexpr std::size_t kFirstSize = 16;
  static constexpr std::size_t kKeptSize = 128;
  static constexpr std::size_t kKeptShare = 8;

  // 0 marks a free slot.
  static std::uint32_t Mark(std::uint32_t hash) { return hash == 0 ? 1 : hash; }
  std::size_t mask() const { return slots_.size() - 1; }

  Entry& Place(const Entry& entry) {
    std::size_t at = entry.hash & mask();
    while (slots_[at].hash != 0) at = (at + 1) & mask();
    return slots_[at] = entry;
  }
  void Rehash(std::size_t wanted) {
    Slots old(wanted);
    old.swap(slots_);
    for (const Entry& entry : old) {
      if (entry.hash != 0) Place(entry);
    }
  }

  Slots slots_;  // a power of two of them
  std::size_t used_ = 0;
};

}  // namespace zvrsit
