// Filling the stores of a site from its folder.
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_base.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

struct FoundEntry {
  std::string path;  // of a folder with its final "\"
  bool isFolder;
};

// The entries of a folder that a site registers: regular files and folders, without names that
// hold a "#".
std::vector<FoundEntry> ListFolder(const std::string& folder) {
  std::vector<FoundEntry> entries;
  platform::FindData found;
  platform::FindHandle handle = platform::FindFirst(folder + "*.*", found);
  if (handle == nullptr) return entries;
  do {
    if (found.name == "." || found.name == "..") continue;
    if (FindLastHashMB(found.name) != std::string::npos) continue;
    const std::string path = folder + found.name;
    platform::FileStat stat;
    if (platform::Stat(path, stat) < 0) continue;
    if (stat.isRegular()) entries.push_back({path, false});
    // What a link leads to is met at its own place, or does not belong to the site.
    if (stat.isFolder() && !platform::IsLink(path)) entries.push_back({path + "\\", true});
  } while (platform::FindNext(handle, found));
  platform::FindClose(handle);
  return entries;
}

// Whether a folder is met for the first time, by whatever path.
class VisitedFolders {
 public:
  bool Enter(const std::string& folder) {
    platform::FileStat stat;
    if (platform::Stat(folder.substr(0, folder.size() - 1), stat) < 0) return false;
    return seen_.emplace(stat.device, stat.file).second;
  }

 private:
  std::set<std::pair<std::uint64_t, std::uint64_t>> seen_;
};

}  // namespace

int SitMgrBase::RegisterAllFiles(const std::string& folder) {
  if (!linkDB_ || folder.empty()) {
    history_->NewStep();
    return Fail(linkDB_ ? kSitBadArgument : kSitNotOpen);
  }
  std::vector<std::string> work = {folder.back() == '\\' ? folder : folder + '\\'};
  VisitedFolders visited;
  if (!visited.Enter(work.back())) {
    history_->NewStep();
    return Fail(kSitNotFound);
  }
  while (!work.empty()) {
    const std::string current = std::move(work.back());
    work.pop_back();
    const int parent = FolderAdd(current);
    if (parent < 0) return -1;
    for (const FoundEntry& entry : ListFolder(current)) {
      if (entry.isFolder && !visited.Enter(entry.path)) continue;
      const UrlID child = entry.isFolder ? UrlID(kKindFolder, FolderAdd(entry.path))
                                         : UrlID(kKindPath, RegisterFile(entry.path));
      if (child.id < 0 || RelAdd({kKindFolder, parent}, child) < 0) return -1;
      if (entry.isFolder) work.push_back(entry.path);
    }
  }
  return Succeed();
}

int SitMgrBase::RegisterFile(const std::string& path) {
  const int found = urlDB_->Find(path);
  if (found < 0) return AddInspected(path);
  return InspectUrl({kKindPath, found}) < 0 ? -1 : found;
}

int SitMgrBase::SiteRebuildDB(int complete) {
  if (!linkDB_) return Fail(kSitNotOpen);
  const std::string folder = SiteFolder();
  if (folder.empty()) return Fail(kSitNoValue);
  platform::FileStat stat;
  if (platform::Stat(folder.substr(0, folder.size() - 1), stat) < 0 || !stat.isFolder()) {
    return Fail(kSitNotFound);
  }
  history_->Clear();
  if (!NoteRebuild(1)) return Fail(kSitWriteFailed);
  int result = Refill(folder, complete);
  if (result == 0 && !NoteRebuild(0)) result = Fail(kSitWriteFailed);
  // Nothing of a rebuild can be taken back.
  const int error = lastError_;
  history_->Clear();
  lastError_ = error;
  return result;
}

// Writes how far a rebuild is into the site's profile, where a crash leaves it.
bool SitMgrBase::NoteRebuild(int state) {
  SiteRec record;
  if (siteProf_->Read(siteId_, record) < 0) return false;
  record.rebuild = state;
  return siteProf_->Write(siteId_, record) == 0;
}

// The marks that the user has given to files.
std::unordered_map<std::string, std::int32_t> SitMgrBase::UserMarks() {
  std::unordered_map<std::string, std::int32_t> marks;
  for (int i = 0; i < urlDB_->Num(); ++i) {
    const std::int32_t kept = GetUrlFtpMember({kKindPath, i});
    if (lastError_ == kSitOk && (kept & ~kMemberReached) != 0) {
      marks[urlDB_->Key(i)] = kept & ~kMemberReached;
    }
  }
  return marks;
}

int SitMgrBase::Refill(const std::string& folder, int complete) {
  const auto marks = UserMarks();
  if (EmptyStores(complete) < 0) return Fail(kSitCannotOpen);
  const int before = FailedWrites();
  for (int i = 0; i < urlDB_->Num(); ++i) InspectUrl({kKindPath, i});
  if (RegisterAllFiles(folder) < 0 || ReadPages() < 0) return -1;
  for (const auto& [path, mark] : marks) {
    const int file = urlDB_->Find(path);
    if (file >= 0 && SetUrlFtpMember({kKindPath, file}, mark) < 0) return -1;
  }
  return DropMissing() < 0 ? -1 : Written(before);
}

int SitMgrBase::EmptyStores(int complete) {
  bool emptied = linkDB_->Remove() == 0 && relDB_->Remove() == 0 && folderDB_->Remove() == 0;
  if (complete != 0 || !urlDB_->IsWhole() || !junkDB_->IsWhole())
    emptied = emptied && urlDB_->Remove() == 0 && junkDB_->Remove() == 0;
  return emptied && linkDB_->IsOpen() && relDB_->IsOpen() ? 0 : -1;
}

int SitMgrBase::ReadPages() {
  const int pages = urlDB_->Num();
  for (int i = 0; i < pages; ++i) {
    SitUrlRec record;
    if (urlDB_->Read(i, record) != kSitOk) continue;
    if (record.fileType != static_cast<std::int32_t>(FT_HTML)) continue;
    if ((record.status & (kStatusFound | kStatusOutside | kStatusBroken)) != kStatusFound) continue;
    Document* document = LoadDocument(record.key);
    const int result = document != nullptr ? SaveDocument({kKindPath, i}, *document) : -1;
    FreeDocument(document);
    if (result < 0) return -1;
    history_->Clear();
  }
  return Succeed();
}

int SitMgrBase::DropMissing() {
  for (int i = 0; i < urlDB_->Num(); ++i) {
    SitUrlRec record;
    if (urlDB_->Read(i, record) != kSitOk || (record.status & kStatusMissing) == 0) continue;
    const bool marked = (record.ftpMember & ~kMemberReached) != 0;
    const UrlID id(kKindPath, i);
    if (!marked && linkDB_->Matching(kAnyUrlID, id).empty() && UrlDel(id) < 0) return -1;
  }
  for (int i = 0; i < junkDB_->Num(); ++i) {
    const UrlID id(kKindUrl, i);
    if (junkDB_->State(i) != kSitOk || !linkDB_->Matching(kAnyUrlID, id).empty()) continue;
    if (UrlDel(id) < 0) return -1;
  }
  return Succeed();
}

}  // namespace zvrsit
