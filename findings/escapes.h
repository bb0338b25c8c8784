// Names and texts of a site as they can be shown: in a line, in JSON.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
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
// A string for one line of text. Control characters are written as escapes (\n, \t, \x1b, \u009b),
// also those that turn the direction of writing (\u202e), and `\` as \\. On Windows `\` stays: it
// separates folders there, and no name holds a control character.
std::string LineText(std::string_view text);

// How many bytes the character at the start of a text in UTF-8 has, if it may only be shown as an
// escape: a control character that is no line end and no tab, or one that turns the direction of
// writing. Else 0.
std::size_t ControlLength(std::string_view text);

// LineText for a text in UTF-8 whose line ends, tabs and `\` stay. JSON still means the same.
std::string WithoutControls(std::string text);

// A field of CSV (RFC 4180), quoted where it has to be. A table program would calculate a field
// that begins with one of = + - @, so that one has a "'" before it, and so has one that begins with
// "'" itself.
std::string CsvField(std::string_view text);
// A text for XML, in UTF-8. Control characters, which XML cannot hold, are those of LineText.
std::string XmlText(std::string_view text);
// The same for a text in UTF-8 without control characters.
std::string XmlMarkup(std::string_view utf8);

// Writes some bytes of a text otherwise.
class Replacements {
 public:
  struct Row {
    char byte;
    std::string_view text;
  };

  constexpr Replacements(std::initializer_list<Row> rows) {
    for (const Row& row : rows) texts_[static_cast<unsigned char>(row.byte)] = row.text;
  }

  std::string In(std::string_view text) const {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
      const std::string_view replacement = texts_[static_cast<unsigned char>(c)];
      if (replacement.empty()) {
        out += c;
      } else {
        out += replacement;
      }
    }
    return out;
  }

 private:
  std::array<std::string_view, 256> texts_{};
};

}  // namespace zvrsit
