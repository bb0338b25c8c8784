// The note that an update leaves beside the tables of a site. It says how they were read, and for
// which files: with it the next update knows that nobody else has changed them meanwhile.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/mb_string.h"

namespace zvrsit {

// The note in the folder of this table.
inline std::string NoteBeside(std::string_view recordFile) {
  return std::string(FolderOf(recordFile)) + "NOTE";
}

struct UpdateNote {
  // Must be the same when the note is read: the version of the library, the profile of the site,
  // and the sizes and times of the files of the tables.
  std::vector<std::string> conditions;

  std::uint32_t traits = 0;  // SiteTraits
  bool isExact = false;      // the tables hold nothing of an earlier state of the site
  std::vector<std::string> linkedFolders;
  std::vector<std::string> passedBy;  // what was left out because of its name
  // Pages and sheets that had been changed so late that a later change could give them the same
  // time again.
  std::vector<std::string> young;
  // Files that were saved, removed or moved one by one since.
  std::vector<std::string> saved;
  std::vector<std::string> moved;  // those of them that have come or gone with that

  // False when there is none under these conditions.
  [[nodiscard]] bool Read(const std::string& path);
  // Writes it; false, with no note left, when this fails.
  bool Write(const std::string& path) const;
};

}  // namespace zvrsit
