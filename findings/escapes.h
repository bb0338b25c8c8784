// Names and texts of a site as they can be shown: in a line, in JSON.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// Whether the text is printable ASCII without quotes and `\`, and means that in the code page, so
// that it is the same in UTF-8, in JSON and in a line.
bool IsPlain(std::string_view text);

// A string for JSON, in UTF-8. If the text has bytes that are no UTF-8, each of them is written as
// \xE9 (two upper-case hex digits), and each `\` as \\. The same is done to a text that holds such
// an escape itself. To turn a string of JSON back: decode it if it holds an escape; else it is
// unchanged.
std::string JsonText(std::string_view text);
// Turns it back. The result is in UTF-8, except the bytes that were escaped.
std::string TextOfJson(const std::string& text);
// A string for one line of text. Control characters are written as escapes (\n, \t, \x1b), and `\`
// as \\. On Windows `\` stays: it separates folders there, and no name holds a control character.
std::string LineText(std::string_view text);

}  // namespace zvrsit
