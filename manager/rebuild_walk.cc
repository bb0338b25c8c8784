// The walk of a rebuild through the site folder.
#include <algorithm>

#include "manager/rebuild.h"
#include "manager/record_access.h"
#include "manager/site_walk.h"
#include "platform/file.h"
#include "util/file_type.h"

namespace zvrsit {

int SiteMgr::Rebuild::WalkFolders() {
  const int number = manager_.AddFolder(siteDir_, 0);
  if (number < 0) return -1;
  SiteWalk::Steps steps;
  steps.file = [this](int folder, const std::string& path, const platform::FileStat& found) {
    return RegisterFile(folder, path, found);
  };
  steps.folder = [this](int parent, const std::string& name) {
    return RegisterFolder(parent, name);
  };
  steps.nextFolder = [this] { return progress_.Cancelled() ? -1 : 0; };
  steps.unlisted = [this](const std::string& name) {
    manager_.inside->skippedByRebuild.push_back(name);
  };
  steps.leftOut = [this](const std::string& native) {
    manager_.inside->leftOutByRebuild.push_back(native);
  };
  steps.passedBy = [this](const std::string& path) { reading_.passedBy.push_back(path); };
  steps.linkedFolder = [this](const std::string& name) { reading_.linkedFolders.push_back(name); };
  return SiteWalk(std::move(steps), manager_.inside->types(), manager_.inside->ignoreHook,
                  manager_.inside->ignoreContext)
      .Run(siteDir_, number);
}

int SiteMgr::Rebuild::RegisterFile(int folder, const std::string& path,
                                   const platform::FileStat& found) {
  SitePathDB& paths = *manager_.pathDB;
  const int known = paths.Find(path);
  if (known < 0) {
    const int number = work_.AddPath(path, siteDir_, false, &found);  // relates it to its folder
    if (number < 0) return -1;
    SetWalked(number);
    return 0;
  }
  SitePathRec rec;
  if (paths.Get(known, rec) < 0) return -1;
  Work::StoreFileFacts(path, siteDir_, found, rec);
  rec.fileType = static_cast<std::int32_t>(ClassifyFileType(path));
  if (paths.Update(rec) < 0) return -1;
  SetWalked(known);
  return manager_.AddRel(FolderID(folder), PathID(known)) < 0 ? -1 : 0;
}

int SiteMgr::Rebuild::RegisterFolder(int parent, const std::string& name) {
  const int number = manager_.AddFolder(name, 0);
  if (number < 0 || manager_.AddRel(FolderID(parent), FolderID(number)) < 0) return -1;
  return number;
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

}  // namespace zvrsit
