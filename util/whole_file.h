// Files that are read and written as a whole. Paths are `\` paths; each gives 0 or -1.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

[[nodiscard]] int ReadWholeFile(const std::string& path, std::string& bytes);
// A file that is there is overwritten.
[[nodiscard]] int WriteWholeFile(const std::string& path, std::string_view bytes);

}  // namespace zvrsit
