// Byte searches, case folding and byte replacement on strings in the code page of the process.
//
// Functions whose names end in MB step over a double-byte character as one unit: its lead byte is
// neither compared nor changed, its trail byte not looked at. A lead byte that ends the string
// stands alone. Character tests are ASCII, whatever the locale of the process is.
#pragma once

#include <string>
#include <string_view>

#include "util/path_parts.h"

namespace zvrsit {

// Searches give a byte index, or std::string::npos. These three are plain byte searches.
std::size_t FindChar(std::string_view text, char wanted);
std::size_t FindHash(std::string_view text);   // "#"
std::size_t FindQuery(std::string_view text);  // "?"

// The last single-byte occurrence.
std::size_t FindLastCharMB(std::string_view text, char wanted);
std::size_t FindLastHashMB(std::string_view text);
std::size_t FindLastBackslashMB(std::string_view text);

// In place; all give 0.
int ToUpperMB(std::string& text);
int ToLowerMB(std::string& text);
int ReplaceCharMB(std::string& text, char from, char to);

}  // namespace zvrsit
