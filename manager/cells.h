// Filling the rows of an answer.
#pragma once

#include <string>
#include <vector>

#include "manager/record_access.h"
#include "util/site_rec_cell.h"
#include "util/vec.h"

namespace zvrsit {

using Cells = vec<SiteRecCell>;

// A file, as SiteMgr::EnumPath has it.
SiteRecCell PathCell(const SitePathDB& paths, const SitePathRec& rec);
// A URL, as SiteMgr::EnumUrl has it.
SiteRecCell UrlCell(const SiteUrlDB& urls, const SiteUrlRec& rec);
// A folder by its path; flag 0.
SiteRecCell FolderCell(const SiteFolderDB& folders, int number);

// The names of a table by record number, as strings that the caller of a query must give back.
std::vector<std::string*>* ListNames(const NamedTableBase& table);

}  // namespace zvrsit
