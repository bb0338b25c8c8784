// Names and texts of a site as they can be shown: in a line, in JSON.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// A string for JSON, in UTF-8. A text with bytes that are no UTF-8 has each of them as \xE9, two
// upper-case hex digits, and each `\` as \\; so has one that holds such an escape by itself. What
// JSON holds is turned back where it holds an escape, and is as it was where it holds none.
std::string JsonText(std::string_view text);
// Turns it back: still in UTF-8, but for the bytes that were escaped.
std::string TextOfJson(const std::string& text);
// A string for one line of text: control characters as escapes (\n, \t, \x1b), and `\` as \\ but on
// Windows, where it separates folders and no name holds a control character.
std::string LineText(std::string_view text);

}  // namespace zvrsit
