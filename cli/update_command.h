// Bringing the tables of a site up to date with the disk.
#pragma once

#include <string>

#include "cli/session.h"
#include "manager/site_changes.h"
#include "manager/site_totals.h"

namespace zvrsit::cli {

struct Updated {
  bool isRebuilt = false;  // all of the site was read; `changes` is empty then
  SiteUpdates changes;
  SiteTotals totals;
  int code = 0;  // as RebuildSite gives
};

// Brings the site `name` up to date and writes it to disk. A site that was never rebuilt, was left
// not whole, or is one that SiteMgr::SiteUpdate cannot bring up to date is rebuilt; the user's
// marks stay. Throws as Session::Open and RebuildSite.
Updated UpdateSite(const Options& options, const std::string& name, bool showsProgress);

}  // namespace zvrsit::cli
