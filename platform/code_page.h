// The ANSI code page of the process: the encoding of every narrow string of the library.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "platform/api.h"

namespace zvrsit::platform {

inline constexpr unsigned kUtf8 = 65001;

// Sets the code page: 65001 (UTF-8, where POSIX begins), 932, 936, 949, 950, 1361, or a
// single-byte page (1250 to 1258, 874, 437, 850, 28591 to 28605, 20866, 21866). 0, or -1 for one
// that is not known. On Windows the system's page is in force until this is called, and names of
// files stay in it; other pages of one or two bytes a character are known where the system has
// them.
ZVRSIT_API int SetCodePage(unsigned codePage);
ZVRSIT_API unsigned CodePage();

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
// The other way, into UTF-8, for programs that print.
ZVRSIT_API std::string ToUtf8(std::string_view text);

}  // namespace zvrsit::platform
