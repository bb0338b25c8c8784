#include "findings/known_files.h"

#include <algorithm>
#include <filesystem>

#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "platform/native_path.h"
#include "util/path_parts.h"
#include "util/url_id.h"

namespace zvrsit {

std::string_view KnownFiles::LastNameOf(std::string_view name) {
  if constexpr (std::filesystem::path::preferred_separator == '\\') return NameInFolder(name);
  return name.substr(name.rfind('/') + 1);
}

KnownFiles::KnownFiles(SiteMgr& manager, const std::string& folder, const KnownFiles* before) {
  const OwnedCells cells(manager.EnumPath());
  for (std::size_t i = 0; cells != nullptr && i < cells->size(); ++i) {
    const SiteRecCell& cell = (*cells)[i];
    const std::string path = cell.GetName();
    const auto number = static_cast<std::size_t>(cell.GetID().id);
    if (number >= files_.size()) files_.resize(number + 1);
    const bool isBelow = path.starts_with(folder) && path.size() > folder.size();
    std::string native;
    if (!platform::ToNativePath(isBelow ? path.substr(folder.size()) : path, native)) native = path;
    const bool isThere = cell.GetFlag() != 0;
    files_[number] = {isThere ? std::move(native) : WithoutCredentials(native), isThere};
    numbers_.push_back(cell.GetID().id);
  }
  if (before != nullptr && HasSameThere(*before)) index_ = before->index_;
}

bool KnownFiles::HasSameThere(const KnownFiles& other) const {
  const std::size_t count = std::max(files_.size(), other.files_.size());
  for (std::size_t i = 0; i < count; ++i) {
    const bool isThere = i < files_.size() && files_[i].isThere;
    if (isThere != (i < other.files_.size() && other.files_[i].isThere)) return false;
    if (isThere && files_[i].name != other.files_[i].name) return false;
  }
  return true;
}

const std::string& KnownFiles::Of(int number) const {
  static const std::string kNone;
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < files_.size() ? files_[index].name : kNone;
}

bool KnownFiles::IsThere(int number) const {
  const auto index = static_cast<std::size_t>(number);
  return number >= 0 && index < files_.size() && files_[index].isThere;
}

std::string KnownFiles::SameButForCase(const std::string& name) {
  const Index& index = TheIndex();
  const int found = index.suggestions->SameButForCase(name);
  return found >= 0 ? index.names[static_cast<std::size_t>(found)] : std::string();
}

std::string KnownFiles::Likeliest(const std::string& name) {
  const Index& index = TheIndex();
  int found = index.suggestions->Likeliest(name);
  if (found < 0) found = index.WithExtension(name);
  if (found < 0) {
    const auto elsewhere = index.byLastName.find(std::string(LastNameOf(name)));
    if (elsewhere != index.byLastName.end()) found = elsewhere->second;
  }
  return found >= 0 ? index.names[static_cast<std::size_t>(found)] : std::string();
}

// A page goes first; -1 for none.
int KnownFiles::Index::WithExtension(const std::string& name) const {
  for (const char* const extension : {".html", ".htm", "."}) {
    const std::string begin = name + extension;
    const auto next = std::ranges::lower_bound(names, begin);
    const bool isIt =
        next != names.end() && next->starts_with(begin) &&
        LastNameOf(*next).size() + name.size() == LastNameOf(name).size() + next->size();
    if (isIt) return static_cast<int>(next - names.begin());
  }
  return -1;
}

const KnownFiles::Index& KnownFiles::TheIndex() {
  if (index_ == nullptr) index_ = std::make_shared<const Index>(files_);
  return *index_;
}

KnownFiles::Index::Index(const std::vector<File>& files) {
  for (const File& file : files) {
    if (file.isThere) names.push_back(file.name);
  }
  std::ranges::sort(names);
  suggestions = std::make_unique<NameSuggestions>(names);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto [entry, isNew] =
        byLastName.try_emplace(std::string(LastNameOf(names[i])), static_cast<int>(i));
    if (!isNew) entry->second = -1;
  }
}

}  // namespace zvrsit
