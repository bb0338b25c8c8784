// From the bytes of a style sheet to text in the process's code page.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// Decodes by byte-order mark, then by an @charset rule that stands in the first 1024 bytes exactly
// as `@charset "LABEL";`, then takes the bytes for the code page. The result is a slice of `bytes`
// where nothing had to be converted, else all of `buffer`. Malformed input becomes the code page's
// replacement character.
std::string_view DecodeSheet(std::string_view bytes, std::string& buffer);

}  // namespace zvrsit
