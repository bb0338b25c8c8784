// The publishing family: the files that the top file reaches, and with RuleFlags::readsSiteData
// those that robots.txt and the sitemap name, kept as marks in the path records.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "links/site_data.h"
#include "manager/family_marks.h"
#include "manager/record_access.h"
#include "manager/work.h"

namespace zvrsit {

namespace {

// Sets or clears the member bit of a file; -1 when its record cannot be read or written.
int MarkMember(SitePathDB* paths, int pathNumber, bool member) {
  SitePathRec rec;
  if (!HasRecords(paths) || paths->Get(pathNumber, rec) < 0) return -1;
  const std::int32_t word =
      member ? rec.membership | kFamilyMember : rec.membership & ~kFamilyMember;
  if (word == rec.membership) return 0;
  rec.membership = word;
  return paths->Update(rec);
}

// Spreads the member mark along the links, or takes it away along them. A chain of pages can be as
// long as the site is large. So the calls of the recursion are kept in a list of their own, not on
// the call stack.
class Spread {
 public:
  // Files enter the family; without `enter` they leave it.
  Spread(SitePathDB* paths, SiteLinkDB* links, bool enter)
      : paths_(paths), links_(links), enter_(enter) {}

  // Marks or unmarks one file, then the files that its links lead to, and so on; -1 when the first
  // cannot be. A file that has its mark, or has lost it, is not followed again.
  int From(int pathNumber);

 private:
  // Links, and how many of them were looked at.
  struct Passed {
    std::vector<int> links;
    std::size_t next = 0;
  };

  int MarkOne(int pathNumber, std::vector<int>& links);
  bool HasMember(Passed& referrers) const;
  bool IsMember(int pathNumber) const;
  int NextTarget(Passed& visit);

  SitePathDB* const paths_;
  SiteLinkDB* const links_;
  const bool enter_;
  std::vector<bool> settled_;  // by number: files known to be marked or unmarked already
  // The links to files that kept their mark. While files leave the family, a file that is no member
  // never becomes one again. So links from such files are looked at only once, however often the
  // same target is asked about.
  std::unordered_map<int, Passed> referrers_;
};

int Spread::From(int pathNumber) {
  std::vector<Passed> visits(1);
  if (MarkOne(pathNumber, visits.back().links) < 0) return -1;
  settled_.resize(static_cast<std::size_t>(paths_->Count()));
  while (!visits.empty()) {
    const int target = NextTarget(visits.back());
    if (target < 0) {
      visits.pop_back();
      continue;
    }
    Passed inner;
    // A file that cannot be marked or followed is left at that, on purpose.
    if (MarkOne(target, inner.links) == 0) visits.push_back(std::move(inner));
  }
  return 0;
}

// Marks or unmarks one file, and lists its links. When files leave, a file that a member links to
// keeps its mark and lists none. Only direct links are looked at, so files of a cycle keep each
// other marked, on purpose.
int Spread::MarkOne(int pathNumber, std::vector<int>& links) {
  if (!enter_) {
    if (!HasRecords(paths_) || !HasRecords(links_)) return -1;
    const auto [entry, isNew] = referrers_.try_emplace(pathNumber);
    Passed& referrers = entry->second;
    const bool isKnown =
        !isNew || links_->Query(kAnyUrlID, PathID(pathNumber), referrers.links) >= 0;
    if (isKnown && HasMember(referrers)) return 0;
    referrers_.erase(entry);
    if (!isKnown) return -1;
  }
  if (MarkMember(paths_, pathNumber, enter_) < 0 || !HasRecords(links_)) return -1;
  return links_->Query(PathID(pathNumber), kAnyUrlID, links) < 0 ? -1 : 0;
}

// Whether one of the links comes from a member. Links that do not are passed for good.
bool Spread::HasMember(Passed& referrers) const {
  for (; referrers.next < referrers.links.size(); ++referrers.next) {
    SiteLinkRec link;
    if (links_->Get(referrers.links[referrers.next], link) < 0) continue;
    if (link.from.kind == kKindPath && IsMember(link.from.id)) return true;
  }
  return false;
}

bool Spread::IsMember(int pathNumber) const {
  std::int32_t marks = 0;
  return paths_->ReadMembership(pathNumber, marks) == 0 && (marks & kFamilyMember) != 0;
}

// The next file that the links of `visit` point to and that is to be marked or unmarked; -1 when
// there is none.
int Spread::NextTarget(Passed& visit) {
  while (visit.next < visit.links.size()) {
    UrlID target;
    if (links_->Target(visit.links[visit.next++], target) < 0 || target.kind != kKindPath) continue;
    const auto number = static_cast<std::size_t>(target.id);
    if (number >= settled_.size() || settled_[number]) continue;
    std::int32_t marks = 0;
    if (paths_->ReadMembership(target.id, marks) < 0) continue;
    if (((marks & kFamilyMember) != 0) != enter_) return target.id;
    settled_[number] = true;
  }
  return -1;
}

}  // namespace

int SiteMgr::SetFtpFamily(const UrlID& id, unsigned int marks) {
  if (id.kind != kKindPath || id.id < 0 || !HasRecords(pathDB)) return -1;
  SitePathRec rec;
  if (pathDB->Get(id.id, rec) < 0) return -1;
  // Bits of `marks` beside the two are set and never cleared, on purpose.
  rec.membership = (rec.membership & ~kUserMarks) | static_cast<std::int32_t>(marks);
  return pathDB->Update(rec);
}

std::vector<int> SiteMgr::ListMarkedByUser() const {
  std::vector<int> marked;
  if (!HasRecords(pathDB)) return marked;
  ForEachNumber(*pathDB, [&](int number) {
    std::int32_t word = -1;
    const bool isKnown = pathDB->GetNumber(number, &SitePathRec::membership, word) == 0;
    if (isKnown && word != -1 && (word & kUserMarks) != 0) marked.push_back(number);
  });
  return marked;
}

int SiteMgr::PropagateFamily(int pathNumber) {
  return Spread(pathDB, linkDB, true).From(pathNumber);
}

int SiteMgr::PropagateUnFamily(int pathNumber) {
  return Spread(pathDB, linkDB, false).From(pathNumber);
}

int SiteMgr::Work::FindTopFile() const {
  const ProfileUse use(m_);
  SiteSiteRec site;
  if (!use.ReadOpenSite(site)) return -1;
  if (site.topFile < 0) return kNoTopFile;
  std::string topFile;
  return use.ReadText(site.topFile, topFile) ? m_.FindPath(topFile) : -1;
}

int SiteMgr::Work::FindSiteFile(std::string_view name) const {
  const bool reads = FlagsOf(m_.GetLinkRules()).readsSiteData && m_.inside->siteFolder;
  return reads ? m_.FindPath(*m_.inside->siteFolder + std::string(name)) : -1;
}

std::vector<int> SiteMgr::Work::ListRoots() const {
  std::vector<int> roots;
  if (const int topFile = FindTopFile(); topFile >= 0) roots.push_back(topFile);
  for (const std::string_view name : kSiteRoots) {
    if (const int root = FindSiteFile(name); root >= 0) roots.push_back(root);
  }
  return roots;
}

namespace {

// The links between files, by the file that they come from.
class FileLinks {
 public:
  explicit FileLinks(SiteLinkDB& links, std::size_t files) : begin_(files + 2) {
    const auto visit = [&](auto use) {
      links.records()->FindIf<SiteRelRec>([&](const SiteRelRec& link) {
        const auto from = static_cast<std::size_t>(link.from.id);
        const bool isOfFiles = link.from.kind == kKindPath && link.to.kind == kKindPath;
        if (isOfFiles && from < files && static_cast<std::size_t>(link.to.id) < files) {
          use(from, link.to.id);
        }
        return false;
      });
    };
    visit([&](std::size_t from, int) { ++begin_[from + 2]; });
    for (std::size_t i = 2; i < begin_.size(); ++i) begin_[i] += begin_[i - 1];
    targets_.resize(begin_.back());
    visit([&](std::size_t from, int to) { targets_[begin_[from + 1]++] = to; });
  }

  std::span<const int> From(int file) const {
    const auto at = static_cast<std::size_t>(file);
    return {targets_.data() + begin_[at], begin_[at + 1] - begin_[at]};
  }

 private:
  std::vector<std::size_t> begin_;
  std::vector<int> targets_;
};

}  // namespace

int SiteMgr::Work::MarkFamilyAnew() {
  const auto count = static_cast<std::size_t>(m_.pathDB->Count());
  const FileLinks links(*m_.linkDB, count);
  std::vector<bool> isMember(count);
  std::vector<int> members;
  const auto enter = [&](int file) {
    if (isMember[static_cast<std::size_t>(file)]) return;
    isMember[static_cast<std::size_t>(file)] = true;
    members.push_back(file);
  };
  if (FindTopFile() >= 0) std::ranges::for_each(ListRoots(), enter);
  for (std::size_t next = 0; next < members.size(); ++next) {  // grows meanwhile
    std::ranges::for_each(links.From(members[next]), enter);
  }
  int result = 0;
  ForEachNumber(*m_.pathDB, [&](int number) {
    if (MarkMember(m_.pathDB, number, isMember[static_cast<std::size_t>(number)]) < 0) result = -1;
  });
  return result;
}

int SiteMgr::TraverseFamily() {
  const ProfileUse use(*this);
  if (!HasFiles(siteProf)) return -1;
  const int topFile = Work(*this).FindTopFile();
  if (topFile == Work::kNoTopFile) return 0;
  return topFile < 0 ? -1 : MarkMember(pathDB, topFile, true);
}

int SiteMgr::UpdateLinkFamily() {
  if (linksChanged == 0) return 0;
  if (siteProf == nullptr || openSiteId < 0 || !HasFiles(pathDB)) {
    return -1;
  }
  const int count = pathDB->Count();
  for (int number = 0; number < count; ++number) MarkMember(pathDB, number, false);

  const int topFile = Work(*this).FindTopFile();
  if (topFile == Work::kNoTopFile) return 0;  // the flag stays up, on purpose
  if (topFile < 0) return -1;
  for (const int root : Work(*this).ListRoots()) {
    if (PropagateFamily(root) < 0) return -1;
  }
  linksChanged = 0;
  return 0;
}

}  // namespace zvrsit
