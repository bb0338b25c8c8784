#include <vector>

#include "platform/file.h"
#include "platform/single_byte.h"

namespace zvrsit::platform {
namespace {

bool IsFolder(const std::string& path) {
  FileStat status;
  return Stat(path, status) == 0 && status.isFolder();
}

// The folder that holds `path`; false when there is no `\` in it. In the root of a drive only `C:`
// or nothing is left of the path, and that names the root.
bool ParentOf(const std::string& path, std::string& parent) {
  const std::size_t separator = FindLastSingleByte(path, '\\');
  if (separator == std::string::npos) return false;
  parent = path.substr(0, separator);
  if (FindLastSingleByte(parent, '\\') == std::string::npos) parent += '\\';
  return true;
}

}  // namespace

int MakeFolderOfPath(const std::string& path) {
  std::vector<std::string> missing;
  std::string current = path;
  for (std::string parent;; current = parent) {
    if (!ParentOf(current, parent)) return -1;
    if (IsFolder(parent)) break;
    // A root that is not there (a missing drive, a relative name) has no folder above it.
    if (parent == current) return -1;
    missing.push_back(parent);
  }
  for (; !missing.empty(); missing.pop_back()) {
    if (MakeFolder(missing.back(), kOwnerFolder) != 0) return -1;
  }
  return 0;
}

}  // namespace zvrsit::platform
