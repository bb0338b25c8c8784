// A table of the names of elements and attributes: a fixed hash table over their letters as
// numbers, made at compile time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zvrsit {

// Eight bytes of a name in a form that does not depend on ASCII letter case. A letter gives the
// same as its lower-case letter, and nothing else does. A digit, "-" and ":" give what no other
// byte gives. Other bytes may give the same, but no name in a table has them.
constexpr std::uint64_t FoldCase8(std::uint64_t word) {
  return word | ((word >> 1) & 0x2020202020202020);
}

// A name as two words. A short name has at most seven bytes, and the first word is enough for it:
// the length is the lowest byte, and the bytes of the name are the highest. For a longer name the
// two words are the first and the last eight bytes.
struct NameKey {
  std::uint64_t head = 0;
  std::uint64_t tail = 0;
  std::size_t length = 0;
  bool operator==(const NameKey&) const = default;
};

inline constexpr std::size_t kShortName = 7;

constexpr std::uint64_t LoadBytes(const char* from, std::size_t count) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < count; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(from[i])} << (8 * i);
  }
  return word;
}

// The first word of a short name that is not empty, from eight bytes that begin with it.
constexpr std::uint64_t ShortNameHead(std::uint64_t word, std::size_t length) {
  return FoldCase8(word << (-8 * length & 63) | length);
}

constexpr NameKey MakeNameKey(std::string_view name) {
  const std::size_t length = name.size();
  if (length == 0) return {};
  if (length <= kShortName)
    return {ShortNameHead(LoadBytes(name.data(), length), length), 0, length};
  return {FoldCase8(LoadBytes(name.data(), 8)), FoldCase8(LoadBytes(name.data() + length - 8, 8)),
          length};
}

// Names of at most 16 letters to values. `Slots` is a power of two, at least twice the names.
template <class Value, std::size_t Slots>
class NameTable {
 public:
  struct Entry {
    std::string_view name;
    Value value;
  };

  template <std::size_t N>
  explicit constexpr NameTable(const std::array<Entry, N>& entries) {
    static_assert(N * 2 <= Slots);
    for (const Entry& entry : entries) {
      const NameKey key = MakeNameKey(entry.name);
      std::size_t slot = SlotOf(key.head);
      while (slots_[slot].key.length != 0) slot = (slot + 1) % Slots;
      slots_[slot] = {key, entry.value};
    }
  }

  // The value of the name, or `none`.
  Value Find(const NameKey& key, Value none) const {
    for (std::size_t slot = SlotOf(key.head); slots_[slot].key.length != 0;
         slot = (slot + 1) % Slots) {
      if (slots_[slot].key == key) return slots_[slot].value;
    }
    return none;
  }

  // The same for a name that is not empty, in a text with at least eight readable bytes from there
  // on.
  Value FindPadded(const char* name, std::size_t length, Value none) const {
    if (length > kShortName) return Find(MakeNameKey({name, length}), none);
    const std::uint64_t head = ShortNameHead(LoadWord(name), length);
    const Slot& first = slots_[SlotOf(head)];
    if (first.key.head == head) return first.value;
    return Find({head, 0, length}, none);
  }

 private:
  struct Slot {
    NameKey key;
    Value value{};
  };

  static std::uint64_t LoadWord(const char* from) {
    if constexpr (std::endian::native != std::endian::little) return LoadBytes(from, 8);
    std::uint64_t word;
    std::memcpy(&word, from, 8);
    return word;
  }

  static constexpr std::size_t SlotOf(std::uint64_t head) {
    // Fibonacci hashing: the high bits of the product by 2^64 divided by the golden ratio.
    return (head * 0x9E3779B97F4A7C15) >> (64 - std::bit_width(Slots - 1));
  }

  std::array<Slot, Slots> slots_{};
};

}  // namespace zvrsit
