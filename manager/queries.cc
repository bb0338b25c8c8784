// Questions about files, folders and URLs.
#include <memory>
#include <utility>

#include "links/page_types.h"
#include "links/redirect_rules.h"
#include "manager/cells.h"
#include "manager/family_marks.h"
#include "manager/work.h"
#include "util/file_type.h"

namespace zvrsit {

namespace {

// A new string of a text word; null when it is unset.
std::string* NewText(const SiteTable& table, int reference) {
  auto text = std::make_unique<std::string>();
  return reference >= 0 && table.Text(reference, *text) == 0 ? text.release() : nullptr;
}

template <class Table>
std::string* NewName(const Table* table, int number) {
  auto name = std::make_unique<std::string>();
  return HasFiles(table) && table->Name(number, *name) == 0 ? name.release() : nullptr;
}

// The files for which keep(record) holds, by record number.
template <class Keep>
vec<SiteRecCell>* PathCells(const SitePathDB* paths, Keep keep) {
  if (!HasFiles(paths)) return nullptr;
  auto cells = std::make_unique<Cells>();
  ForEachNumber(*paths, [&](int number) {
    SitePathRec rec;
    if (paths->Get(number, rec) == 0 && keep(rec)) cells->push_back(PathCell(*paths, rec));
  });
  return cells.release();
}

bool ReadPath(const SitePathDB* paths, const UrlID& id, SitePathRec& rec) {
  return id.kind == kKindPath && HasFiles(paths) && paths->Get(id.id, rec) == 0;
}

// Whether a reader of the site would call this a page. Drawings are read for links, but are no
// pages.
bool IsPage(const SitePathDB& paths, const SitePathRec& file, const PageTypes* types) {
  if (file.fileType != static_cast<std::int32_t>(FT_OTHER)) {
    return file.fileType == static_cast<std::int32_t>(FT_HTML);
  }
  const std::string_view name = paths.TextView(file.name);
  return HoldsLinks(name, file, types) && IsShownAsPage(PageSyntaxOf(name));
}

// The numbers of the entries of one kind directly in a folder, in the order of the relations; false
// when the folder is not known.
bool ListChildren(const SiteMgr& manager, const std::string& folder, int kind,
                  std::vector<int>& children) {
  const SiteFolderDB* const folders = manager.GetFolderDB();
  SiteRelDB* const relationTable = manager.GetRelDB();
  if (!HasFiles(folders) || !HasFiles(relationTable)) return false;
  const int number = folders->Find(folder);
  std::vector<int> relations;
  if (number < 0 || relationTable->Query(FolderID(number), kAnyUrlID, relations) < 0) return false;
  for (const int relation : relations) {
    SiteRelRec rec;
    if (relationTable->Get(relation, rec) == 0 && rec.to.kind == kind) {
      children.push_back(rec.to.id);
    }
  }
  return true;
}

}  // namespace

int SiteMgr::CountSite(SiteTotals& totals) const {
  if (openSiteId < 0 || !HasFiles(pathDB) || !HasFiles(urlDB) || !HasFiles(linkDB)) return -1;
  totals = {};
  totals.links = linkDB->records()->liveCount();
  totals.urls = urlDB->records()->liveCount();
  pathDB->records()->FindIf<SitePathRec>([&totals, this](const SitePathRec& file) {
    if (file.exists == 0) return false;
    ++totals.files;
    if (IsPage(*pathDB, file, inside->types())) ++totals.pages;
    if (file.fileType == static_cast<std::int32_t>(FT_CSS)) ++totals.sheets;
    return false;
  });
  return 0;
}

int SiteMgr::FindPath(const std::string& path) const {
  return pathDB == nullptr ? -1 : pathDB->Find(path);
}

vec<SiteRecCell>* SiteMgr::EnumPath() {
  return PathCells(pathDB, [](const SitePathRec&) { return true; });
}

vec<SiteRecCell>* SiteMgr::EnumUrl() {
  if (!HasFiles(urlDB)) return nullptr;
  auto cells = std::make_unique<Cells>();
  ForEachNumber(*urlDB, [&](int number) {
    SiteUrlRec rec;
    if (urlDB->Get(number, rec) == 0) cells->push_back(UrlCell(*urlDB, rec));
  });
  return cells.release();
}

vec<SiteRecCell>* SiteMgr::GetSubFolders(const std::string& folder) {
  std::vector<int> children;
  if (!ListChildren(*this, folder, kKindFolder, children)) return nullptr;
  auto cells = std::make_unique<Cells>();
  for (const int number : children) {
    cells->push_back(FolderCell(*folderDB, number));
    cells->back().SetFlag(relDB->CountFrom(FolderID(number)));
  }
  return cells.release();
}

vec<SiteRecCell>* SiteMgr::GetChildren(const std::string& folder) {
  std::vector<int> children;
  if (!HasFiles(pathDB) || !ListChildren(*this, folder, kKindPath, children)) return nullptr;
  auto cells = std::make_unique<Cells>();
  for (const int number : children) {
    SitePathRec rec;
    if (pathDB->Get(number, rec) == 0) cells->push_back(PathCell(*pathDB, rec));
  }
  return cells.release();
}

std::string* SiteMgr::GetChild(const std::string& folder, int index) {
  std::vector<int> children;
  if (!ListChildren(*this, folder, kKindPath, children)) return nullptr;
  if (index < 0 || static_cast<std::size_t>(index) >= children.size()) return nullptr;
  return UrlPath(children[static_cast<std::size_t>(index)]);
}

vec<SiteRecCell>* SiteMgr::GetFtpMember() {
  return PathCells(pathDB,
                   [](const SitePathRec& rec) { return (rec.membership & kFamilyMember) != 0; });
}

int SiteMgr::GetUrlFtpMember(const UrlID& id) {
  SitePathRec rec;
  return ReadPath(pathDB, id, rec) ? rec.membership : -1;
}

// One pass over the links; a link of a file to itself does not count.
vec<SiteRecCell>* SiteMgr::GetUnusedFiles() {
  if (!HasFiles(linkDB) || !HasFiles(pathDB)) return nullptr;
  std::vector<bool> used(static_cast<std::size_t>(pathDB->Count()));
  ForEachNumber(*linkDB, [&](int number) {
    SiteRelRec link;
    if (linkDB->records()->Get(number, &link) < 0 || link.from == link.to) return;
    const auto target = static_cast<std::size_t>(link.to.id);
    if (link.to.kind == kKindPath && link.to.id >= 0 && target < used.size()) used[target] = true;
  });
  for (const int root : Work(*this).ListRoots()) used[static_cast<std::size_t>(root)] = true;
  const int redirects = Work(*this).FindSiteFile(kRedirectsName);
  return PathCells(pathDB, [&](const SitePathRec& rec) {
    return rec.exists != 0 && rec.id != redirects && !used[static_cast<std::size_t>(rec.id)];
  });
}

vec<SiteRecCell>* SiteMgr::GetFilesByType(unsigned int types) {
  return PathCells(pathDB, [types](const SitePathRec& rec) {
    return (static_cast<unsigned>(rec.fileType) & types) != 0;
  });
}

int SiteMgr::GetUrlFileType(const UrlID& id) {
  SitePathRec rec;
  if (ReadPath(pathDB, id, rec)) return rec.fileType;
  std::string url;
  if (id.kind != kKindUrl || !HasFiles(urlDB) || urlDB->Name(id.id, url) < 0) return -1;
  return static_cast<int>(ClassifyFileType(url));
}

std::string* SiteMgr::GetUrlTitle(const UrlID& id) {
  SitePathRec rec;
  return ReadPath(pathDB, id, rec) ? NewText(*pathDB, rec.title) : nullptr;
}

int SiteMgr::SetUrlTitle(const UrlID& id, const std::string& title) {
  SitePathRec rec;
  return ReadPath(pathDB, id, rec) ? pathDB->SetText(id.id, &SitePathRec::title, title) : -1;
}

int SiteMgr::GetUrlProperty(const UrlID& id, std::string*& lastModified, std::string*& expires,
                            std::string*& generator, std::string*& keywords,
                            std::string*& description, std::string*& contentType) {
  lastModified = expires = generator = keywords = description = contentType = nullptr;
  SitePathRec rec;
  if (!ReadPath(pathDB, id, rec)) return -1;
  lastModified = NewText(*pathDB, rec.lastModified);
  expires = NewText(*pathDB, rec.expires);
  generator = NewText(*pathDB, rec.generator);
  keywords = NewText(*pathDB, rec.keywords);
  description = NewText(*pathDB, rec.description);
  contentType = NewText(*pathDB, rec.contentType);
  return 0;
}

std::string* SiteMgr::FolderName(int folderNumber) {
  return NewName(folderDB, folderNumber);
}

std::string* SiteMgr::UrlPath(int pathNumber) {
  return NewName(pathDB, pathNumber);
}

std::string* SiteMgr::UrlUrl(int urlNumber) {
  return NewName(urlDB, urlNumber);
}

}  // namespace zvrsit
