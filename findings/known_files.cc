#include "findings/known_files.h"

#include <algorithm>
#include <filesystem>

#include "findings/owned_cells.h"
#include "platform/native_path.h"
#include "util/path_parts.h"
#include "util/url_id.h"

namespace zvrsit {

std::string_view KnownFiles::LastNameOf(std::string_view name) {
  if constexpr (std::filesystem::path::preferred_separator == '\\') return NameInFolder(name);
  return name.substr(name.rfind('/') + 1);
}

KnownFiles::KnownFiles(SiteMgr& manager, const std::string& folder) {
  const OwnedCells cells(manager.EnumPath());
  for (std::size_t i = 0; cells != nullptr && i < cells->size(); ++i) {
    const SiteRecCell& cell = (*cells)[i];
    const std::string path = cell.GetName();
    const auto number = static_cast<std::size_t>(cell.GetID().id);
    if (number >= files_.size()) files_.resize(number + 1);
    const bool isBelow = path.starts_with(folder) && path.size() > folder.size();
    std::string native;
    if (!platform::ToNativePath(isBelow ? path.substr(folder.size()) : path, native)) native = path;
    files_[number] = {std::move(native), cell.GetFlag() != 0};
    numbers_.push_back(cell.GetID().id);
  }
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
  Index();
  const int found = near_->SameButForCase(name);
  return found >= 0 ? there_[static_cast<std::size_t>(found)] : std::string();
}

std::string KnownFiles::Likeliest(const std::string& name) {
  Index();
  int found = near_->Likeliest(name);
  if (found < 0) found = WithExtension(name);
  if (found < 0) {
    const auto elsewhere = byLastName_.find(std::string(LastNameOf(name)));
    if (elsewhere != byLastName_.end()) found = elsewhere->second;
  }
  return found >= 0 ? there_[static_cast<std::size_t>(found)] : std::string();
}

// A page goes first; -1 for none.
int KnownFiles::WithExtension(const std::string& name) const {
  for (const char* const extension : {".html", ".htm", "."}) {
    const std::string begin = name + extension;
    const auto next = std::ranges::lower_bound(there_, begin);
    const bool isIt =
        next != there_.end() && next->starts_with(begin) &&
        LastNameOf(*next).size() + name.size() == LastNameOf(name).size() + next->size();
    if (isIt) return static_cast<int>(next - there_.begin());
  }
  return -1;
}

void KnownFiles::Index() {
  if (near_ != nullptr) return;
  for (const File& file : files_) {
    if (file.isThere) there_.push_back(file.name);
  }
  std::ranges::sort(there_);
  near_ = std::make_unique<NameSuggestions>(there_);
  for (std::size_t i = 0; i < there_.size(); ++i) {
    const auto [entry, isNew] =
        byLastName_.try_emplace(std::string(LastNameOf(there_[i])), static_cast<int>(i));
    if (!isNew) entry->second = -1;
  }
}

}  // namespace zvrsit
