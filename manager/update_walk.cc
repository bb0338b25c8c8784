// How the disk differs from the tables, as an update sees it.
#include <algorithm>
#include <map>
#include <set>
#include <unordered_set>

#include "links/redirect_rules.h"
#include "links/served_files.h"
#include "manager/rebuild.h"
#include "manager/record_access.h"
#include "manager/site_walk.h"
#include "manager/update.h"
#include "platform/native_path.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

bool HasNumber(const std::vector<int>& numbers, int number) {
  return std::ranges::find(numbers, number) != numbers.end();
}

}  // namespace

int SiteMgr::Update::WalkSite() {
  walked_.resize(static_cast<std::size_t>(m_.pathDB->Count()));
  folders_.push_back(siteDir_);
  parents_.push_back(-1);
  SiteWalk::Steps steps;
  steps.file = [this](int, const std::string& path, const platform::FileStat& found) {
    MeetFile(path, found);
    return 0;
  };
  steps.folder = [this](int parent, const std::string& name) {
    parents_.push_back(parent);
    folders_.push_back(name);
    return static_cast<int>(folders_.size()) - 1;
  };
  steps.nextFolder = [this] { return progress_.Cancelled() ? -1 : 0; };
  steps.unlisted = [this](const std::string& name) { m_.inside->skippedByRebuild.push_back(name); };
  steps.leftOut = [this](const std::string& native) {
    m_.inside->leftOutByRebuild.push_back(native);
  };
  steps.passedBy = [this](const std::string& path) { reading_.passedBy.push_back(path); };
  steps.linkedFolder = [this](const std::string& name) { reading_.linkedFolders.push_back(name); };
  const Inside& inside = *m_.inside;
  SiteWalk walk(std::move(steps), inside.types(), inside.ignoreHook, inside.ignoreContext);
  if (inside.kept != nullptr) walk.Use(inside.kept->folders);
  return walk.Run(siteDir_, 0);
}

void SiteMgr::Update::MeetWhatWasNotWalked() {
  walkedFolders_.insert(folders_.begin(), folders_.end());
  MeetOthers();
  MeetYoung();
  CompareFolders();
}

void SiteMgr::Update::MarkWalked(int number) {
  const auto at = static_cast<std::size_t>(number);
  if (at >= walked_.size()) walked_.resize(at + 1);
  walked_[at] = true;
}

SitePathRec SiteMgr::Update::AsMissing(const SitePathRec& rec, std::string_view path) {
  SitePathRec missing;
  missing.id = rec.id;
  missing.name = rec.name;
  missing.fileType = static_cast<std::int32_t>(ClassifyFileType(path));
  missing.membership = rec.membership;
  return missing;
}

bool SiteMgr::Update::WasThere(const SitePathRec& rec) {
  return rec.exists != 0 || rec.size != 0 || rec.creationTime != 0 || rec.modificationTime != 0 ||
         rec.accessTime != 0;
}

bool SiteMgr::Update::IsSame(const SitePathRec& rec, const platform::FileStat& found) {
  return static_cast<std::int32_t>(found.size) == rec.size &&
         found.modificationTime == rec.modificationTime;
}

void SiteMgr::Update::MeetFile(const std::string& path, const platform::FileStat& found) {
  const int number = m_.pathDB->Find(path);
  SitePathRec rec;
  if (number < 0 || m_.pathDB->Get(number, rec) < 0 || rec.exists == 0) {
    come_.push_back({number, path, found});
    moved_.files.push_back(path);
    updates_.added.push_back(path);
  } else if (!IsSame(rec, found)) {
    changed_.push_back({number, path, found});
    updates_.changed.push_back(path);
  } else {
    MeetSame(number, path, found, rec);
  }
  if (number >= 0) MarkWalked(number);
}

// A file of the same size and time of modification. It may have been given its old time again, as
// programs do that copy and unpack; then its time of creation is another one.
void SiteMgr::Update::MeetSame(int number, const std::string& path, const platform::FileStat& stat,
                               const SitePathRec& rec) {
  const bool isOther = rec.creationTime != stat.creationTime;
  if (isOther || rec.accessTime != stat.accessTime) touched_.push_back({number, path, stat});
  if (rec.unread != SitePathRec::kRead || (isOther && HoldsLinks(path, rec, m_.inside->types()))) {
    toRead_.push_back(number);
  }
}

// Files that may have changed unseen, and what may have come or gone with those that were saved one
// by one.
void SiteMgr::Update::MeetYoung() {
  std::unordered_set<int> known(toRead_.begin(), toRead_.end());
  for (const Found& found : changed_) known.insert(found.number);
  for (const std::string& path : note_.moved) {
    moved_.files.push_back(path);
    std::string folder(FolderOf(path));
    while (folder.size() > siteDir_.size() && folder.starts_with(siteDir_)) {
      moved_.folders.push_back(folder);
      folder.pop_back();
      folder.resize(FolderOf(folder).size());
    }
  }
  std::vector<std::string> again = note_.young;
  again.insert(again.end(), note_.saved.begin(), note_.saved.end());
  for (const std::string& path : again) {
    const int number = m_.pathDB->Find(path);
    SitePathRec rec;
    const bool isThere = m_.pathDB->Get(number, rec) == 0 && rec.exists != 0;
    if (isThere && known.insert(number).second) toRead_.push_back(number);
  }
}

// The entries of files that the walk has not met: those that are missing, lie outside, or are
// reached through folders that are links.
void SiteMgr::Update::MeetOthers() {
  ForEachNumber(*m_.pathDB, [this](int number) {
    SitePathRec rec;
    if (!IsWalked(number) && m_.pathDB->Get(number, rec) == 0) MeetOther(number, rec);
  });
}

void SiteMgr::Update::MeetOther(int number, const SitePathRec& rec) {
  Found other{number, std::string(m_.pathDB->TextView(rec.name)), {}};
  const bool isAsked = platform::Stat(other.path, other.stat) == 0;
  const bool isThere = isAsked && other.stat.isRegular();
  if (isThere) {
    others_.push_back(other);
    if (WasThere(rec) && IsSame(rec, other.stat)) {
      MeetSame(number, other.path, other.stat, rec);
    } else {
      changedOthers_.push_back(other);
    }
  } else if (rec != AsMissing(rec, other.path)) {
    gone_.push_back(number);
    if (rec.exists != 0) updates_.gone.push_back(other.path);
  }
  if (isThere != WasThere(rec)) moved_.files.push_back(other.path);
  NoteUnwatched(other, isAsked && other.stat.isFolder());
}

// The walk does not see what comes and goes in folders outside of the site, and below those that
// are links.
void SiteMgr::Update::NoteUnwatched(const Found& other, bool isFolder) {
  const std::string folder(FolderOf(other.path));
  if (folder.empty() || walkedFolders_.contains(folder)) return;
  platform::FileStat found;
  if (other.path.starts_with(siteDir_) && platform::Stat(folder, found) < 0) return;
  if (isFolder) unwatched_.folders.push_back(other.path);
  unwatched_.folders.push_back(folder.substr(0, folder.size() - 1));
  unwatched_.files.push_back(other.path);
}

// Which folders have come or gone.
void SiteMgr::Update::CompareFolders() {
  for (const std::string& name : folders_) {
    if (m_.folderDB->Find(name) < 0) moved_.folders.push_back(name);
  }
  const std::unordered_set<std::string> needed = FoldersOfOthers();
  ForEachNumber(*m_.folderDB, [&](int number) {
    std::string name(m_.folderDB->NameView(number));
    const bool isThere = walkedFolders_.contains(name) || needed.contains(name);
    if (!isThere && name.starts_with(siteDir_)) moved_.folders.push_back(std::move(name));
  });
  for (std::string& name : moved_.folders) name.pop_back();
}

// The folders of files that the walk has not met, and the folders above them.
std::unordered_set<std::string> SiteMgr::Update::FoldersOfOthers() const {
  std::unordered_set<std::string> names;
  for (const Found& other : others_) {
    if (m_.pathDB->NameView(other.number) != other.path) continue;  // dropped meanwhile
    std::string name(FolderOf(other.path));
    while (!name.empty() && !walkedFolders_.contains(name) && names.insert(name).second) {
      name.pop_back();
      name.resize(FolderOf(name).size());
    }
  }
  return names;
}

bool SiteMgr::Update::IsChange() const {
  return !note_.isExact || HasUnlisted() || !come_.empty() || !changed_.empty() || !gone_.empty() ||
         !toRead_.empty() || !changedOthers_.empty() || !moved_.files.empty() ||
         !moved_.folders.empty() || reading_.linkedFolders != note_.linkedFolders ||
         ListedFoldersChanged() || !work_.ListSourcesOf(unwatched_).empty();
}

// Whether files have come or gone, and there are applets.
bool SiteMgr::Update::ListedFoldersChanged() const {
  return (note_.traits & kListsFolders) != 0 &&
         (!moved_.files.empty() || !moved_.folders.empty() || reading_.passedBy != note_.passedBy);
}

bool SiteMgr::Update::NeedsRebuild() const {
  const bool folderMoved = !moved_.folders.empty();
  const auto has = [this](SiteTraits trait) { return (note_.traits & trait) != 0; };
  const bool savedFoundPage = std::ranges::any_of(note_.saved, [this](const std::string& path) {
    const int number = m_.pathDB->Find(path);
    return number >= 0 && !IsWalked(number) && IsFoundPage(path);
  });
  return HasUnlisted() || reading_.linkedFolders != note_.linkedFolders || ListedFoldersChanged() ||
         (has(kMindsFolders) && folderMoved) || has(kReadsOddSheets) || savedFoundPage ||
         (has(kSharesEncodings) && TouchesPages()) || HasTroublesomeOthers() ||
         RedirectsMatter(folderMoved || !moved_.files.empty());
}

// Whether a file that is read has changed, come or gone.
bool SiteMgr::Update::TouchesPages() const {
  const auto isRead = [this](const Found& found) {
    return HoldsLinks(found.path, ClassifyFileType(found.path), m_.inside->types());
  };
  const auto isReadByNumber = [this](int number) {
    const std::string_view path = m_.pathDB->NameView(number);
    return HoldsLinks(path, ClassifyFileType(path), m_.inside->types());
  };
  return !toRead_.empty() || std::ranges::any_of(come_, isRead) ||
         std::ranges::any_of(changed_, isRead) || std::ranges::any_of(gone_, isReadByNumber);
}

bool SiteMgr::Update::IsFoundPage(std::string_view path) const {
  return path.starts_with(siteDir_) && HoldsLinks(path, ClassifyFileType(path), m_.inside->types());
}

// Whether files that the walk has not met make the tables depend on the order of reading.
bool SiteMgr::Update::HasTroublesomeOthers() const {
  if (!FlagsOf(m_.GetLinkRules()).readsWhatIsLinked) return !others_.empty();
  std::set<std::string_view> outside;
  std::map<std::pair<std::uint64_t, std::uint64_t>, int> names;
  for (const Found& other : others_) {
    if (!other.path.starts_with(siteDir_)) outside.insert(FolderOf(other.path));
    if (!IsFoundPage(other.path)) continue;
    // The walk has met it by a name in other letter case.
    if (platform::kNamesIgnoreCase) return true;
    const bool isCounted = other.stat.file != 0;
    if (!reading_.linkedFolders.empty() || ClassifyFileType(other.path) == FT_CSS ||
        (isCounted && ++names[{other.stat.device, other.stat.file}] > Rebuild::kMostNames)) {
      return true;
    }
  }
  return outside.size() > 1 || RelatesFoldersOutside();
}

// As after a rebuild that met files in several folders outside of the site.
bool SiteMgr::Update::RelatesFoldersOutside() const {
  bool found = false;
  ForEachNumber(*m_.relDB, [&](int number) {
    SiteRelRec relation;
    if (m_.relDB->Get(number, relation) < 0 || relation.to.kind != kKindFolder) return;
    if (!m_.folderDB->NameView(relation.from.id).starts_with(siteDir_)) found = true;
  });
  return found;
}

bool SiteMgr::Update::RedirectsMatter(bool moved) const {
  if (!FlagsOf(m_.GetLinkRules()).findsFolderDocuments) return false;
  const std::string rules = siteDir_ + std::string(kRedirectsName);
  const auto isRules = [&](const Found& found) { return found.path == rules; };
  if (std::ranges::any_of(come_, isRules) || std::ranges::any_of(changed_, isRules)) return true;
  const int number = m_.pathDB->Find(rules);
  return HasNumber(gone_, number) || HasNumber(toRead_, number) ||
         (moved && ServedFiles(Work::ServedSiteOf(m_)).redirects());
}

}  // namespace zvrsit
