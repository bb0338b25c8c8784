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
  if (listings_ != nullptr) {
    const auto known = listings_->find(folder.name);
    if (known != listings_->end()) return WalkListed(folder, known->second);
  }
  platform::FindData found;
  const platform::FindHandle search = platform::FindFirst(folder.name + "*.*", found);
  if (search == nullptr) {
    steps_.unlisted(folder.name);
    return 0;
  }
  FolderListing* const listing = listings_ == nullptr ? nullptr : &(*listings_)[folder.name];
  int result = 0;
  do {
    result = Visit(folder, search, found, listing);
  } while (result >= 0 && platform::FindNext(search, found));
  for (const std::string& name : platform::FindNamesWithBackslash(search)) {
    platform::FileStat unnamed;
    if (platform::StatFound(search, {name}, unnamed) < 0) continue;
    LeaveOut(folder, name, unnamed);
    if (listing != nullptr) listing->unnamed.push_back({name, unnamed, false});
  }
  platform::FindClose(search);
  return result < 0 ? result : 0;
}

int SiteWalk::WalkListed(const Folder& folder, const FolderListing& listing) {
  for (const FolderListing::Entry& entry : listing.entries) {
    platform::FileStat stat;
    if (entry.hasOtherPlace && platform::Stat(folder.name + entry.name, stat) < 0) continue;
    const int result =
        Meet(folder, entry.name, entry.hasOtherPlace ? stat : entry.stat, entry.hasOtherPlace);
    if (result < 0) return result;
  }
  for (const auto& [name, stat, other] : listing.unnamed) LeaveOut(folder, name, stat);
  return 0;
}

int SiteWalk::Visit(const Folder& folder, platform::FindState* search,
                    const platform::FindData& entry, FolderListing* listing) {
  const std::string& name = entry.name;
  if (name == "." || name == "..") return 0;
  platform::FileStat found;
  const bool isThere = platform::StatFound(search, entry, found) == 0;
  if (listing != nullptr) {
    const bool hasOtherNames = found.isRegular() && found.hasOtherNames;
    listing->entries.push_back({name, found, !isThere || entry.mayBeLink || hasOtherNames});
  }
  return isThere ? Meet(folder, name, found, entry.mayBeLink) : 0;
}

int SiteWalk::Meet(const Folder& folder, const std::string& name, const platform::FileStat& found,
                   bool mayBeLink) {
  if (FindLastHashMB(name) != std::string::npos) {
    LeaveOut(folder, name, found);
    return 0;
  }
  const std::string path = folder.name + name;
  if (found.isFolder()) return VisitFolder(folder, path + "\\", found, mayBeLink);
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
