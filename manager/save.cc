// Saved pages: registering a file anew and collecting its links.
#include <memory>
#include <unordered_set>
#include <vector>

#include "links/page_types.h"
#include "manager/owned_document.h"
#include "manager/record_access.h"
#include "manager/site_mgr.h"
#include "manager_base/operation_memo.h"
#include "registration/site_css_util.h"
#include "registration/site_dom_util.h"
#include "util/file_type.h"

namespace zvrsit {

namespace {

std::unordered_set<int> AsSet(const int* ids, int count) {
  return ids != nullptr && count > 0 ? std::unordered_set<int>(ids, ids + count)
                                     : std::unordered_set<int>();
}

// Marks the entries of `ids` that also stand in `others` with -1; true when one of 0 or above is
// left.
bool CancelEqual(int* ids, int count, const std::unordered_set<int>& others) {
  bool left = false;
  for (int i = 0; i < count; ++i) {
    if (others.contains(ids[i])) {
      ids[i] = -1;
    } else if (ids[i] >= 0) {
      left = true;
    }
  }
  return left;
}

// Whether two lists of targets differ; spoils both.
bool Differ(std::vector<int>& olds, std::vector<int>& news) {
  return olds.size() != news.size() ||
         SiteMgr::LinkChanged(olds.data(), news.data(), static_cast<int>(olds.size()),
                              static_cast<int>(news.size())) != 0;
}

}  // namespace

// The values are compared as they came in, so one entry cancels every equal one of the other list:
// {5, 5} and {5} do not differ.
int SiteMgr::LinkChanged(int* oldIds, int* newIds, int oldCount, int newCount) {
  const std::unordered_set<int> olds = AsSet(oldIds, oldCount);
  const std::unordered_set<int> news = AsSet(newIds, newCount);
  const bool lost = !olds.empty() && CancelEqual(oldIds, oldCount, news);
  const bool gained = !news.empty() && CancelEqual(newIds, newCount, olds);
  return lost || gained ? 1 : 0;
}

int SiteMgr::Save(const std::string& path, int, Document* doc) {
  return Save(path, doc);
}

int SiteMgr::Save(const std::string& path, Document* doc) {
  if (SaveOne(path, doc) < 0) return -1;
  FollowFolderLinks(path);
  return 0;
}

// Saves a file, and leaves the pages that link to its folder as they are.
int SiteMgr::SaveOne(const std::string& path, Document* doc) {
  // The document of any other file stays the caller's, on purpose.
  OwnedDocument owned(HoldsLinks(path, ClassifyFileType(path), pageTypes) ? doc : nullptr,
                      GiveBack{dom});
  std::string siteDir;
  if (path.empty() || pathDB == nullptr || folderDB == nullptr || ReadSiteFolder(siteDir) < 0 ||
      !HasRecords(pathDB) || !HasRecords(linkDB)) {
    return -1;
  }
  // Folder chains end at the site folder, which has no entry before the first rebuild.
  if (AddFolder(siteDir, 0) < 0) return -1;
  const std::int32_t changedBefore = linksChanged;
  std::vector<int> oldTargets;
  const int known = pathDB->Find(path);
  if (known >= 0 && ListFileTargets(known, oldTargets) < 0) return -1;
  const int number = known < 0 ? AddPath(path, siteDir, 0) : RegisterAnew(known, path, siteDir);
  SitePathRec rec;
  if (number < 0 || pathDB->Get(number, rec) < 0) return -1;
  const Operation operation(*this);
  operationMemo->linkedFromBelow = false;
  if (HoldsLinks(path, rec, pageTypes) && TraverseLinks(siteDir, path, owned.release()) < 0)
    return -1;

  std::vector<int> newTargets;
  if (ListFileTargets(number, newTargets) < 0) return -1;
  const bool changed = operationMemo->linkedFromBelow || Differ(oldTargets, newTargets);
  // Taking the page out and putting it back has raised the flag; an unchanged page must not.
  linksChanged = changed ? 1 : changedBefore;
  return 0;
}

// The site folder of the open site.
int SiteMgr::ReadSiteFolder(std::string& siteDir) const {
  const ProfileUse use(*this);
  SiteSiteRec site;
  if (!HasFiles(siteProf) || !ReadOpenSite(site)) return -1;
  return ReadProfileText(site.folders[SiteSiteRec::kSiteFolder], siteDir) ? 0 : -1;
}

// The files that one file's links point to, in the order of the link records.
int SiteMgr::ListFileTargets(int pathNumber, std::vector<int>& targets) {
  const std::unique_ptr<std::vector<int>> links(GetForeLinks(PathID(pathNumber)));
  if (links == nullptr) return -1;
  for (const int number : *links) {
    SiteLinkRec link;
    if (linkDB->Get(number, link) < 0) return -1;
    if (link.to.kind == kKindPath) targets.push_back(link.to.id);
  }
  return 0;
}

// Takes a known file out and registers it again; its number. The publishing-membership word is
// carried over, unless others refer to the entry: then it stayed, with its word.
int SiteMgr::RegisterAnew(int number, const std::string& path, const std::string& siteDir) {
  SitePathRec rec;
  if (pathDB->Get(number, rec) < 0) return -1;
  const std::int32_t membership = rec.membership;
  if (RemoveOne(path) < 0) return -1;
  if (pathDB->Find(path) >= 0) return CheckPath(path, siteDir);

  const int again = AddPath(path, siteDir, 0);
  if (again < 0 || pathDB->Get(again, rec) < 0) return -1;
  if (membership == -1) return again;
  rec.membership = membership;
  return pathDB->Update(rec) < 0 ? -1 : again;
}

int SiteMgr::TraverseLinks(const std::string& siteDir, const std::string& path, Document* doc) {
  const Operation operation(*this);
  bool unread = false;
  const int result = Traverse(siteDir, path, doc, unread);
  const int number = pathDB != nullptr ? pathDB->Find(path) : -1;
  SetUnread(number, result < 0 || unread);
  MarkFound(number);
  return result;
}

// Notes whether the links of a file that is there are unknown, or not all known.
void SiteMgr::SetUnread(int pathNumber, bool unread) {
  SitePathRec rec;
  if (pathDB == nullptr || pathNumber < 0 || pathDB->Get(pathNumber, rec) < 0) return;
  const bool isPage = rec.exists != 0 && HoldsLinks(pathDB->TextView(rec.name), rec, pageTypes);
  const std::int32_t word = unread && isPage ? SitePathRec::kUnread : SitePathRec::kRead;
  if (rec.unread == word) return;
  rec.unread = word;
  pathDB->Update(rec);
}

// Notes, under the web rules, what the page number `saved` is the first to link to: nobody has had
// it read.
void SiteMgr::MarkFound(int saved) {
  std::vector<std::int32_t>& found = operationMemo->foundFiles;
  for (const int number : found) {
    const bool isRead = number == saved || operationMemo->registeredSheets.contains(number);
    if (linkRules == LinkRules::Web && !isRead) SetUnread(number, true);
  }
  found.clear();
}

// Sets `unread` when the file had to be read and could not be.
int SiteMgr::Traverse(const std::string& siteDir, const std::string& path, Document* doc,
                      bool& unread) {
  const Operation operation(*this);
  OwnedDocument document(doc, GiveBack{dom});
  operationMemo->page.Forget();
  if (document == nullptr) {
    if (dom == nullptr) return -1;
    document.reset(dom->createDocument("HTML"));
    if (document == nullptr) return -1;
    unread = !operationMemo->page.Read(path, linkRules, *document);
  }
  const bool isSheet = ClassifyFileType(path) == FT_CSS;
  // The classic rules read a sheet as if it were a page too, on purpose.
  const bool isPage = !isSheet || linkRules == LinkRules::Classic;
  if (isPage && CollectPageLinks(siteDir, path, document.get()) < 0) return -1;

  SiteCSSUtil styles(this, siteDir);
  return isSheet ? styles.CollectSheet(path) : styles.CollectPage(path, document.get());
}

// The links in the page's own text. The page record is written when the collecting object goes,
// which has to be before the style sheets are looked at.
int SiteMgr::CollectPageLinks(const std::string& siteDir, const std::string& path, Document* doc) {
  SiteDOMUtil page(this, dom, pathDB, urlDB, linkDB, path);
  return page.CollectLinks(LinkBase(siteDir), doc, siteDir);
}

// The folder that "/" names in a link.
const std::string& SiteMgr::LinkBase(const std::string& siteDir) const {
  return docRoot != nullptr && !docRoot->empty() ? *docRoot : siteDir;
}

}  // namespace zvrsit
