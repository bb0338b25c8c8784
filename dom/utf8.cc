#include "dom/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace zvrsit {
namespace {

unsigned char At(std::string_view bytes, std::size_t i) {
  return static_cast<unsigned char>(bytes[i]);
}

// The length of the well-formed sequence at `i`, which is no ASCII byte; 0 when it is malformed.
// The ranges of the second byte keep out overlong forms, surrogates and what lies beyond U+10FFFF.
std::size_t SequenceLength(std::string_view bytes, std::size_t i) {
  const unsigned char lead = At(bytes, i);
  if (lead < 0xC2 || lead > 0xF4) return 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (bytes.size() - i < length) return 0;
  const unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (At(bytes, i + 1) < lowest || At(bytes, i + 1) > highest) return 0;
  for (std::size_t k = 2; k < length; ++k) {
    if ((At(bytes, i + k) & 0xC0) != 0x80) return 0;
  }
  return length;
}

// The first byte at or behind `i` that is not ASCII.
std::size_t SkipAscii(std::string_view bytes, std::size_t i) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  std::uint64_t words[4];
  for (; bytes.size() - i >= sizeof words; i += sizeof words) {
    std::memcpy(words, bytes.data() + i, sizeof words);
    if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0) break;
  }
  while (i < bytes.size() && At(bytes, i) < 0x80) ++i;
  return i;
}

}  // namespace

bool IsUtf8(std::string_view bytes) {
  for (std::size_t i = 0; (i = SkipAscii(bytes, i)) < bytes.size();) {
    const std::size_t length = SequenceLength(bytes, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

Utf8Share CountUtf8(std::string_view bytes) {
  Utf8Share share;
  for (std::size_t i = 0; (i = SkipAscii(bytes, i)) < bytes.size();) {
    const std::size_t length = SequenceLength(bytes, i);
    ++(length != 0 ? share.wellFormed : share.malformed);
    i += std::max<std::size_t>(length, 1);
  }
  return share;
}

}  // namespace zvrsit
