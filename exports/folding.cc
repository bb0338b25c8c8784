#include "exports/folding.h"

#include <queue>
#include <utility>

namespace zvrsit {
namespace {

std::string_view FolderIn(std::string_view path) {
  const std::size_t separator = path.rfind(kSeparator);
  return path.substr(0, separator == path.npos ? 0 : separator + 1);
}

// The folder above a folder that is not the site folder.
std::string_view Above(std::string_view folder) {
  folder.remove_suffix(1);
  return FolderIn(folder);
}

// A folder to be unfolded, or the files directly in it.
struct Waiting {
  std::size_t size;  // in files
  const std::string* name;
  bool filesAlone;

  bool operator<(const Waiting& other) const {
    return size != other.size ? size < other.size : *name > *other.name;
  }
};

}  // namespace

void Folding::Add(std::string_view path) {
  std::string folder(FolderIn(path));
  Folder* known = &folders_[folder];
  ++known->files;
  ++known->all;
  while (!folder.empty()) {
    std::string above(Above(folder));
    known = &folders_[above];
    known->folders.insert(folder);
    ++known->all;
    folder = std::move(above);
  }
}

void Folding::Fold(std::size_t most) {
  folded_.clear();
  filesFolded_.clear();
  if (most == 0 || folders_.empty()) return;
  std::priority_queue<Waiting> waiting;
  const auto wait = [&](const std::string& name, bool filesAlone) {
    const auto found = folders_.find(name);
    const Folder& folder = found->second;
    const std::size_t size = filesAlone ? folder.files : folder.all;
    if (size > 0) waiting.push({size, &found->first, filesAlone});
  };
  wait("", false);
  for (std::size_t nodes = 1; !waiting.empty();) {
    const auto [size, name, filesAlone] = waiting.top();
    waiting.pop();
    const Folder& folder = folders_.find(*name)->second;
    const std::size_t parts =
        filesAlone ? folder.files : folder.folders.size() + (folder.files > 0 ? 1 : 0);
    if (nodes - 1 + parts > most) {
      (filesAlone ? filesFolded_ : folded_).insert(*name);
      continue;
    }
    nodes += parts - 1;
    if (filesAlone) continue;
    wait(*name, true);
    for (const std::string& below : folder.folders) wait(below, false);
  }
}

const std::string* Folding::FolderOf(std::string_view path) const {
  const auto alone = filesFolded_.find(FolderIn(path));
  if (alone != filesFolded_.end()) return &*alone;
  for (std::string_view folder = FolderIn(path);; folder = Above(folder)) {
    const auto found = folded_.find(folder);
    if (found != folded_.end()) return &*found;
    if (folder.empty()) return nullptr;
  }
}

}  // namespace zvrsit
