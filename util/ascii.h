// Single ASCII characters, whatever the locale of the process is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/single_byte.h"

namespace zvrsit {

using platform::IsAsciiLetter;
using platform::LowerAscii;

inline bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}
// What the HTML standard calls ASCII whitespace.
inline bool IsHtmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

// Makes every letter lower case. For ASCII words only: bytes of double-byte characters are changed
// too.
inline void LowerAsciiLetters(std::string& text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerAscii);
}

// Whether `text` is the ASCII word `lower` except for the case of its letters.
inline bool EqualsLower(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return LowerAscii(a) == b; });
}
// The same for one of several words.
template <std::size_t kCount>
bool IsAmongLower(std::string_view text, const std::string_view (&lower)[kCount]) {
  return std::any_of(lower, lower + kCount,
                     [text](std::string_view word) { return EqualsLower(text, word); });
}

}  // namespace zvrsit
