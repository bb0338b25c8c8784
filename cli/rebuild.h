// Rebuilding a site and counting it, shared by `rebuild` and `check`.
#pragma once

#include <filesystem>
#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

// Keeps the manager's walks through the site, for as long as this lives, out of the program's own
// database, where that lies in the site: the native folder `database`, by default that of the
// session.
class DatabaseLeftOut {
 public:
  explicit DatabaseLeftOut(Session& session, const std::string& database = "");
  ~DatabaseLeftOut();
  DatabaseLeftOut(const DatabaseLeftOut&) = delete;
  DatabaseLeftOut& operator=(const DatabaseLeftOut&) = delete;

 private:
  static bool IsDatabase(const std::string& path, void* context);

  SiteMgr& manager_;
  std::filesystem::path folder_;
};

// Rebuilds the open site with a progress bar and brings its family up to date; names on stderr
// each page and folder that could not be read. Gives kClean, or kFileSystem when some could not.
// Throws Failure when the rebuild itself failed or was interrupted. A native folder `database` that
// lies in the site is left out, by default that of the session.
int RebuildSite(Session& session, bool complete, const std::string& database = "");
SiteTotals CountSite(Session& session);

void PrintTotals(const SiteTotals& totals);
Json TotalsAsJson(const SiteTotals& totals);

}  // namespace zvrsit::cli
