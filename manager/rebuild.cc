// The steps of a rebuild, except for the walk through the folders.
#include "manager/rebuild.h"

#include <ctime>
#include <set>
#include <utility>

#include "manager/family_marks.h"
#include "manager/record_access.h"
#include "platform/file.h"
#include "util/file_type.h"
#include "util/mb_string.h"
#include "util/path_parts.h"

namespace zvrsit {

namespace {

// States of a site profile.
constexpr int kRebuildFailed = 1;
constexpr int kRebuilt = 2;

// Gives back the texts of a page that will be collected again. A damaged list of anchors cannot be
// given back. It is forgotten, so that a rebuild repairs it.
void ReleaseCollected(SitePathDB& paths, SitePathRec& rec) {
  if (paths.ReleaseTexts(rec) == 0) return;
  rec.listCount = 0;
  rec.listData = -1;
  static_cast<void>(paths.ReleaseTexts(rec));  // fails for a list only
}

}  // namespace

int SiteMgr::NeedToRebuild(const std::string& siteName) {
  const ProfileUse use(*this);
  if (siteName.empty() || !HasRecords(siteProf)) return -1;
  SiteSiteRec site;
  return siteProf->Get(siteProf->Find(siteName), site) < 0 ? -1 : site.rebuildState;
}

int SiteMgr::GetSiteProfRebuildState() {
  const ProfileUse use(*this);
  SiteSiteRec site;
  return use.ReadOpenSite(site) ? site.rebuildState : -1;
}

int SiteMgr::SetSiteProfRebuildState(int state, int siteId) {
  const ProfileUse use(*this);
  if (siteProf == nullptr) return -1;
  return siteProf->SetNumber(siteId < 0 ? openSiteId : siteId, &SiteSiteRec::rebuildState, state);
}

int SiteMgr::SiteRebuildDB(int complete, CZvrSiteRebuildProgressDlg* dlg) {
  const int result = complete != 0 ? SiteRebuildComplete(dlg) : SiteRebuildDiff(dlg);
  return SetSiteProfRebuildState(result < 0 ? kRebuildFailed : kRebuilt, -1);
}

int SiteMgr::SiteRebuildComplete(CZvrSiteRebuildProgressDlg* dlg) {
  return Rebuild(*this, Rebuild::Kind::kComplete, dlg).Run();
}

int SiteMgr::SiteRebuildDiff(CZvrSiteRebuildProgressDlg* dlg) {
  return Rebuild(*this, Rebuild::Kind::kDiff, dlg).Run();
}

void SiteMgr::SetIgnoreHook(IgnoreHook hook, void* context) {
  inside->ignoreHook = hook;
  inside->ignoreContext = context;
}

const std::vector<std::string>& SiteMgr::SkippedByRebuild() const {
  return inside->skippedByRebuild;
}

int SiteMgr::Rebuild::Run() {
  manager_.inside->skippedByRebuild.clear();
  manager_.inside->leftOutByRebuild.clear();
  if (!CanRun()) return -1;
  const Operation operation(manager_);
  if (kind_ == Kind::kComplete) manager_.linksChanged = 1;
  reading_.begin = std::time(nullptr);
  reading_.isExact = manager_.pathDB->Count() == 0;
  const int result = RunSteps();
  if (result < 0) {
    manager_.linksChanged = 1;  // the family marks are gone
    return result;
  }
  reading_.traits = manager_.inside->operationMemo->traits;
  manager_.inside->reading = std::move(reading_);
  return result;
}

bool SiteMgr::Rebuild::CanRun() {
  const SiteMgr& m = manager_;
  return m.openSiteId >= 0 && m.siteProf != nullptr && HasFiles(m.pathDB) && HasFiles(m.linkDB) &&
         HasFiles(m.folderDB) && HasFiles(m.relDB) && HasFiles(m.urlDB) &&
         work_.ReadSiteFolder(siteDir_);
}

int SiteMgr::Rebuild::RunSteps() {
  progress_.BeginWalk();
  if (ClearTables() < 0 || ResetPaths() < 0 || WalkFolders() < 0) return -1;
  progress_.EndWalk();
  if (kind_ == Kind::kDiff && RefreshPaths() < 0) return -1;
  progress_.BeginLinks();
  if (CollectLinks() < 0 || manager_.IsFull()) return -1;
  progress_.EndLinks();
  if (kind_ == Kind::kDiff && DropVanished() < 0) return -1;
  if (MarkFamily() < 0) return -1;
  progress_.End();
  return 0;
}

int SiteMgr::Rebuild::ClearTables() {
  if (manager_.folderDB->Clear() < 0 || manager_.relDB->Clear() < 0 ||
      manager_.linkDB->Clear() < 0 || manager_.urlDB->Clear() < 0) {
    return -1;
  }
  return 0;
}

// Path entries are kept, so that their numbers stay. What will be found out again is cleared. A
// damaged entry, which its own name does not find, is dropped.
int SiteMgr::Rebuild::ResetPaths() {
  SitePathDB& paths = *manager_.pathDB;
  for (int number = paths.NextNumber(0); number >= 0; number = paths.NextNumber(number + 1)) {
    SitePathRec rec;
    if (paths.Get(number, rec) < 0) continue;
    if (paths.Find(paths.TextView(rec.name)) != number) {
      if (paths.records()->Delete(number) < 0) return -1;
      continue;
    }
    rec.membership &= ~kDerivedMarks;
    if (rec.exists != 0 && HoldsLinks(paths.TextView(rec.name), rec, manager_.inside->types()))
      ReleaseCollected(paths, rec);
    rec.exists = 0;
    rec.unread = SitePathRec::kRead;
    if (paths.Update(rec) < 0) return -1;
  }
  return 0;
}

// Asks the disk once more about every known file. The existence flag stays as the walk has set it:
// files that the walk does not meet get it when something links to them.
int SiteMgr::Rebuild::RefreshPaths() {
  SitePathDB& paths = *manager_.pathDB;
  for (int number = paths.NextNumber(0); number >= 0; number = paths.NextNumber(number + 1)) {
    if (progress_.Cancelled()) return -1;
    SitePathRec rec;
    std::string path;
    if (paths.Get(number, rec) < 0 || paths.Text(rec.name, path) < 0) continue;
    platform::FileStat found;
    if (platform::Stat(path, found) == 0 && found.isRegular()) {
      Work::StoreFileFacts(path, siteDir_, found, rec);
      if (!HasWalked(number)) rec.exists = 0;
    } else {
      rec.exists = 0;
      vanished_.push_back(number);
    }
    rec.fileType = static_cast<std::int32_t>(ClassifyFileType(path));
    if (paths.Update(rec) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Rebuild::CollectLinks() {
  // Where an index cannot be made now, each search finds out for itself.
  static_cast<void>(manager_.linkDB->strings()->MakeStringIndex());
  static_cast<void>(manager_.pathDB->strings()->MakeStringIndex());
  const int count = manager_.pathDB->Count();
  manager_.inside->operationMemo->sheetsWait = true;
  for (int number = 0; number < count; ++number) {
    if (progress_.Cancelled()) return -1;
    progress_.BeginRecord(number, count);
    CollectLinksOf(number, false);
  }
  if (CollectFound(count) < 0) return -1;
  return CollectWaitingSheets();
}

// Reads files that are there although the walk has not met them: below folders that are links, or
// because of their names. With RuleFlags::readsWhatIsLinked the pages and sheets among them are
// read, and then those that they lead to, and so on. Without it, files that this pass itself adds
// are read by the next rebuild. `count` is the number of entries before this pass.
int SiteMgr::Rebuild::CollectFound(int count) {
  const OperationMemo& memo = *manager_.inside->operationMemo;
  for (std::size_t next = 0; next < memo.foundFiles.size(); ++next) {  // grows meanwhile
    if (progress_.Cancelled()) return -1;
    const int number = memo.foundFiles[next];
    std::string path;
    SitePathRec rec;
    if (memo.registeredSheets.contains(number) || manager_.pathDB->Get(number, rec) < 0) continue;
    if (rec.exists == 0 || manager_.pathDB->Text(rec.name, path) < 0) continue;
    if (!HoldsLinks(path, rec, manager_.inside->types())) continue;
    const bool readsIt = FlagsOf(manager_.GetLinkRules()).readsWhatIsLinked;
    if (readsIt ? !IsToBeReadAs(path) : number >= count) {
      Skip(number, path);
    } else if (readsIt) {
      CollectLinksOf(number, true);
    }
  }
  return 0;
}

// Collects the sheets that waited for a file that refers to them, and that no file has led to.
int SiteMgr::Rebuild::CollectWaitingSheets() {
  manager_.inside->operationMemo->sheetsWait = false;
  for (const int sheet : std::exchange(manager_.inside->operationMemo->waitingSheets, {})) {
    if (progress_.Cancelled()) return -1;
    CollectLinksOf(sheet, true);  // whether it is to be read was asked when it began to wait
  }
  return 0;
}

// Folders that are links can lead round in circles, and to one file in very many ways.
bool SiteMgr::Rebuild::IsToBeReadAs(const std::string& path) {
  platform::FileStat found;
  if (platform::Stat(path, found) < 0) return false;
  if (found.file != 0 && ++names_[{found.device, found.file}] > kMostNames) return false;
  const std::string folder(FolderOf(path));
  const auto [known, isNew] = circles_.try_emplace(folder, false);
  if (isNew) known->second = GoesInCircles(folder);
  return !known->second;
}

// Whether a folder of the site is reached through another one that is the same real folder.
bool SiteMgr::Rebuild::GoesInCircles(const std::string& folder) const {
  std::set<std::pair<std::uint64_t, std::uint64_t>> passed;
  for (std::string name = folder; name.size() >= siteDir_.size();) {
    platform::FileStat found;
    if (platform::Stat(name, found) < 0) return false;
    if (found.file != 0 && !passed.insert({found.device, found.file}).second) return true;
    name.pop_back();
    name.resize(FolderOf(name).size());
  }
  return false;
}

void SiteMgr::Rebuild::Skip(int number, const std::string& path) {
  work_.SetUnread(number, true);
  manager_.inside->skippedByRebuild.push_back(path);
}

// A page that cannot be read is noted, and the others go on.
void SiteMgr::Rebuild::CollectLinksOf(int number, bool isFound) {
  SitePathRec rec;
  std::string path;
  if (manager_.pathDB->Get(number, rec) < 0 || manager_.pathDB->Text(rec.name, path) < 0) return;
  if (!isFound && !IsToBeRead(number, path, rec)) {
    progress_.ShowFile("");
    return;
  }
  progress_.ShowFile(path);
  bool unread = false;
  const int result = work_.Traverse(siteDir_, path, nullptr, unread);
  if (result < 0 || (unread && rec.exists != 0)) Skip(number, path);
}

// Without RuleFlags::readsWhatIsLinked every known page and sheet is read; with it, one that the
// walk has not seen is only a target.
bool SiteMgr::Rebuild::IsToBeRead(int number, const std::string& path,
                                  const SitePathRec& rec) const {
  if (!HoldsLinks(path, rec, manager_.inside->types())) return false;
  return !FlagsOf(manager_.GetLinkRules()).readsWhatIsLinked || HasWalked(number);
}

// Drops entries whose file is gone, if nothing links to them and the user has not marked them.
int SiteMgr::Rebuild::DropVanished() {
  for (const int number : vanished_) {
    SitePathRec rec;
    std::string path;
    if (manager_.pathDB->Get(number, rec) < 0 || (rec.membership & kUserMarks) != 0 ||
        manager_.linkDB->CountTo(PathID(number)) != 0) {
      continue;
    }
    if (manager_.pathDB->Text(rec.name, path) < 0 || work_.Remove(path) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Rebuild::MarkFamily() {
  if (work_.FindTopFile() < 0) return 0;
  for (const int root : work_.ListRoots()) {
    if (manager_.PropagateFamily(root) < 0) return -1;
  }
  return 0;
}

int SiteMgr::FlushSite() {
  if (openSiteId < 0) return -1;
  const bool canBeUndone = inside->canBeUndone() && HasFiles(pathDB);
  const std::string folder =
      canBeUndone ? std::string(FolderOf(pathDB->records()->filePath())) : std::string();
  UndoLog log(folder + kTablesUndo);
  const auto tables = Work(*this).Tables();
  if (canBeUndone) {
    const auto note = [&] {
      for (const SiteTable* const table : tables) {
        if (table != nullptr) table->NoteChanges(log);
      }
      return log.isEmpty() ? 0 : log.Begin();
    };
    if (Guarded(note) < 0) return -1;
  }
  int result = 0;
  for (SiteTable* const table : tables) {
    if (table == nullptr || table->Flush() < 0) result = -1;
  }
  if (!canBeUndone) return result;
  if (result == 0 && log.End() == 0) return 0;
  static_cast<void>(UndoCutOff(folder));  // or by the next process
  return -1;
}

int SiteMgr::PackSite(bool all) {
  if (openSiteId < 0 || inside->onlyAsks()) return -1;
  // Then each packed file holds what the file in its place has held.
  if (inside->canBeUndone() && FlushSite() < 0) return -1;
  int result = 0;
  for (SiteTable* const table : Work(*this).Tables()) {
    if (table == nullptr || ((all || table->IsWorthPacking()) && table->Pack() < 0)) result = -1;
  }
  return result;
}

bool SiteMgr::IsFull() const {
  return openSiteId >= 0 && std::ranges::any_of(Work(const_cast<SiteMgr&>(*this)).Tables(),
                                                [](const SiteTable* table) {
                                                  return table != nullptr && table->IsFull();
                                                });
}

}  // namespace zvrsit
