// From the bytes of a style sheet to text in the process's code page.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// The label of the encoding that a sheet says it has: by a byte-order mark, or by an @charset rule
// with a known label that stands in the first 1024 bytes exactly as `@charset "LABEL";`. Empty when
// it says none.
std::string_view DeclaredCharset(std::string_view bytes);

// Decodes by what the sheet says, then by `charset`, a label that may be empty, and then takes the
// bytes for the code page. The result is a slice of `bytes` where nothing had to be converted, else
// all of `buffer`. Malformed input becomes the code page's replacement character.
std::string_view DecodeSheet(std::string_view bytes, std::string_view charset, std::string& buffer);

// Whether that takes another encoding than the sheet itself says: it says none and is not ASCII.
bool DependsOnCharset(std::string_view bytes);

}  // namespace zvrsit
