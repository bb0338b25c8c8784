#include "repair/path_map.h"

#include <string_view>
#include <utility>

#include "util/mb_string.h"

namespace zvrsit {
namespace {

// Whether `path` is `folder`, which has no "\" at its end, or lies in it.
bool IsOf(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '\\');
}

}  // namespace

PathMap::PathMap(std::string from, std::string to)
    : isMove_(true), isFolder_(FolderOf(from) == from), from_(std::move(from)), to_(std::move(to)) {
  if (!isFolder_) return;
  from_.pop_back();
  if (FolderOf(to_) == to_) to_.pop_back();
}

std::string PathMap::Of(const std::string& path) const {
  if (!isMove_) {
    const auto known = single_.find(path);
    return known != single_.end() ? known->second : path;
  }
  const bool moves = isFolder_ ? IsOf(path, from_) : path == from_;
  return moves ? to_ + path.substr(from_.size()) : path;
}

FileKind PathMap::KindAfter(const std::string& path) const {
  if (!isMove_) return KindOnDisk(path);
  if (IsOf(path, to_)) return KindOnDisk(from_ + path.substr(to_.size()));
  if (IsOf(path, from_)) return FileKind::kNone;
  const std::string_view folder =
      FolderOf(path) == path ? std::string_view(path).substr(0, path.size() - 1) : path;
  return IsOf(to_, folder) ? FileKind::kFolder : KindOnDisk(path);
}

}  // namespace zvrsit
