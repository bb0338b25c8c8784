#include "cli/external_check.h"

#include <filesystem>
#include <map>

#include "cli/exit_code.h"
#include "cli/known_site.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "cli/site_profile.h"
#include "cli/table_files.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

Rule RuleOf(UrlState state) {
  switch (state) {
    case UrlState::kMoved:
      return Rule::kExternalMoved;
    case UrlState::kUnsure:
      return Rule::kExternalUnsure;
    case UrlState::kMissingFragment:
      return Rule::kMissingFragment;
    default:
      return Rule::kExternalBroken;
  }
}

}  // namespace

std::vector<UrlFinding> FindingsOf(const std::vector<LinkedUrl>& urls,
                                   const std::vector<UrlResult>& results) {
  std::vector<UrlFinding> findings;
  for (std::size_t i = 0; i < urls.size(); ++i) {
    const UrlResult& result = results[i];
    if (result.state == UrlState::kOk || result.state == UrlState::kUnasked) continue;
    findings.push_back({urls[i].id, RuleOf(result.state), result.url,
                        result.url + " " + result.words, result.movedTo});
  }
  return findings;
}

std::string KeptFileOfSite(const Session& session, const std::string& name) {
  return NameOf(PathOf(session.FolderOfTables(name)) / kKeptAnswers);
}

std::string KeptFileOfFolder(const Options& options, const std::string& folder) {
  try {
    const std::optional<KnownSite> site = FindSiteAround(options, {folder});
    if (site && site->profile.folders[kSlotSiteFolder] == FolderPath(folder)) {
      return KeptFileOfSite(Session(options, Database::kAsk), site->name);
    }
    const fs::path database = PathOf(DatabaseFolder(options));
    return MakeOwnFolder(database) ? "" : NameOf(database / kKeptAnswers);
  } catch (const Failure&) {
    return "";  // no home folder, or a database that is in use: nothing is kept
  }
}

}  // namespace zvrsit::cli
