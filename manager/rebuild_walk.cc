// The walk of a rebuild through the site folder.
#include <algorithm>

#include "manager/rebuild.h"
#include "manager/record_access.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

using Identity = std::pair<std::uint64_t, std::uint64_t>;

Identity IdentityOf(const platform::FileStat& found) {
  return {found.device, found.file};
}

}  // namespace

int SiteMgr::Rebuild::WalkFolders() {
  platform::FileStat found;
  if (platform::Stat(siteDir_, found) == 0) entered_.insert(IdentityOf(found));
  const int number = manager_.AddFolder(siteDir_, 0);
  if (number < 0) return -1;
  workList_.push_back({siteDir_, number});

  // The list grows while it is worked on.
  for (std::size_t next = 0; next < workList_.size(); ++next) {
    if (progress_.Cancelled() || WalkFolder(Folder(workList_[next])) < 0) return -1;
  }
  workList_.clear();
  return 0;
}

int SiteMgr::Rebuild::WalkFolder(const Folder& folder) {
  platform::FindData found;
  const platform::FindHandle search = platform::FindFirst(folder.name + "*.*", found);
  if (search == nullptr) {
    manager_.skippedByRebuild_.push_back(folder.name);
    return 0;
  }
  int result = 0;
  do {
    result = Visit(folder, search, found);
  } while (result == 0 && platform::FindNext(search, found));
  platform::FindClose(search);
  return result;
}

// A name with a "#" is left out, on purpose: in a link it would read as that of a fragment.
int SiteMgr::Rebuild::Visit(const Folder& folder, platform::FindState* search,
                            const platform::FindData& entry) {
  const std::string& name = entry.name;
  if (name == "." || name == ".." || FindLastHashMB(name) != std::string::npos) return 0;
  platform::FileStat found;
  if (platform::StatFound(search, entry, found) < 0) return 0;
  const std::string path = folder.name + name;
  if (found.isRegular()) return RegisterFile(folder, path, found);
  return found.isFolder() ? RegisterFolder(folder, path + "\\", found) : 0;
}

int SiteMgr::Rebuild::RegisterFile(const Folder& folder, const std::string& path,
                                   const platform::FileStat& found) {
  if (IsIgnored(path)) return 0;
  SitePathDB& paths = *manager_.pathDB;
  const int known = paths.Find(path);
  if (known < 0) {
    const int number = manager_.AddPathSeen(path, siteDir_, found);  // relates it to its folder
    if (number < 0) return -1;
    SetWalked(number);
    return 0;
  }
  SitePathRec rec;
  if (paths.Get(known, rec) < 0) return -1;
  StoreFileFacts(path, siteDir_, found, rec);
  rec.fileType = static_cast<std::int32_t>(ClassifyFileType(path));
  if (paths.Update(rec) < 0) return -1;
  SetWalked(known);
  return manager_.AddRel(FolderID(folder.number), PathID(known)) < 0 ? -1 : 0;
}

// A folder that is a link is left out: what it leads to is met at its own place, or does not belong
// to the site. Where the system numbers its files, no folder is entered twice either.
int SiteMgr::Rebuild::RegisterFolder(const Folder& folder, const std::string& name,
                                     const platform::FileStat& found) {
  if (IsIgnored(name) || platform::IsLink(name.substr(0, name.size() - 1))) return 0;
  if (found.file != 0 && !entered_.insert(IdentityOf(found)).second) return 0;
  const int number = manager_.AddFolder(name, 0);
  if (number < 0 || manager_.AddRel(FolderID(folder.number), FolderID(number)) < 0) return -1;
  workList_.push_back({name, number});
  return 0;
}

void SiteMgr::Rebuild::SetWalked(int number) {
  const auto index = static_cast<std::size_t>(number);
  if (walked_.size() <= index) walked_.resize(std::max(index + 1, 2 * walked_.size()));
  walked_[index] = true;
}

bool SiteMgr::Rebuild::HasWalked(int number) const {
  const auto index = static_cast<std::size_t>(number);
  return index < walked_.size() && walked_[index];
}

bool SiteMgr::Rebuild::IsIgnored(const std::string& path) const {
  return manager_.ignoreHook_ != nullptr && manager_.ignoreHook_(path, manager_.ignoreContext_);
}

}  // namespace zvrsit
