// Registering and rebuilding a site, shared by `add`, `rebuild` and `check`.
#pragma once

#include <string>

#include "cli/output.h"
#include "cli/session.h"
#include "links/link_rules.h"

namespace zvrsit::cli {

// What `add` and `check` say of a site.
struct NewSite {
  std::string folder;      // native
  std::string top;         // native, absolute or relative to the folder; empty: looked for
  std::string defaultUrl;  // empty: none
  std::string docRoot;     // native; empty: none
  LinkRules rules = LinkRules::Web;
};

// The names of `--rules`.
bool ParseRules(const std::string& word, LinkRules& rules);
const char* RulesName(LinkRules rules);

// Makes the profile of a new site. Throws Failure: kUsage when the name is not allowed or taken,
// kFileSystem when the folder or top file is not there.
void AddSite(Session& session, const std::string& name, const NewSite& site);

struct SiteTotals {
  long files = 0;   // of the site, on disk
  long pages = 0;   // among them
  long sheets = 0;  // among them
  long links = 0;   // link records
  long urls = 0;    // external URLs
};

// Rebuilds the open site with a progress bar and brings its family up to date; names on stderr
// each page and folder that could not be read. Gives kClean, or kFileSystem when some could not.
// Throws Failure when the rebuild itself failed or was interrupted.
int RebuildSite(Session& session, bool complete);
SiteTotals CountSite(Session& session);

void PrintTotals(const SiteTotals& totals);
Json TotalsAsJson(const SiteTotals& totals);

}  // namespace zvrsit::cli
