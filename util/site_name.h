// Which names a site may bear.
#pragma once

#include <string_view>

namespace zvrsit {

// Whether a name can be a site's: it names a folder on every system. Refused are the empty name,
// ".", "..", device names, a dot or space at the end, control characters and \ / : * ? " < > |.
bool IsSiteName(std::string_view name);

}  // namespace zvrsit
