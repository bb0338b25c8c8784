// Files that pages load.
#pragma once

#include <string_view>

namespace zvrsit {

// Whether a file of this path or name is an image, a script or something else that pages load, by
// its extension.
bool IsAssetName(std::string_view path);

}  // namespace zvrsit
