// Damaging the bytes of a file in every way that a reader must survive.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "util/little_endian.h"

namespace zvrsit::test {

// Calls `each(cut)` with the first 0, 1, 2 ... bytes, up to all but the last.
template <class Each>
void CutAtEveryByte(std::string_view bytes, Each each) {
  for (std::size_t length = 0; length < bytes.size(); ++length) each(bytes.substr(0, length));
}

// Calls `each(damaged, offset)` for every byte, with that byte changed: all of its bits turned
// over, then its lowest, then its highest only.
template <class Each>
void FlipEveryByte(std::string_view bytes, Each each) {
  std::string damaged(bytes);
  for (std::size_t offset = 0; offset < bytes.size(); ++offset) {
    for (const int bits : {0xFF, 0x01, 0x80}) {
      damaged[offset] = static_cast<char>(bytes[offset] ^ bits);
      each(std::as_const(damaged), offset);
    }
    damaged[offset] = bytes[offset];
  }
}

// Calls `each(damaged, offset)` for every aligned 32-bit word, with that word set to values that
// break careless arithmetic: -1, the most, the least, a little below the most, and a big count.
template <class Each>
void SpoilEveryWord(std::string_view bytes, Each each) {
  for (std::size_t offset = 0; offset + 4 <= bytes.size(); offset += 4) {
    for (const std::int32_t value : {-1, INT32_MAX, INT32_MIN, INT32_MAX - 15, 0x04000001}) {
      std::string damaged(bytes);
      StoreLE32(damaged.data() + offset, value);
      each(std::as_const(damaged), offset);
    }
  }
}

}  // namespace zvrsit::test
