// Reads the tables of an export from a site.
#pragma once

#include <functional>
#include <string>

#include "exports/rows.h"
#include "findings/finding.h"

namespace zvrsit {

class SiteMgr;

struct ExportedSite {
  std::string name;    // of its profile
  std::string folder;  // native, with its separator at the end
  // How a `\` path is named: relative to the folder when it lies below it.
  std::function<std::string(const std::string& path)> nameOf;
};

// Writes everything but Finish into `rows`, in the order of the record numbers. `report`, if it is
// not null, becomes the tables of findings. It reads the pages that have links, for their places.
// 0, or -1 when a table cannot be read.
[[nodiscard]] int ExportSite(SiteMgr& manager, const ExportedSite& site,
                             const FindingReport* report, ExportRows& rows);

}  // namespace zvrsit
