// Rebuilding a site and counting it, shared by `rebuild` and `check`.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

// What lies in the folder of a site and is left out of it, as no author publishes it: the program's
// own database; and by the web rules the configuration and the folders of version control.
class LeftOut {
 public:
  // `database`: a native folder.
  LeftOut(LinkRules rules, const std::string& database);
  bool HasFolder(const std::filesystem::path& folder) const;
  bool HasFile(std::string_view name) const;  // by its last name

 private:
  const bool leavesOutTools_;
  std::filesystem::path database_;  // empty when it is not there
};

// While this lives, the manager's walks through the site leave that out. `database` is by default
// that of the session.
class NotOfTheSite {
 public:
  explicit NotOfTheSite(Session& session, const std::string& database = "");
  ~NotOfTheSite();
  NotOfTheSite(const NotOfTheSite&) = delete;
  NotOfTheSite& operator=(const NotOfTheSite&) = delete;

 private:
  static bool IsLeftOut(const std::string& path, void* context);

  SiteMgr& manager_;
  const LeftOut leftOut_;
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
