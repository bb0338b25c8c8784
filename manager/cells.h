// Filling the rows of an answer.
#pragma once

#include <memory>
#include <string_view>

#include "manager/record_access.h"
#include "util/site_rec_cell.h"
#include "util/vec.h"

namespace zvrsit {

using Cells = vec<SiteRecCell>;

// Whether `path` lies below `siteDir`, which ends in `\`.
inline bool LiesBelow(std::string_view path, std::string_view siteDir) {
  return path.size() >= siteDir.size() && path.substr(0, siteDir.size()) == siteDir;
}

// A file: name its path, its title, type, modification time and size; flag 1 when it is there.
// Size 0xFFFFFFFF and time 0 for a file that was never seen on disk.
SiteRecCell PathCell(const SitePathDB& paths, const SitePathRec& rec);
// A URL: name its text; time and flag are when and how it was last checked.
SiteRecCell UrlCell(const SiteUrlDB& urls, const SiteUrlRec& rec);
// A folder: name its path.
SiteRecCell FolderCell(const SiteFolderDB& folders, int number);

}  // namespace zvrsit
