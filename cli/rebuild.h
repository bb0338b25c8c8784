// Rebuilding a site and counting it, shared by `rebuild` and `check`.
#pragma once

#include "cli/output.h"
#include "cli/session.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

// Rebuilds the open site with a progress bar and brings its family up to date; names on stderr
// each page and folder that could not be read. Gives kClean, or kFileSystem when some could not.
// Throws Failure when the rebuild itself failed or was interrupted. A native folder `database` that
// lies in the site is left out, by default that of the session.
int RebuildSite(Session& session, bool complete, const std::string& database = "");
SiteTotals CountSite(Session& session);

void PrintTotals(const SiteTotals& totals);
Json TotalsAsJson(const SiteTotals& totals);

}  // namespace zvrsit::cli
