// The classic rules of a SiteUrl without the copies that it makes.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

bool ClassicIsExternal(std::string_view target);
int ClassicLocalPath(std::string_view siteRoot, std::string_view pagePath, std::string_view target,
                     std::string& out);

// Whether the target holds a "#".
bool HasFragment(std::string_view target);

}  // namespace zvrsit
