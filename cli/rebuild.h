// Rebuilding a site and counting it, shared by `rebuild` and `check`.
#pragma once

#include <filesystem>
#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

// While this lives, the manager's walks through the site leave out what no author publishes: the
// program's own database, if that lies in the site (the native folder `database`, by default that
// of the session); and by the web rules its configuration and the folders of version control.
class NotOfTheSite {
 public:
  explicit NotOfTheSite(Session& session, const std::string& database = "");
  ~NotOfTheSite();
  NotOfTheSite(const NotOfTheSite&) = delete;
  NotOfTheSite& operator=(const NotOfTheSite&) = delete;

 private:
  static bool IsLeftOut(const std::string& path, void* context);
  bool IsDatabase(const std::filesystem::path& folder) const;

  SiteMgr& manager_;
  std::filesystem::path database_;  // empty when it is not there
};

// Rebuilds the open site with a progress bar and updates its family. Names on stderr each page and
// folder that could not be read. Gives kClean, or kFileSystem when there were such. Throws Failure
// when the rebuild itself failed or was interrupted. A native folder `database` in the site is left
// out, by default that of the session.
[[nodiscard]] int RebuildSite(Session& session, bool complete, const std::string& database = "",
                              bool showsProgress = true);
// Names on stderr what the last rebuild or update could not read: the same codes.
[[nodiscard]] int TellSkipped(Session& session);
SiteTotals CountSite(Session& session);

// As JSON, or in a line.
void PrintTotals(const SiteTotals& totals, bool json);

}  // namespace zvrsit::cli
