// Saved pages: registering a file again and collecting its links.
#include <memory>
#include <unordered_set>
#include <vector>

#include "manager/owned_document.h"
#include "manager/record_access.h"
#include "manager/work.h"
#include "registration/site_css_util.h"
#include "registration/site_dom_util.h"
#include "util/file_type.h"

namespace zvrsit {

namespace {

std::unordered_set<int> AsSet(const int* ids, int count) {
  return ids != nullptr && count > 0 ? std::unordered_set<int>(ids, ids + count)
                                     : std::unordered_set<int>();
}

// Overwrites the entries of `ids` that `others` also has with -1; true if an entry of 0 or above is
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

// Whether two lists of targets differ. The lists are changed by this.
bool Differ(std::vector<int>& olds, std::vector<int>& news) {
  return olds.size() != news.size() ||
         SiteMgr::LinkChanged(olds.data(), news.data(), static_cast<int>(olds.size()),
                              static_cast<int>(news.size())) != 0;
}

}  // namespace

// The values are compared as they were given, so one entry cancels every equal entry of the other
// list: {5, 5} and {5} do not differ.
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
  Work work(*this);
  const bool wasThere = work.IsThere(path);
  if (work.Save(path, doc) < 0) return -1;
  if (!wasThere) inside->cameOrWent.push_back(path);
  work.FollowFolderLinks(path, !wasThere);
  return 0;
}

bool SiteMgr::Work::IsThere(const std::string& path) const {
  SitePathRec rec;
  return HasFiles(m_.pathDB) && m_.pathDB->Get(m_.pathDB->Find(path), rec) == 0 && rec.exists != 0;
}

// Saves a file, and does not read the pages that link to its folder.
int SiteMgr::Work::Save(const std::string& path, Document* doc) {
  // The document of any other file stays the caller's, on purpose.
  OwnedDocument owned(HoldsLinks(path, ClassifyFileType(path), m_.inside->types()) ? doc : nullptr,
                      GiveBack{m_.dom});
  std::string siteDir;
  if (path.empty() || m_.pathDB == nullptr || m_.folderDB == nullptr || !ReadSiteFolder(siteDir) ||
      !HasRecords(m_.pathDB) || !HasRecords(m_.linkDB)) {
    return -1;
  }
  // Folder chains end at the site folder, which has no entry before the first rebuild.
  if (m_.AddFolder(siteDir, 0) < 0) return -1;
  const std::int32_t changedBefore = m_.linksChanged;
  std::vector<int> oldTargets;
  const int known = m_.pathDB->Find(path);
  if (known >= 0 && ListFileTargets(known, oldTargets) < 0) return -1;
  const int number = known < 0 ? m_.AddPath(path, siteDir, 0) : RegisterAnew(known, path, siteDir);
  SitePathRec rec;
  if (number < 0 || m_.pathDB->Get(number, rec) < 0) return -1;
  const Operation operation(m_);
  m_.inside->operationMemo->linkedFromBelow = false;
  if (HoldsLinks(path, rec, m_.inside->types()) &&
      m_.TraverseLinks(siteDir, path, owned.release()) < 0)
    return -1;

  std::vector<int> newTargets;
  if (ListFileTargets(number, newTargets) < 0) return -1;
  const bool changed = m_.inside->operationMemo->linkedFromBelow || Differ(oldTargets, newTargets);
  // The flag was raised when the page was taken out and put back; for an unchanged page it must not
  // be.
  m_.linksChanged = changed ? 1 : changedBefore;
  return 0;
}

// The files that one file's links point to, in the order of the link records.
int SiteMgr::Work::ListFileTargets(int pathNumber, std::vector<int>& targets) {
  const std::unique_ptr<std::vector<int>> links(m_.GetForeLinks(PathID(pathNumber)));
  if (links == nullptr) return -1;
  for (const int number : *links) {
    SiteLinkRec link;
    if (m_.linkDB->Get(number, link) < 0) return -1;
    if (link.to.kind == kKindPath) targets.push_back(link.to.id);
  }
  return 0;
}

// Takes a known file out and registers it again; its number. The publishing-membership word is
// carried over. When others refer to the entry, the entry stayed and still has its word.
int SiteMgr::Work::RegisterAnew(int number, const std::string& path, const std::string& siteDir) {
  SitePathRec rec;
  if (m_.pathDB->Get(number, rec) < 0) return -1;
  const std::int32_t membership = rec.membership;
  if (Remove(path) < 0) return -1;
  if (m_.pathDB->Find(path) >= 0) return m_.CheckPath(path, siteDir);

  const int again = m_.AddPath(path, siteDir, 0);
  if (again < 0 || m_.pathDB->Get(again, rec) < 0) return -1;
  if (membership == -1) return again;
  rec.membership = membership;
  return m_.pathDB->Update(rec) < 0 ? -1 : again;
}

int SiteMgr::TraverseLinks(const std::string& siteDir, const std::string& path, Document* doc) {
  const Operation operation(*this);
  Work work(*this);
  bool unread = false;
  const int result = work.Traverse(siteDir, path, doc, unread);
  const int number = pathDB != nullptr ? pathDB->Find(path) : -1;
  // A link to a file that could not be stored does not make this fail.
  work.SetUnread(number, result < 0 || unread || IsFull());
  work.MarkFound(number);
  return result;
}

// Notes whether the links of a file that is there are unknown, or not all known.
void SiteMgr::Work::SetUnread(int pathNumber, bool unread) {
  SitePathRec rec;
  if (m_.pathDB == nullptr || pathNumber < 0 || m_.pathDB->Get(pathNumber, rec) < 0) return;
  const bool isPage =
      rec.exists != 0 && HoldsLinks(m_.pathDB->TextView(rec.name), rec, m_.inside->types());
  const std::int32_t word = unread && isPage ? SitePathRec::kUnread : SitePathRec::kRead;
  if (rec.unread == word) return;
  rec.unread = word;
  static_cast<void>(m_.pathDB->Update(rec));  // the save itself has its result already
}

// Notes the files to which page number `saved` is the first to link: nothing has made them be read
// yet.
void SiteMgr::Work::MarkFound(int saved) {
  std::vector<std::int32_t>& found = m_.inside->operationMemo->foundFiles;
  for (const int number : found) {
    const bool isRead =
        number == saved || m_.inside->operationMemo->registeredSheets.contains(number);
    if (FlagsOf(m_.GetLinkRules()).readsWhatIsLinked && !isRead) SetUnread(number, true);
  }
  found.clear();
}

// Sets `unread` when the file had to be read and could not be.
int SiteMgr::Work::Traverse(const std::string& siteDir, const std::string& path, Document* doc,
                            bool& unread) {
  const Operation operation(m_);
  OwnedDocument document(doc, GiveBack{m_.dom});
  m_.inside->operationMemo->page.Forget();
  const bool isRead = document == nullptr;
  if (isRead) {
    if (m_.dom == nullptr) return -1;
    document.reset(m_.dom->createDocument("HTML"));
    if (document == nullptr) return -1;
    const DocumentScope scope =
        m_.inside->kept != nullptr ? DocumentScope::kReferencesAndIds : DocumentScope::kReferences;
    unread =
        !m_.inside->operationMemo->page.Read(path, FlagsOf(m_.GetLinkRules()), *document, scope);
  }
  const bool isSheet = ClassifyFileType(path) == FT_CSS;
  const bool isPage = !isSheet || FlagsOf(m_.GetLinkRules()).readsSheetsAsPages;
  if (isPage && CollectPageLinks(siteDir, path, document.get()) < 0) return -1;
  const bool isData = FlagsOf(m_.GetLinkRules()).readsSiteData && IsSiteData(PageSyntaxOf(path));
  if (isData) return 0;
  if (isPage) NoteIds(path, isRead ? document.get() : nullptr);

  SiteCSSUtil styles(&m_, siteDir);
  return isSheet ? styles.CollectSheet(path) : styles.CollectPage(path, document.get());
}

// Collects the links in the page's own text. The page's record is written when the collecting
// object is destroyed. This must happen before the style sheets are looked at.
int SiteMgr::Work::CollectPageLinks(const std::string& siteDir, const std::string& path,
                                    Document* doc) {
  SiteDOMUtil page(&m_, m_.dom, m_.pathDB, m_.urlDB, m_.linkDB, path);
  return page.CollectLinks(RootOf(m_, siteDir), doc, siteDir);
}

}  // namespace zvrsit
