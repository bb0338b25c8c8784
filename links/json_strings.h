// The strings of a JSON text (RFC 8259) with the places where they stand.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

// A string that is a value, not a name.
struct JsonString {
  // Where it stands: the names around it with dots between them, and "[]" after that of a list:
  // "icons[].src".
  std::string path;
  std::string text;    // escapes decoded, in the code page
  std::size_t offset;  // of its first byte after the quote
};

// Adds the strings of `text`, in order. False when the text is no JSON, or is nested deeper than
// any page needs; what was added then means nothing.
[[nodiscard]] bool ReadJsonStrings(std::string_view text, std::vector<JsonString>& strings);

}  // namespace zvrsit
