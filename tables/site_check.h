// What is wrong with all tables of a site, and with those of the profiles.
#pragma once

#include <string>

#include "tables/table_faults.h"
#include "tables/table_files.h"

namespace zvrsit {

// Looks at the files on disk and changes nothing. The names are `\` paths of record files. Faults
// are added to `faults`. Time and memory are linear in the size of the files.
void CheckSiteTables(const SiteTableNames& recordFiles, TableFaults& faults);
// A table of servers of which no file is there counts as empty.
void CheckProfileTables(const std::string& siteFile, const std::string& serverFile,
                        TableFaults& faults);

}  // namespace zvrsit
