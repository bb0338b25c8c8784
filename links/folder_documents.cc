#include "links/folder_documents.h"

#include <algorithm>
#include <iterator>

#include "platform/file.h"
#include "platform/single_byte.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

bool IsFolder(const std::string& path) {
  platform::FileStat stat;
  return platform::Stat(path, stat) == 0 && stat.isFolder();
}

bool IsFile(const std::string& path) {
  platform::FileStat stat;
  return platform::Stat(path, stat) == 0 && stat.isRegular();
}

}  // namespace

bool EndsAsFolder(std::string_view target) {
  return target.ends_with('/') && FindLastCharMB(target, '/') == target.size() - 1;
}

FolderDocuments::FolderDocuments(const std::string* defaultName) {
  if (defaultName != nullptr && !defaultName->empty()) {
    names_ = {*defaultName};
  } else {
    names_.assign(std::begin(kDefaultDocuments), std::end(kDefaultDocuments));
  }
}

bool FolderDocuments::MayBe(std::string_view path) const {
  const std::string_view name = NameInFolder(path);
  return name.size() < path.size() && std::ranges::any_of(names_, [&](const std::string& known) {
           return platform::EqualButForCase(known, name);
         });
}

void FolderDocuments::ToDocument(std::string& path) {
  auto known = known_.find(path);
  if (known == known_.end()) known = known_.emplace(path, DocumentOf(path)).first;
  if (!known->second.empty()) path = known->second;
}

// Empty for a path that is no folder. A path that ends in "\" is one, even if it is not there.
std::string FolderDocuments::DocumentOf(const std::string& path) const {
  std::string folder = path;
  if (FolderOf(folder) != folder) {
    if (!IsFolder(folder)) return "";
    folder.push_back('\\');
  }
  if (names_.size() == 1) return folder + names_.front();
  for (const std::string& name : names_) {
    if (IsFile(folder + name)) return folder + name;
  }
  return folder + names_.front();
}

}  // namespace zvrsit
