#include "util/disk_name.h"

#include "platform/folder_search.h"
#include "util/mb_string.h"

namespace zvrsit {

bool IsSpelledAsOnDisk(const std::string& path) {
  platform::FindData found;
  const platform::FindHandle search = platform::FindFirst(path, found);
  const bool isSame = search != nullptr && NameInFolder(path) == found.name;
  platform::FindClose(search);  // also when nothing was found, on purpose
  return isSame;
}

}  // namespace zvrsit
