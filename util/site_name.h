// Which names a site may bear.
#pragma once

#include <string_view>

namespace zvrsit {

// Whether a name can be the name of a site. A site's name is also that of a folder, on every
// system. So these are refused: the empty name, ".", "..", device names, a dot or space at the end,
// control characters and \ / : * ? " < > |.
bool IsSiteName(std::string_view name);

// Whether the name of a file, which is put behind that of a folder, leads out of this folder: by a
// part "..", with either separator. Profiles that were damaged or made by others may hold such
// names.
bool LeavesFolder(std::string_view name);

}  // namespace zvrsit
