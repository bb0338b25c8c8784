// The two parts of a `\` path, or of a file's path on Windows.
#pragma once

#include <string_view>

#include "platform/api.h"

namespace zvrsit {

// Everything up to the last `\` that is no trail byte, with it: the folder of a path. Empty without
// one.
ZVRSIT_API std::string_view FolderOf(std::string_view path);
// What stands after it: the name of a file.
ZVRSIT_API std::string_view NameInFolder(std::string_view path);

}  // namespace zvrsit
