// UTF-8. Runs of ASCII are read many bytes at a time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvrsit::platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// How many bytes at the start of the text are ASCII.
std::size_t AsciiPrefix(std::string_view text);

// Whether the text is well-formed UTF-8 (Unicode, table 3-7), so that a copy of it can be spared.
bool IsValidUtf8(std::string_view text);

// Appends one code point, or several, as UTF-8; U+FFFD for a surrogate or what is above U+10FFFF.
void AppendUtf8(std::string& out, char32_t codePoint);
void AppendUtf8(std::string& out, std::u32string_view codePoints);

// Appends the text with U+FFFD for each maximal part of it that is not well-formed, as the
// Encoding Standard's UTF-8 decoder does.
void AppendUtf8Repaired(std::string& out, std::string_view text);

// One step of decoding: the code point at the start of a text that is not empty, and its bytes.
struct Utf8Step {
  char32_t codePoint;  // U+FFFD when `valid` is false
  unsigned length;     // 1 to 4; of the maximal malformed part when `valid` is false
  bool valid;
};
Utf8Step DecodeUtf8(std::string_view text);

}  // namespace zvrsit::platform
