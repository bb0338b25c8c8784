// Tests of single ASCII characters, whatever the locale of the process is.
#pragma once

#include <algorithm>
#include <string_view>

namespace zvrsit {

inline bool IsAsciiDigit(char c) {
  return c >= '0' && c <= '9';
}
inline char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
inline bool IsAsciiAlpha(char c) {
  return AsciiLower(c) >= 'a' && AsciiLower(c) <= 'z';
}
// What the HTML standard calls ASCII whitespace.
inline bool IsHtmlSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r';
}

// Whether `text` is `lower` but for the case of its letters.
inline bool EqualsLower(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return AsciiLower(a) == b; });
}

}  // namespace zvrsit
