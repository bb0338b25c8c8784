// The site of the database that files belong to.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/session.h"

namespace zvrsit::cli {

struct KnownSite {
  std::string name;
  SiteProfile profile;
};

// The site in whose folder all these native files and folders lie, or which they are; the innermost
// one. Nothing when there is none, and also when the database cannot be asked.
std::optional<KnownSite> FindSiteAround(const Options& options,
                                        const std::vector<std::string>& natives);

}  // namespace zvrsit::cli
