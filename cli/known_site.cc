#include "cli/known_site.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
std::optional<KnownSite> FindSiteAround(const Options& options,
                                        const std::vector<std::string>& natives) {
  std::optional<KnownSite> innermost;
  try {
    std::error_code error;
    if (!std::filesystem::exists(PathOf(DatabaseFolder(options)) / kSiteProfiles, error)) {
      return std::nullopt;
    }
    Session session(options, Database::kAsk);
    for (const std::string& name : TakeList(session.manager().EnumSiteProf())) {
      SiteProfile profile = ReadProfile(session, name);
      const std::string& folder = profile.folders[kSlotSiteFolder];
      const bool holdsAll = std::ranges::all_of(natives, [&](const std::string& native) {
        return FolderPath(native).starts_with(folder);
      });
      const std::size_t longest =
          innermost ? innermost->profile.folders[kSlotSiteFolder].size() : 0;
      if (holdsAll && folder.size() > longest) innermost = {name, std::move(profile)};
    }
  } catch (const Failure&) {
    return std::nullopt;  // no home folder, or a database that is in use or damaged
  }
  return innermost;
}

}  // namespace zvrsit::cli
