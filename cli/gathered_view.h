// What a view shows of a site that is open, for `report` and `serve`.
#pragma once

#include <string>

#include "cli/examine.h"
#include "web/site_view.h"

namespace zvrsit::cli {

// Now, in UTC: "2026-11-22T20:15:00".
std::string UtcNow();

// Reads everything but the report and what it is compared with. Throws Failure(kDatabase) when a
// table cannot be read.
void Gather(const Options& options, const FindingOptions& findings, const ExaminedSite& site,
            const FindingReport& report, SiteView& view);

}  // namespace zvrsit::cli
