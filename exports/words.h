// Types of files and links in people's words.
#pragma once

#include <cstdint>

namespace zvrsit {

// Of an FT_ code: "page", "image", "file" for any other.
const char* WordOfFileType(std::uint32_t type);
// Of an LT_ code: "link", "image", "script", "reference" for any other.
const char* WordOfLinkType(std::uint32_t type);

}  // namespace zvrsit
