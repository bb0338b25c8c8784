// What the files of tables are called.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "storage/file_names.h"
#include "storage/records.h"

namespace zvrsit {

// The five tables of a site, in the order in which they are opened. For each: the word of the
// profile that holds the name of its record file, and what this name has after the site's name.
struct SiteTableFile {
  std::int32_t SiteSiteRec::*word;
  std::string_view suffix;
};
inline constexpr std::array<SiteTableFile, 5> kSiteTableFiles{{{&SiteSiteRec::urlFile, "\\UR"},
                                                               {&SiteSiteRec::pathFile, "\\PR"},
                                                               {&SiteSiteRec::linkFile, "\\LR"},
                                                               {&SiteSiteRec::folderFile, "\\FR"},
                                                               {&SiteSiteRec::relFile, "\\RR"}}};
// Names or paths of them, in that order.
using SiteTableNames = std::array<std::string, kSiteTableFiles.size()>;

// The name of the file of a table's texts, from that of its records: the last character becomes
// "S".
inline std::string TextFileOf(std::string recordFile) {
  if (!recordFile.empty()) recordFile.back() = 'S';
  return recordFile;
}

// Calls visit(path) for each file that a table may have: its records and texts, and the files that
// backing up and packing leave.
template <class Visit>
void ForEachFileOfTable(const std::string& recordFile, Visit visit) {
  for (const std::string& file : {recordFile, TextFileOf(recordFile)}) {
    for (const char* suffix : {"", kBackupSuffix, kPackSuffix}) visit(file + suffix);
  }
}

}  // namespace zvrsit
