// From the bytes of a style sheet to text in the process's code page.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// The label of the encoding that a sheet says it has: by a byte-order mark, or by an @charset rule
// with a known label that stands in the first 1024 bytes exactly as `@charset "LABEL";`. Empty when
// it says none.
std::string_view DeclaredCharset(std::string_view bytes);

// Decodes a sheet. Its encoding is the one that the sheet says; else `charset`, a label that may be
// empty; else the code page. The result is a part of `bytes` if nothing had to be converted, else
// all of `buffer`. Malformed input becomes the code page's replacement character.
std::string_view DecodeSheet(std::string_view bytes, std::string_view charset, std::string& buffer);

// Whether the encoding must come from elsewhere: the sheet says none, and is not ASCII.
bool DependsOnCharset(std::string_view bytes);

}  // namespace zvrsit
