#include "manager/update.h"

#include <algorithm>
#include <ctime>
#include <memory>
#include <unordered_set>
#include <utility>

#include "manager/record_access.h"
#include "platform/code_page.h"
#include "platform/version.h"
#include "util/mb_string.h"

namespace zvrsit {

int SiteMgr::SiteUpdate(SiteUpdates& updates, CZvrSiteRebuildProgressDlg* dlg) {
  if (inside->kept != nullptr) inside->kept->folders.clear();
  return SiteUpdateFolders({}, updates, dlg);
}

int SiteMgr::SiteUpdateFolders(const std::vector<std::string>& folders, SiteUpdates& updates,
                               CZvrSiteRebuildProgressDlg* dlg) {
  updates = {};
  if (inside->kept != nullptr) {
    FolderListings& seen = inside->kept->folders;
    const auto forget = [&seen](const std::string& folder) { return seen.erase(folder) == 1; };
    // One that was not seen may be another name of one that was.
    if (!std::ranges::all_of(folders, forget)) seen.clear();
  }
  const int result = Update(*this, updates, dlg).Run();
  if (result != 0 && inside->kept != nullptr) inside->kept->folders.clear();
  return result;
}

std::vector<std::string> SiteMgr::Update::ConditionsOf(const SiteMgr& manager) {
  std::vector<std::string> all{Version(), std::to_string(platform::CodePage())};
  const ProfileUse use(manager);
  SiteSiteRec site;
  if (!use.ReadOpenSite(site)) return {};
  all.push_back(std::to_string(site.useDocRoot) + " " + std::to_string(site.linkRules));
  const auto add = [&](std::int32_t ref) {
    std::string text;
    use.ReadText(ref, text);
    all.push_back(std::move(text));
  };
  add(site.topFile);
  add(site.defaultUrl);
  for (const std::int32_t folder : site.folders) add(folder);
  for (const SiteTable* const table : Work(const_cast<SiteMgr&>(manager)).Tables()) {
    for (const SiteDB* const file : {static_cast<const SiteDB*>(table->records()),
                                     static_cast<const SiteDB*>(table->strings())}) {
      platform::FileStat found;
      if (platform::Stat(file->filePath(), found) < 0) return {};
      all.push_back(std::to_string(found.size) + " " +
                    std::to_string(found.modificationNanoseconds));
    }
  }
  return all;
}

int SiteMgr::FlushUpdated() {
  if (openSiteId < 0 || !inside->reading || FlushSite() < 0) return -1;
  inside->cameOrWent.clear();
  UpdateNote note;
  note.conditions = Update::ConditionsOf(*this);
  const Inside::Reading& reading = *inside->reading;
  note.traits = reading.traits;
  note.isExact = reading.isExact;
  note.linkedFolders = reading.linkedFolders;
  note.passedBy = reading.passedBy;
  ForEachNumber(*pathDB, [&](int number) {
    SitePathRec rec;
    if (pathDB->Get(number, rec) < 0) return;
    // Times come from a clock that may be a little behind.
    if (std::max(rec.modificationTime, rec.creationTime) < reading.begin - 1) return;
    const std::string_view path = pathDB->TextView(rec.name);
    if (rec.exists != 0 && HoldsLinks(path, rec, inside->types())) note.young.emplace_back(path);
  });
  const std::string path = NoteBeside(pathDB->records()->filePath());
  if (note.conditions.empty() || !note.Write(path)) platform::Unlink(path);
  return 0;
}

int SiteMgr::FlushSaved(const std::vector<std::string>& paths) {
  if (openSiteId < 0 || !HasFiles(pathDB)) return -1;
  const std::string place = NoteBeside(pathDB->records()->filePath());
  UpdateNote note;
  note.conditions = Update::ConditionsOf(*this);
  const bool isTrusted = !note.conditions.empty() && note.Read(place);
  if (FlushSite() < 0) return -1;
  if (!isTrusted) return 0;
  note.conditions = Update::ConditionsOf(*this);
  note.isExact = false;
  note.saved.insert(note.saved.end(), paths.begin(), paths.end());
  std::vector<std::string>& moved = inside->cameOrWent;
  note.moved.insert(note.moved.end(), moved.begin(), moved.end());
  moved.clear();
  if (note.conditions.empty() || !note.Write(place)) platform::Unlink(place);
  return 0;
}

int SiteMgr::Update::Run() {
  m_.inside->skippedByRebuild.clear();
  m_.inside->leftOutByRebuild.clear();
  if (m_.openSiteId < 0 || m_.siteProf == nullptr || m_.dom == nullptr || !HasFiles(m_.pathDB) ||
      !HasFiles(m_.linkDB) || !HasFiles(m_.folderDB) || !HasFiles(m_.relDB) ||
      !HasFiles(m_.urlDB) || !work_.ReadSiteFolder(siteDir_)) {
    return -1;
  }
  note_.conditions = ConditionsOf(m_);
  if (note_.conditions.empty() || !note_.Read(NoteBeside(m_.pathDB->records()->filePath()))) {
    return kMustRebuild;
  }
  const Operation operation(m_);
  reading_.begin = std::time(nullptr);
  progress_.BeginWalk();
  if (WalkSite() < 0) return -1;
  MeetWhatWasNotWalked();
  progress_.EndWalk();
  int result = 0;
  if (IsChange()) {
    if (NeedsRebuild()) return kMustRebuild;
    result = Apply();
  } else {
    result = StoreFacts();
  }
  if (result != 0) return result;
  ListTouched();
  reading_.isExact = true;
  reading_.traits = note_.traits | m_.inside->operationMemo->traits;
  m_.inside->reading = std::move(reading_);
  progress_.End();
  return 0;
}

int SiteMgr::Update::Apply() {
  countBefore_ = m_.pathDB->Count();
  roots_ = work_.ListRoots();
  if (TakeOutGone() < 0 || StoreFacts() < 0 || AddCome() < 0) return -1;
  progress_.BeginLinks();
  if (ReadAgain() < 0 || m_.IsFull()) return -1;
  progress_.EndLinks();
  if (HasMetWhatNeedsRebuild()) return kMustRebuild;
  return Sweep();
}

// Their entries go later if nothing links to them.
int SiteMgr::Update::TakeOutGone() {
  for (const int number : gone_) {
    SitePathRec rec;
    if (Forget(number) < 0 || m_.pathDB->Get(number, rec) < 0) return -1;
    if (m_.pathDB->Update(AsMissing(rec, m_.pathDB->NameView(number))) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Update::StoreFacts() {
  for (const std::vector<Found>* const list : {&changed_, &touched_, &changedOthers_}) {
    for (const Found& found : *list) {
      SitePathRec rec;
      if (m_.pathDB->Get(found.number, rec) < 0) return -1;
      if (rec.exists == 0) {  // one that the walk does not meet
        if (m_.CheckPath(found.path, siteDir_) < 0) return -1;
        continue;
      }
      Work::StoreFileFacts(found.path, siteDir_, found.stat, rec);
      if (m_.pathDB->Update(rec) < 0) return -1;
    }
  }
  return 0;
}

int SiteMgr::Update::AddCome() {
  for (std::size_t i = 0; i < folders_.size(); ++i) {
    if (m_.folderDB->Find(folders_[i]) >= 0) continue;
    const int number = m_.AddFolder(folders_[i], 0);
    const int above = i == 0 ? number : m_.folderDB->Find(folders_[parents_[i]]);
    if (number < 0 || above < 0) return -1;
    if (i > 0 && m_.AddRel(FolderID(above), FolderID(number)) < 0) return -1;
  }
  for (Found& file : come_) {
    if (file.number < 0) {
      file.number = work_.AddPath(file.path, siteDir_, false, &file.stat);
      if (file.number < 0) return -1;
      MarkWalked(file.number);
      continue;
    }
    SitePathRec rec;
    if (m_.pathDB->Get(file.number, rec) < 0) return -1;
    Work::StoreFileFacts(file.path, siteDir_, file.stat, rec);
    const int folder = m_.folderDB->Find(FolderOf(file.path));
    if (m_.pathDB->Update(rec) < 0 || m_.AddRel(FolderID(folder), PathID(file.number)) < 0) {
      return -1;
    }
  }
  return 0;
}

std::vector<UrlID> SiteMgr::Update::TargetsOf(int number) const {
  std::vector<int> links;
  std::vector<UrlID> targets;
  if (m_.linkDB->Query(PathID(number), kAnyUrlID, links) < 0) return targets;
  for (const int link : links) {
    UrlID target;
    if (m_.linkDB->Target(link, target) == 0) targets.push_back(target);
  }
  return targets;
}

void SiteMgr::Update::ListTouched() {
  std::vector<int>& touched = updates_.touched;
  for (const std::vector<Found>* const list : {&come_, &changed_, &changedOthers_}) {
    for (const Found& found : *list) touched.push_back(found.number);
  }
  for (const Reread& reread : rereads_) touched.push_back(reread.number);
  std::ranges::sort(touched);
  touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
}

// Takes out all that a file was found to hold.
int SiteMgr::Update::Forget(int number) {
  SitePathRec rec;
  if (m_.pathDB->Get(number, rec) < 0) return -1;
  if (m_.inside->kept != nullptr) m_.inside->kept->ids.Forget(number);
  rereads_.push_back({number, TargetsOf(number)});
  if (work_.DeleteForeLinks(number) < 0 || m_.pathDB->ReleaseTexts(rec) < 0) return -1;
  rec.unread = SitePathRec::kRead;
  return m_.pathDB->Update(rec);
}

// The pages and sheets that are to be read.
std::vector<int> SiteMgr::Update::ListToRead() const {
  std::vector<int> numbers = toRead_;
  for (const std::vector<Found>* const list : {&come_, &changed_, &changedOthers_}) {
    for (const Found& found : *list) numbers.push_back(found.number);
  }
  for (const Work::CameOrGone* const moved : {&moved_, &unwatched_}) {
    for (const std::string& path : work_.ListSourcesOf(*moved)) {
      numbers.push_back(m_.pathDB->Find(path));
    }
  }
  std::ranges::sort(numbers);
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::erase_if(numbers, [this](int number) {
    SitePathRec rec;
    return m_.pathDB->Get(number, rec) < 0 || rec.exists == 0 ||
           !HoldsLinks(m_.pathDB->TextView(rec.name), rec, m_.inside->types());
  });
  return numbers;
}

int SiteMgr::Update::ReadAgain() {
  const std::vector<int> numbers = ListToRead();
  for (const int number : numbers) {
    if (Forget(number) < 0) return -1;
  }
  OperationMemo& memo = *m_.inside->operationMemo;
  memo.sheetsWait = true;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (progress_.Cancelled()) return -1;
    progress_.BeginRecord(static_cast<int>(i), static_cast<int>(numbers.size()));
    CollectOne(numbers[i]);
  }
  std::unordered_set<int> read(numbers.begin(), numbers.end());
  for (std::size_t next = 0; next < memo.foundFiles.size(); ++next) {  // grows meanwhile
    const int number = memo.foundFiles[next];
    if (!IsFoundPage(m_.pathDB->NameView(number)) || !read.insert(number).second) continue;
    rereads_.push_back({number, {}});
    CollectOne(number);
  }
  memo.sheetsWait = false;
  for (const int sheet : std::exchange(memo.waitingSheets, {})) CollectOne(sheet);
  updates_.read = static_cast<int>(read.size());
  return 0;
}

void SiteMgr::Update::CollectOne(int number) {
  const std::string path(m_.pathDB->NameView(number));
  progress_.ShowFile(path);
  bool unread = false;
  if (work_.Traverse(siteDir_, path, nullptr, unread) == 0 && !unread) return;
  work_.SetUnread(number, true);
  m_.inside->skippedByRebuild.push_back(path);
}

// Whether reading has met something that makes the tables depend on the order of reading.
bool SiteMgr::Update::HasMetWhatNeedsRebuild() {
  const std::uint32_t traits = m_.inside->operationMemo->traits;
  if ((traits & (kReadsOddSheets | kSharesEncodings)) != 0) return true;
  MeetFound();
  return HasTroublesomeOthers();
}

// The files that are in the tables only since pages were read; some may have come meanwhile.
void SiteMgr::Update::MeetFound() {
  std::unordered_set<int> known;
  for (const Found& other : others_) known.insert(other.number);
  ForEachNumber(*m_.pathDB, [&](int number) {
    SitePathRec rec;
    if (IsWalked(number) || known.contains(number) || m_.pathDB->Get(number, rec) < 0 ||
        (number < countBefore_ && !WasThere(rec))) {
      return;
    }
    Found other{number, std::string(m_.pathDB->NameView(number)), {}};
    const bool isThere = platform::Stat(other.path, other.stat) == 0 && other.stat.isRegular();
    if (isThere) others_.push_back(std::move(other));
  });
}

}  // namespace zvrsit
