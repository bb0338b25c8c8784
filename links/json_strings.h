// The strings of a JSON text (RFC 8259) with the places where they stand.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace zvrsit {

// Called with each string that is a value, not a name. `path` says where it stands: the names
// around it with dots between them, each cut at 64 bytes, and "[]" after that of a list:
// "icons[].src". `text`: escapes decoded, in the code page. `offset`: of its first byte after the
// quote.
using JsonVisit =
    std::function<void(std::string_view path, const std::string& text, std::size_t offset)>;

// Visits the strings of `text`, in order. False when the text is no JSON, or is nested deeper than
// any page needs; what was visited then means nothing.
[[nodiscard]] bool ReadJsonStrings(std::string_view text, const JsonVisit& visit);

}  // namespace zvrsit
