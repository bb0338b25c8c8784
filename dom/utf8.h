// Checking UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace zvrsit {

// Whether all of `bytes` is well-formed UTF-8.
bool IsUtf8(std::string_view bytes);

// How much of the text beyond ASCII is UTF-8.
struct Utf8Share {
  std::size_t wellFormed = 0;  // sequences
  std::size_t malformed = 0;   // bytes
};
Utf8Share CountUtf8(std::string_view bytes);

}  // namespace zvrsit
