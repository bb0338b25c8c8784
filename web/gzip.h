// Data that stands in a page.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// The bytes as gzip; unchanged where the program was built without zlib. Gzip begins with the bytes
// 1F 8B. Throws std::bad_alloc.
std::string Gzip(std::string_view bytes);

// RFC 4648, section 4, with its padding, in one line.
std::string Base64(std::string_view bytes);

}  // namespace zvrsit
