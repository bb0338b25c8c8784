#include "manager/site_walk.h"

#include "manager/record_access.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "platform/native_path.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

std::pair<std::uint64_t, std::uint64_t> IdentityOf(const platform::FileStat& found) {
  return {found.device, found.file};
}

}  // namespace

int SiteWalk::Run(const std::string& siteDir, int number) {
  platform::FileStat found;
  if (platform::Stat(siteDir, found) == 0) entered_.insert(IdentityOf(found));
  workList_.push_back({siteDir, number});
  // The list grows while it is worked on.
  for (std::size_t next = 0; next < workList_.size(); ++next) {
    int result = steps_.nextFolder();
    if (result >= 0) result = WalkFolder(Folder(workList_[next]));
    if (result < 0) return result;
  }
  return 0;
}

int SiteWalk::WalkFolder(const Folder& folder) {
  platform::FindData found;
  const platform::FindHandle search = platform::FindFirst(folder.name + "*.*", found);
  if (search == nullptr) {
    steps_.unlisted(folder.name);
    return 0;
  }
  int result = 0;
  do {
    result = Visit(folder, search, found);
  } while (result >= 0 && platform::FindNext(search, found));
  for (const std::string& name : platform::FindNamesWithBackslash(search)) {
    platform::FileStat unnamed;
    if (platform::StatFound(search, {name}, unnamed) == 0) LeaveOut(folder, name, unnamed);
  }
  platform::FindClose(search);
  return result < 0 ? result : 0;
}

int SiteWalk::Visit(const Folder& folder, platform::FindState* search,
                    const platform::FindData& entry) {
  const std::string& name = entry.name;
  platform::FileStat found;
  if (name == "." || name == ".." || platform::StatFound(search, entry, found) < 0) return 0;
  if (FindLastHashMB(name) != std::string::npos) {
    LeaveOut(folder, name, found);
    return 0;
  }
  const std::string path = folder.name + name;
  if (found.isFolder()) return VisitFolder(folder, path + "\\", found, entry.mayBeLink);
  if (!found.isRegular() || IsIgnored(path)) return 0;
  return steps_.file(folder.number, path, found);
}

int SiteWalk::VisitFolder(const Folder& folder, const std::string& name,
                          const platform::FileStat& found, bool mayBeLink) {
  if (IsIgnored(name)) return 0;
  if (mayBeLink && platform::IsLink(name.substr(0, name.size() - 1))) {
    if (steps_.linkedFolder) steps_.linkedFolder(name);
    return 0;
  }
  if (found.file != 0 && !entered_.insert(IdentityOf(found)).second) return 0;
  const int number = steps_.folder(folder.number, name);
  if (number >= 0) workList_.push_back({name, number});
  return number;
}

void SiteWalk::LeaveOut(const Folder& folder, const std::string& name,
                        const platform::FileStat& found) {
  if (steps_.passedBy) steps_.passedBy(folder.name + name);
  const bool isPage =
      found.isRegular() && HoldsLinks(name, ClassifyFileType(std::string_view(name)), types_);
  std::string native;
  if ((isPage || found.isFolder()) && platform::ToNativePath(folder.name, native)) {
    steps_.leftOut(native + name);
  }
}

bool SiteWalk::IsIgnored(const std::string& path) const {
  return ignore_ != nullptr && ignore_(path, context_);
}

}  // namespace zvrsit
