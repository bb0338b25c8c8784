// Questions about files, folders and URLs.
#include <utility>

#include "manager/cells.h"
#include "manager/site_mgr.h"

namespace zvrsit {

namespace {

// Bit of the publishing-membership word.
constexpr std::int32_t kFamilyMember = 1;

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

}  // namespace

bool SiteMgr::IsInSite(std::string_view path) const {
  std::string siteDir;
  return ReadSiteFolder(siteDir) == 0 && LiesBelow(path, siteDir);
}

SiteRecCell SiteMgr::EntryCell(const UrlID& id) const {
  SitePathRec path;
  SiteUrlRec url;
  if (id.kind == kKindPath && pathDB->Get(id.id, path) == 0) return PathCell(*pathDB, path);
  if (id.kind == kKindUrl && urlDB->Get(id.id, url) == 0) return UrlCell(*urlDB, url);
  if (id.kind == kKindFolder && folderDB != nullptr) return FolderCell(*folderDB, id.id);
  SiteRecCell cell;
  cell.SetID(id);
  return cell;
}

// The files for which `keep` holds, by record number.
template <class Keep>
vec<SiteRecCell>* SiteMgr::PathCells(Keep keep) {
  if (!HasFiles(pathDB)) return nullptr;
  auto cells = std::make_unique<Cells>();
  for (int number = pathDB->NextNumber(0); number >= 0; number = pathDB->NextNumber(number + 1)) {
    SitePathRec rec;
    if (pathDB->Get(number, rec) == 0 && keep(rec)) cells->push_back(PathCell(*pathDB, rec));
  }
  return cells.release();
}

int SiteMgr::FindPath(const std::string& path) {
  return pathDB == nullptr ? -1 : pathDB->Find(path);
}

vec<SiteRecCell>* SiteMgr::EnumPath() {
  return PathCells([](const SitePathRec&) { return true; });
}

vec<SiteRecCell>* SiteMgr::EnumUrl() {
  if (!HasFiles(urlDB)) return nullptr;
  auto cells = std::make_unique<Cells>();
  for (int number = urlDB->NextNumber(0); number >= 0; number = urlDB->NextNumber(number + 1)) {
    SiteUrlRec rec;
    if (urlDB->Get(number, rec) == 0) cells->push_back(UrlCell(*urlDB, rec));
  }
  return cells.release();
}

vec<SiteRecCell>* SiteMgr::ChildCells(const std::string& folder, int kind) {
  if (!HasFiles(folderDB) || !HasFiles(pathDB) || !HasFiles(urlDB) || relDB == nullptr) {
    return nullptr;
  }
  const int number = folderDB->Find(folder);
  std::vector<int> relations;
  if (number < 0 || relDB->Query(FolderID(number), kAnyUrlID, relations) < 0) return nullptr;
  auto cells = std::make_unique<Cells>();
  for (const int relation : relations) {
    SiteRelRec rec;
    if (relDB->Get(relation, rec) == 0 && rec.to.kind == kind) cells->push_back(EntryCell(rec.to));
  }
  return cells.release();
}

vec<SiteRecCell>* SiteMgr::GetSubFolders(const std::string& folder) {
  return ChildCells(folder, kKindFolder);
}

vec<SiteRecCell>* SiteMgr::GetChildren(const std::string& folder) {
  return ChildCells(folder, kKindPath);
}

std::string* SiteMgr::GetChild(const std::string& folder, int index) {
  const std::unique_ptr<Cells> cells(GetChildren(folder));
  if (cells == nullptr || index < 0 || static_cast<std::size_t>(index) >= cells->size()) {
    return nullptr;
  }
  return new std::string((*cells)[static_cast<std::size_t>(index)].GetName());
}

vec<SiteRecCell>* SiteMgr::GetFtpMember() {
  return PathCells([](const SitePathRec& rec) { return (rec.membership & kFamilyMember) != 0; });
}

bool SiteMgr::ReadPath(const UrlID& id, SitePathRec& rec) const {
  return id.kind == kKindPath && HasFiles(pathDB) && pathDB->Get(id.id, rec) == 0;
}

int SiteMgr::GetUrlFtpMember(const UrlID& id) {
  SitePathRec rec;
  return ReadPath(id, rec) ? rec.membership : -1;
}

vec<SiteRecCell>* SiteMgr::GetUnusedFiles() {
  if (!HasFiles(linkDB)) return nullptr;
  const int topFile = FindTopFile();
  std::vector<int> links;
  return PathCells([&](const SitePathRec& rec) {
    if (rec.exists == 0 || rec.id == topFile) return false;
    const UrlID id = PathID(rec.id);
    const int referrers = linkDB->CountTo(id);
    return referrers == 0 || linkDB->Query(id, id, links) == referrers;
  });
}

vec<SiteRecCell>* SiteMgr::GetFilesByType(unsigned int types) {
  return PathCells(
      [types](const SitePathRec& rec) { return (static_cast<unsigned>(rec.fileType) & types) != 0; });
}

int SiteMgr::GetUrlFileType(const UrlID& id) {
  SitePathRec rec;
  if (ReadPath(id, rec)) return rec.fileType;
  std::string url;
  if (id.kind != kKindUrl || !HasFiles(urlDB) || urlDB->Name(id.id, url) < 0) return -1;
  return static_cast<int>(ClassifyFileType(url));
}

std::string* SiteMgr::GetUrlTitle(const UrlID& id) {
  SitePathRec rec;
  return ReadPath(id, rec) ? NewText(*pathDB, rec.title) : nullptr;
}

int SiteMgr::SetUrlTitle(const UrlID& id, const std::string& title) {
  SitePathRec rec;
  return ReadPath(id, rec) ? pathDB->SetText(id.id, &SitePathRec::title, title) : -1;
}

int SiteMgr::GetUrlProperty(const UrlID& id, std::string*& lastModified, std::string*& expires,
                            std::string*& generator, std::string*& keywords,
                            std::string*& description, std::string*& contentType) {
  lastModified = expires = generator = keywords = description = contentType = nullptr;
  SitePathRec rec;
  if (!ReadPath(id, rec)) return -1;
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
