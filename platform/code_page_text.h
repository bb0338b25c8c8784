// Text in the code page: where its characters begin, and how text of other encodings becomes it.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace zvrsit::platform {

// Which bytes begin a double-byte character in the page in force.
const std::array<bool, 256>& LeadBytes();
inline bool IsDbcsLeadByte(unsigned char byte) {
  return LeadBytes()[byte];
}
// Whether the page in force has lead bytes at all.
bool HasLeadBytes();

// Appends one Unicode code point in the code page; '?' where the page has no such character.
void AppendCodePoint(std::string& out, char32_t codePoint);

// Converts text in a named charset (a label of the Encoding Standard, any letter case) into the
// code page. False when the label is unknown; malformed input becomes the page's replacement
// (U+FFFD in UTF-8, else '?'), also from UTF-8 to UTF-8. `out` is overwritten. A byte-order mark is
// a character like any other.
bool ConvertToCodePage(std::string_view bytes, std::string_view label, std::string& out);
// Whether ConvertToCodePage would only copy well-formed text of this label: it is a label of UTF-8,
// and UTF-8 is the code page. A caller can then keep a text that IsValidUtf8 (platform/utf8.h).
bool IsCodePageUtf8(std::string_view label);

}  // namespace zvrsit::platform
