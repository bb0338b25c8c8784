// The tables of an open site, and whether they are there.
#pragma once

#include <cstdint>
#include <string_view>

#include "links/page_types.h"
#include "storage/records.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"
#include "util/file_type.h"
#include "util/url_id.h"

namespace zvrsit {

// Whether a table is there and its record file is open; HasFiles: its text store too.
template <class Table>
bool HasRecords(const Table* table) {
  return table != nullptr && table->records() != nullptr;
}
template <class Table>
bool HasFiles(const Table* table) {
  return HasRecords(table) && table->strings() != nullptr;
}

// Whether a file of this FT_ code is read for links: pages and style sheets; and if `types` is not
// null, files of these types, and those of links/site_data.h.
inline bool HoldsLinks(std::string_view path, std::uint32_t fileType, const PageTypes* types) {
  return fileType == FT_HTML || fileType == FT_CSS ||
         (types != nullptr && (types->Hold(path) || IsSiteData(PageSyntaxOf(path))));
}
inline bool HoldsLinks(std::string_view path, const SitePathRec& rec, const PageTypes* types) {
  return HoldsLinks(path, static_cast<std::uint32_t>(rec.fileType), types);
}

// Calls visit(number) for each live record number of a table, ascending.
template <class Visit>
void ForEachNumber(const SiteTable& table, Visit visit) {
  for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
    visit(number);
  }
}

inline UrlID PathID(int number) {
  return UrlID(kKindPath, number);
}
inline UrlID FolderID(int number) {
  return UrlID(kKindFolder, number);
}

}  // namespace zvrsit
