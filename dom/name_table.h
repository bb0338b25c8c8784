// Looking up the names of elements and attributes: a fixed hash table over their first and last
// eight letters, made at compile time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zvrsit {

// `word` with every ASCII capital made small, eight bytes at once.
constexpr std::uint64_t LowerAscii8(std::uint64_t word) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  const std::uint64_t low = word & (kOnes * 0x7F);
  const std::uint64_t fromA = low + kOnes * (0x80 - 'A');
  const std::uint64_t afterZ = low + kOnes * (0x7F - 'Z');
  const std::uint64_t capitals = fromA & ~afterZ & ~word & (kOnes * 0x80);
  return word | (capitals >> 2);
}

// A name as two words: its first eight bytes (fewer: filled with zeros) and, of a longer name, its
// last eight.
struct NameKey {
  std::uint64_t head = 0;
  std::uint64_t tail = 0;
  std::size_t length = 0;
  bool operator==(const NameKey&) const = default;
};

constexpr std::uint64_t LoadBytes(const char* from, std::size_t count) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < count; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(from[i])} << (8 * i);
  }
  return word;
}

constexpr NameKey MakeNameKey(std::string_view name) {
  if (name.size() <= 8) return {LowerAscii8(LoadBytes(name.data(), name.size())), 0, name.size()};
  return {LowerAscii8(LoadBytes(name.data(), 8)),
          LowerAscii8(LoadBytes(name.data() + name.size() - 8, 8)), name.size()};
}

// The same for a name in a text that goes on for at least eight readable bytes.
inline NameKey MakeNameKeyPadded(const char* name, std::size_t length) {
  if constexpr (std::endian::native != std::endian::little) return MakeNameKey({name, length});
  std::uint64_t head;
  std::memcpy(&head, name, 8);
  if (length < 8) head &= (std::uint64_t{1} << (8 * length)) - 1;
  std::uint64_t tail = 0;
  if (length > 8) std::memcpy(&tail, name + length - 8, 8);
  return {LowerAscii8(head), LowerAscii8(tail), length};
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
      std::size_t slot = SlotOf(key);
      while (slots_[slot].key.length != 0) slot = (slot + 1) % Slots;
      slots_[slot] = {key, entry.value};
    }
  }

  // The value of the name, or `none`.
  Value Find(const NameKey& key, Value none) const {
    for (std::size_t slot = SlotOf(key); slots_[slot].key.length != 0; slot = (slot + 1) % Slots) {
      if (slots_[slot].key == key) return slots_[slot].value;
    }
    return none;
  }

 private:
  struct Slot {
    NameKey key;
    Value value{};
  };

  static constexpr std::size_t SlotOf(const NameKey& key) {
    // Fibonacci hashing: the high bits of the product by 2^64 divided by the golden ratio.
    return (key.head * 0x9E3779B97F4A7C15) >> (64 - std::bit_width(Slots - 1));
  }

  std::array<Slot, Slots> slots_{};
};

}  // namespace zvrsit
