// The end of an update: what nothing leads to any more goes, and the family is marked.
#include <algorithm>
#include <vector>

#include "links/site_data.h"
#include "manager/family_marks.h"
#include "manager/record_access.h"
#include "manager/update.h"

namespace zvrsit {

namespace {

// To spread the marks from more files than this takes longer than to begin anew.
constexpr std::size_t kMostSpreads = 8;

struct ByKindAndId {
  bool operator()(const UrlID& a, const UrlID& b) const {
    return a.kind != b.kind ? a.kind < b.kind : a.id < b.id;
  }
};

void MakeSet(std::vector<UrlID>& ids) {
  std::ranges::sort(ids, ByKindAndId());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

// The first that `b` lacks, of two sets.
std::vector<UrlID> Difference(const std::vector<UrlID>& a, const std::vector<UrlID>& b) {
  std::vector<UrlID> left;
  std::ranges::set_difference(a, b, std::back_inserter(left), ByKindAndId());
  return left;
}

}  // namespace

int SiteMgr::Update::Sweep() {
  CompareTargets();
  if (foundPageMayGo_) return kMustRebuild;
  if (!note_.isExact || lostLink_ || !gone_.empty()) {
    const int result = DropUnlinked();
    if (result != 0) return result;
  }
  if (SweepRelations() < 0) return -1;
  return MarkFamily();
}

void SiteMgr::Update::CompareTargets() {
  for (Reread& reread : rereads_) {
    std::vector<UrlID> now = TargetsOf(reread.number);
    MakeSet(reread.targets);
    MakeSet(now);
    const std::vector<UrlID> lost = Difference(reread.targets, now);
    lostLink_ |= !lost.empty();
    for (const UrlID& id : lost) {
      if (id.kind != kKindPath || IsWalked(id.id)) continue;
      foundPageMayGo_ |= IsThere(id.id) && IsFoundPage(m_.pathDB->NameView(id.id));
    }
    std::int32_t marks = 0;
    const bool isMember =
        m_.pathDB->ReadMembership(reread.number, marks) == 0 && (marks & kFamilyMember) != 0;
    if (!isMember) continue;
    familyMayShrink_ |= std::ranges::any_of(
        lost, [&](const UrlID& id) { return id.kind == kKindPath && id.id != reread.number; });
    for (const UrlID& id : Difference(now, reread.targets)) {
      const bool isFile = id.kind == kKindPath && m_.pathDB->ReadMembership(id.id, marks) == 0;
      if (isFile && (marks & kFamilyMember) == 0) gained_.push_back(id.id);
    }
  }
}

bool SiteMgr::Update::IsThere(int number) const {
  std::int32_t exists = 0;
  return m_.pathDB->GetNumber(number, &SitePathRec::exists, exists) == 0 && exists != 0;
}

// Drops the entries of URLs and missing files to which nothing links. Entries that the user has
// marked stay.
int SiteMgr::Update::DropUnlinked() {
  std::vector<bool> paths(static_cast<std::size_t>(m_.pathDB->Count()));
  std::vector<bool> urls(static_cast<std::size_t>(m_.urlDB->Count()));
  m_.linkDB->records()->FindIf<SiteRelRec>([&](const SiteRelRec& link) {
    std::vector<bool>& linked = link.to.kind == kKindUrl ? urls : paths;
    const auto at = static_cast<std::size_t>(link.to.id);
    if (at < linked.size()) linked[at] = true;
    return false;
  });
  std::vector<int> unlinked;
  ForEachNumber(*m_.pathDB, [&](int number) {
    if (!IsWalked(number) && !paths[static_cast<std::size_t>(number)]) unlinked.push_back(number);
  });
  for (const int number : unlinked) {
    // A page that was saved although nothing links to it; what it links to may have to go too.
    if (IsThere(number) && IsFoundPage(m_.pathDB->NameView(number))) return kMustRebuild;
    if (DropUnlinkedPath(number) < 0) return -1;
  }
  unlinked.clear();
  ForEachNumber(*m_.urlDB, [&](int number) {
    if (!urls[static_cast<std::size_t>(number)]) unlinked.push_back(number);
  });
  for (const int number : unlinked) {
    if (m_.DelUrl(number) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Update::DropUnlinkedPath(int number) {
  SitePathRec rec;
  if (m_.pathDB->Get(number, rec) < 0) return -1;
  if ((rec.membership & kUserMarks) != 0) return 0;
  if (m_.pathDB->ReleaseTexts(rec) < 0 || m_.pathDB->Update(rec) < 0) return -1;
  return work_.DeleteEntry(number);
}

// Drops the folders that are not there, and relations to and from them; and the relations of files
// that are not there.
int SiteMgr::Update::SweepRelations() {
  const std::unordered_set<std::string> needed = FoldersOfOthers();
  std::vector<bool> isThere(walked_);
  isThere.resize(static_cast<std::size_t>(m_.pathDB->Count()));
  for (const Found& other : others_) isThere[static_cast<std::size_t>(other.number)] = true;
  std::vector<bool> isNeeded(static_cast<std::size_t>(m_.folderDB->Count()));
  std::vector<int> dead;
  ForEachNumber(*m_.folderDB, [&](int number) {
    const std::string name(m_.folderDB->NameView(number));
    const bool stays = walkedFolders_.contains(name) || needed.contains(name);
    isNeeded[static_cast<std::size_t>(number)] = stays;
    if (!stays) dead.push_back(number);
  });
  for (const int number : dead) {
    if (m_.DelFolder(number) < 0) return -1;
  }
  dead.clear();
  ForEachNumber(*m_.relDB, [&](int number) {
    SiteRelRec relation;
    if (m_.relDB->Get(number, relation) < 0) return;
    const auto to = static_cast<std::size_t>(relation.to.id);
    const bool stays = isNeeded[static_cast<std::size_t>(relation.from.id)] &&
                       (relation.to.kind == kKindPath ? isThere[to] : isNeeded[to]);
    if (!stays) dead.push_back(number);
  });
  for (const int number : dead) {
    if (m_.DelRel(number) < 0) return -1;
  }
  return 0;
}

int SiteMgr::Update::MarkFamily() {
  const bool rootsMoved = work_.ListRoots() != roots_;
  if (!note_.isExact || rootsMoved || familyMayShrink_ || gained_.size() > kMostSpreads) {
    m_.linksChanged = 1;
    return work_.MarkFamilyAnew();
  }
  if (!gained_.empty()) m_.linksChanged = 1;
  for (const int number : gained_) {
    if (m_.PropagateFamily(number) < 0) return -1;
  }
  return 0;
}

}  // namespace zvrsit
