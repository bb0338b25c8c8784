#include "links/folder_documents.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/file.h"
#include "platform/single_byte.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

// What stands between the commas of a list, without spaces around it.
std::vector<std::string> SplitList(std::string_view list) {
  std::vector<std::string> words;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(','), list.size());
    std::string_view word = list.substr(0, end);
    while (word.starts_with(' ')) word.remove_prefix(1);
    while (word.ends_with(' ')) word.remove_suffix(1);
    if (!word.empty()) words.emplace_back(word);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return words;
}

}  // namespace

bool EndsAsFolder(std::string_view target) {
  return target.ends_with('/') && FindLastCharMB(target, '/') == target.size() - 1;
}

FileKind KindOnDisk(const std::string& path) {
  platform::FileStat stat;
  if (platform::Stat(path, stat) != 0) return FileKind::kNone;
  return stat.isRegular() ? FileKind::kFile : stat.isFolder() ? FileKind::kFolder : FileKind::kNone;
}

FolderDocuments::FolderDocuments(const std::string* defaultNames, std::string_view extensions,
                                 AskKind kinds)
    : kinds_(std::move(kinds)) {
  if (defaultNames != nullptr) names_ = SplitList(*defaultNames);
  if (names_.empty()) names_.assign(std::begin(kDefaultDocuments), std::end(kDefaultDocuments));
  if (extensions.find_first_of("/\\:") == std::string_view::npos) {
    std::string list(extensions);
    std::ranges::replace(list, ' ', ',');
    extensions_ = SplitList(list);
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

// Empty for a path that is what it says, or nothing. One that ends in "\" is a folder, even if it
// is not there.
std::string FolderDocuments::DocumentOf(const std::string& path) const {
  std::string folder = path;
  if (FolderOf(folder) != folder) {
    std::string file = WithExtension(path);
    if (!file.empty()) return file;
    if (KindOf(folder) != FileKind::kFolder) return "";
    folder.push_back('\\');
  }
  if (names_.size() == 1) return folder + names_.front();
  for (const std::string& name : names_) {
    if (KindOf(folder + name) == FileKind::kFile) return folder + name;
  }
  return folder + names_.front();
}

// Empty where there is no such file, and where the path is that of a file itself.
std::string FolderDocuments::WithExtension(const std::string& path) const {
  if (extensions_.empty() || KindOf(path) == FileKind::kFile) return "";
  for (const std::string& extension : extensions_) {
    std::string file = path + "." + extension;
    if (KindOf(file) == FileKind::kFile) return file;
  }
  return "";
}

std::vector<std::string> FolderDocuments::AlternativesOf(std::string_view path) const {
  std::vector<std::string> stems{std::string(path)};
  for (const std::string& extension : extensions_) {
    if (path.ends_with("." + extension)) {
      stems.emplace_back(path.substr(0, path.size() - extension.size() - 1));
    }
  }
  std::vector<std::string> all = stems;
  for (const std::string& stem : stems) {
    for (const std::string& extension : extensions_) all.push_back(stem + "." + extension);
    if (extensions_.empty()) continue;
    for (const std::string& name : names_) all.push_back(stem + "\\" + name);
  }
  return all;
}

}  // namespace zvrsit
