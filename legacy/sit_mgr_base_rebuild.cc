// Filling the stores of a site from its folder.
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
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
  if (!inside_->linkDB || folder.empty()) {
    inside_->history->NewStep();
    return inside_->Fail(inside_->linkDB ? kSitBadArgument : kSitNotOpen);
  }
  std::vector<std::string> work = {folder.back() == '\\' ? folder : folder + '\\'};
  VisitedFolders visited;
  if (!visited.Enter(work.back())) {
    inside_->history->NewStep();
    return inside_->Fail(kSitNotFound);
  }
  while (!work.empty()) {
    const std::string current = std::move(work.back());
    work.pop_back();
    const int parent = FolderAdd(current);
    if (parent < 0) return -1;
    for (const FoundEntry& entry : ListFolder(current)) {
      if (entry.isFolder && !visited.Enter(entry.path)) continue;
      const UrlID child = entry.isFolder ? UrlID(kKindFolder, FolderAdd(entry.path))
                                         : UrlID(kKindPath, inside_->RegisterFile(entry.path));
      if (child.id < 0 || RelAdd({kKindFolder, parent}, child) < 0) return -1;
      if (entry.isFolder) work.push_back(entry.path);
    }
  }
  return inside_->Succeed();
}

int SitMgrBase::Inside::RegisterFile(const std::string& path) {
  const int found = urlDB->Find(path);
  if (found < 0) return AddInspected(path);
  return manager.InspectUrl({kKindPath, found}) < 0 ? -1 : found;
}

int SitMgrBase::SiteRebuildDB(int complete) {
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const std::string folder = inside_->SiteFolder();
  if (folder.empty()) return inside_->Fail(kSitNoValue);
  platform::FileStat stat;
  if (platform::Stat(folder.substr(0, folder.size() - 1), stat) < 0 || !stat.isFolder()) {
    return inside_->Fail(kSitNotFound);
  }
  inside_->history->Clear();
  if (inside_->NoteRebuild(1) < 0) return inside_->Fail(kSitWriteFailed);
  int result = inside_->Refill(folder, complete);
  if (result == 0 && inside_->NoteRebuild(0) < 0) result = inside_->Fail(kSitWriteFailed);
  // Nothing of a rebuild can be taken back.
  const int error = inside_->lastError;
  inside_->history->Clear();
  inside_->lastError = error;
  return result;
}

// Writes how far a rebuild is into the site's profile, where a crash leaves it.
int SitMgrBase::Inside::NoteRebuild(int state) {
  SiteRec record;
  if (siteProf->Read(siteId, record) < 0) return -1;
  record.rebuild = state;
  return siteProf->Write(siteId, record) < 0 ? -1 : 0;
}

// The marks that the user has given to files.
std::unordered_map<std::string, std::int32_t> SitMgrBase::Inside::UserMarks() {
  std::unordered_map<std::string, std::int32_t> marks;
  for (int i = 0; i < urlDB->Num(); ++i) {
    const std::int32_t kept = manager.GetUrlFtpMember({kKindPath, i});
    if (lastError == kSitOk && (kept & ~kMemberReached) != 0) {
      marks[urlDB->Key(i)] = kept & ~kMemberReached;
    }
  }
  return marks;
}

int SitMgrBase::Inside::Refill(const std::string& folder, int complete) {
  const auto marks = UserMarks();
  if (EmptyStores(complete) < 0) return Fail(kSitCannotOpen);
  const int before = FailedWrites();
  for (int i = 0; i < urlDB->Num(); ++i) manager.InspectUrl({kKindPath, i});
  if (manager.RegisterAllFiles(folder) < 0 || ReadPages() < 0) return -1;
  for (const auto& [path, mark] : marks) {
    const int file = urlDB->Find(path);
    if (file >= 0 && manager.SetUrlFtpMember({kKindPath, file}, mark) < 0) return -1;
  }
  return DropMissing() < 0 ? -1 : Written(before);
}

int SitMgrBase::Inside::EmptyStores(int complete) {
  bool emptied = linkDB->Remove() == 0 && relDB->Remove() == 0 && folderDB->Remove() == 0;
  if (complete != 0 || !urlDB->IsWhole() || !junkDB->IsWhole())
    emptied = emptied && urlDB->Remove() == 0 && junkDB->Remove() == 0;
  return emptied && linkDB->IsOpen() && relDB->IsOpen() ? 0 : -1;
}

int SitMgrBase::Inside::ReadPages() {
  const int pages = urlDB->Num();
  for (int i = 0; i < pages; ++i) {
    SitUrlRec record;
    if (urlDB->Read(i, record) != kSitOk) continue;
    if (record.fileType != static_cast<std::int32_t>(FT_HTML)) continue;
    if ((record.status & (kStatusFound | kStatusOutside | kStatusBroken)) != kStatusFound) continue;
    Document* document = LoadDocument(record.key);
    const int result = document != nullptr ? SaveDocument({kKindPath, i}, *document) : -1;
    FreeDocument(document);
    if (result < 0) return -1;
    history->Clear();
  }
  return Succeed();
}

int SitMgrBase::Inside::DropMissing() {
  for (int i = 0; i < urlDB->Num(); ++i) {
    SitUrlRec record;
    if (urlDB->Read(i, record) != kSitOk || (record.status & kStatusMissing) == 0) continue;
    const bool marked = (record.ftpMember & ~kMemberReached) != 0;
    const UrlID id(kKindPath, i);
    if (!marked && linkDB->Matching(kAnyUrlID, id).empty() && manager.UrlDel(id) < 0) return -1;
  }
  for (int i = 0; i < junkDB->Num(); ++i) {
    const UrlID id(kKindUrl, i);
    if (junkDB->State(i) != kSitOk || !linkDB->Matching(kAnyUrlID, id).empty()) continue;
    if (manager.UrlDel(id) < 0) return -1;
  }
  return Succeed();
}

}  // namespace zvrsit
