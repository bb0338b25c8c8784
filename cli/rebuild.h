// Rebuilding a site and counting it, shared by `rebuild` and `check`.
#pragma once

#include <filesystem>
#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

// While this lives, the manager's walks through the site leave out the program's own database, if
// that lies in the site: the native folder `database`, by default that of the session.
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

// Rebuilds the open site with a progress bar and updates its family. Names on stderr each page and
// folder that could not be read. Gives kClean, or kFileSystem when there were such. Throws Failure
// when the rebuild itself failed or was interrupted. A native folder `database` in the site is left
// out, by default that of the session.
[[nodiscard]] int RebuildSite(Session& session, bool complete, const std::string& database = "",
                              bool showsProgress = true);
SiteTotals CountSite(Session& session);

// As JSON, or in a line.
void PrintTotals(const SiteTotals& totals, bool json);

}  // namespace zvrsit::cli
