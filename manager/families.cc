// The publishing family: the files that the top file reaches, kept as marks in the path records.
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "manager/family_marks.h"
#include "manager/record_access.h"
#include "manager/site_mgr.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

// What FindTopFile gives for a profile without one.
constexpr int kNoTopFile = -2;

// A file whose links are being followed: the calls of a recursion, kept apart from the call stack
// because a chain of pages is as long as the site is large.
struct Visit {
  std::vector<int> links;
  std::size_t next = 0;
};

}  // namespace

int SiteMgr::SetFtpFamily(const UrlID& id, unsigned int marks) {
  if (id.kind != kKindPath || id.id < 0 || !HasRecords(pathDB)) return -1;
  SitePathRec rec;
  if (pathDB->Get(id.id, rec) < 0) return -1;
  // Bits of `marks` beside the two are set and never cleared, on purpose.
  rec.membership = (rec.membership & ~kUserMarks) | static_cast<std::int32_t>(marks);
  return pathDB->Update(rec);
}

// Sets or clears the member bit of a file; -1 when its record cannot be read or written.
int SiteMgr::MarkMember(int pathNumber, bool member) {
  SitePathRec rec;
  if (!HasRecords(pathDB) || pathDB->Get(pathNumber, rec) < 0) return -1;
  const std::int32_t word =
      member ? rec.membership | kFamilyMember : rec.membership & ~kFamilyMember;
  if (word == rec.membership) return 0;
  rec.membership = word;
  return pathDB->Update(rec);
}

bool SiteMgr::IsMember(int pathNumber) const {
  SitePathRec rec;
  return pathDB->Get(pathNumber, rec) == 0 && (rec.membership & kFamilyMember) != 0;
}

// The next file, from `next` on, that one of `links` points to and whose member bit is `member`;
// -1 when there is none. `settled` are those, by number, that are known to have another.
int SiteMgr::NextTarget(const std::vector<int>& links, std::size_t& next, bool member,
                        std::vector<bool>& settled) const {
  while (next < links.size()) {
    UrlID target;
    if (linkDB->Target(links[next++], target) < 0 || target.kind != kKindPath) continue;
    const auto number = static_cast<std::size_t>(target.id);
    if (number >= settled.size() || settled[number]) continue;
    std::int32_t marks = 0;
    if (pathDB->ReadMembership(target.id, marks) < 0) continue;
    if (((marks & kFamilyMember) != 0) == member) return target.id;
    settled[number] = true;
  }
  return -1;
}

// Marks one file and lists its links.
int SiteMgr::EnterFamily(int pathNumber, std::vector<int>& links) {
  if (MarkMember(pathNumber, true) < 0 || !HasRecords(linkDB)) return -1;
  return linkDB->Query(PathID(pathNumber), kAnyUrlID, links) < 0 ? -1 : 0;
}

// Unmarks one file, unless a member links to it, and lists its links; none for a file that keeps
// its mark. Only direct referrers are looked at, so files of a cycle keep each other marked, on
// purpose.
int SiteMgr::LeaveFamily(int pathNumber, std::vector<int>& links) {
  if (!HasRecords(pathDB) || !HasRecords(linkDB)) return -1;
  std::vector<int> referrers;
  if (linkDB->Query(kAnyUrlID, PathID(pathNumber), referrers) < 0) return -1;
  for (const int number : referrers) {
    SiteLinkRec link;
    if (linkDB->Get(number, link) < 0) continue;
    if (link.from.kind == kKindPath && IsMember(link.from.id)) return 0;
  }
  if (MarkMember(pathNumber, false) < 0) return -1;
  return linkDB->Query(PathID(pathNumber), kAnyUrlID, links) < 0 ? -1 : 0;
}

// Enters or leaves one file, and from there each that the links lead to and that has not yet.
int SiteMgr::SpreadMembership(int pathNumber, bool member) {
  const auto turn = [this, member](int number, std::vector<int>& links) {
    return member ? EnterFamily(number, links) : LeaveFamily(number, links);
  };
  std::vector<Visit> visits(1);
  if (turn(pathNumber, visits.back().links) < 0) return -1;
  std::vector<bool> settled(static_cast<std::size_t>(pathDB->Count()));
  while (!visits.empty()) {
    Visit& visit = visits.back();
    const int target = NextTarget(visit.links, visit.next, !member, settled);
    if (target < 0) {
      visits.pop_back();
      continue;
    }
    Visit inner;
    // A file that cannot be marked or followed is left at that, on purpose.
    if (turn(target, inner.links) == 0) visits.push_back(std::move(inner));
  }
  return 0;
}

int SiteMgr::PropagateFamily(int pathNumber) {
  return SpreadMembership(pathNumber, true);
}

int SiteMgr::PropagateUnFamily(int pathNumber) {
  return SpreadMembership(pathNumber, false);
}

// The number of the open site's top file in the path table: kNoTopFile when the profile has none,
// -1 when it cannot be read or is not registered.
int SiteMgr::FindTopFile() const {
  SiteSiteRec site;
  if (!ReadOpenSite(site)) return -1;
  if (site.topFile < 0) return kNoTopFile;
  std::string topFile;
  if (!ReadProfileText(site.topFile, topFile)) return -1;
  return FindPath(topFile);
}

int SiteMgr::TraverseFamily() {
  if (!HasFiles(siteProf)) return -1;
  const int topFile = FindTopFile();
  if (topFile == kNoTopFile) return 0;
  return topFile < 0 ? -1 : MarkMember(topFile, true);
}

int SiteMgr::UpdateLinkFamily() {
  if (linksChanged == 0) return 0;
  if (siteProf == nullptr || openSiteId < 0 || !HasFiles(pathDB)) {
    return -1;
  }
  const int count = pathDB->Count();
  for (int number = 0; number < count; ++number) MarkMember(number, false);

  const int topFile = FindTopFile();
  if (topFile == kNoTopFile) return 0;  // the flag stays up, on purpose
  if (topFile < 0 || PropagateFamily(topFile) < 0) return -1;
  linksChanged = 0;
  return 0;
}

// The sources are listed before the first save, because saving gives links new numbers. A page
// that cannot be saved does not keep the others from it.
int SiteMgr::ReflectDefaultUrl(const std::string&) {
  std::string siteDir;
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || !HasFiles(siteProf) || defaultUrl == nullptr ||
      ReadSiteFolder(siteDir) < 0) {
    return -1;
  }
  int result = 0;
  for (const std::string& source : ListFolderLinkSources()) {
    if (Save(source, nullptr) < 0) result = -1;
  }
  return result;
}

// The files that hold a link to a file whose text ends in "/", each once, in the order of the
// first such link.
std::vector<std::string> SiteMgr::ListFolderLinkSources() const {
  std::vector<std::string> sources;
  std::unordered_set<int> seen;
  for (int number = linkDB->NextNumber(0); number >= 0; number = linkDB->NextNumber(number + 1)) {
    SiteLinkRec link;
    if (linkDB->Get(number, link) < 0 || link.to.kind != kKindPath) continue;
    const std::string_view text = linkDB->TextView(link.text);
    if (text.empty() || FindLastCharMB(text, '/') != text.size() - 1) continue;
    std::string source;
    if (seen.insert(link.from.id).second && pathDB->Name(link.from.id, source) == 0) {
      sources.push_back(std::move(source));
    }
  }
  return sources;
}

}  // namespace zvrsit
