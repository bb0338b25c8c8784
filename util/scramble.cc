#include "util/scramble.h"

namespace zvrsit {
namespace {

constexpr unsigned kFirst = ';';
// In a short group some bits of the last character carry nothing. They are ones.
constexpr unsigned kOneByteMark = 15;
constexpr unsigned kTwoByteMark = 3;

char Character(unsigned sixBits) {
  return static_cast<char>(sixBits + kFirst);
}
unsigned SixBits(char c) {
  return (static_cast<unsigned char>(c) - kFirst) & 63;
}
unsigned Byte(char c) {
  return static_cast<unsigned char>(c);
}

}  // namespace

std::string Scramble(std::string_view text) {
  std::string result;
  result.reserve(text.size() / 3 * 4 + 3);
  for (; text.size() >= 3; text.remove_prefix(3)) {
    const unsigned group = Byte(text[0]) << 16 | Byte(text[1]) << 8 | Byte(text[2]);
    for (int shift = 18; shift >= 0; shift -= 6) result += Character(group >> shift & 63);
  }
  if (text.size() == 1) {
    const unsigned a = Byte(text[0]);
    result += {Character(a >> 2), Character((a & 3) << 4 | kOneByteMark)};
  } else if (text.size() == 2) {
    const unsigned a = Byte(text[0]), b = Byte(text[1]);
    result += {Character(a >> 2), Character((a & 3) << 4 | b >> 4),
               Character((b & 15) << 2 | kTwoByteMark)};
  }
  return result;
}

std::string Unscramble(std::string_view scrambled) {
  std::string result;
  result.reserve(scrambled.size() / 4 * 3 + 2);
  while (scrambled.size() >= 2) {
    const std::string_view group = scrambled.substr(0, 4);
    unsigned joined = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      joined = joined << 6 | (i < group.size() ? SixBits(group[i]) : 0);
    }
    // k characters hold k - 1 whole bytes.
    for (std::size_t i = 0; i + 1 < group.size(); ++i) {
      result += static_cast<char>(joined >> (16 - 8 * i) & 0xFF);
    }
    scrambled.remove_prefix(group.size());
  }
  return result;
}

}  // namespace zvrsit
