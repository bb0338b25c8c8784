// Single entries: files, folders, URLs, links and relations go in and out of the tables here.
#include <string_view>
#include <vector>

#include "manager_base/inside.h"
#include "platform/file.h"
#include "storage/records.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_url_db.h"
#include "util/disk_name.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

// Cuts a folder name to that of its parent; false at a root.
bool CutToParent(std::string& folder) {
  const auto last = FindLastBackslashMB(folder);
  if (last == std::string::npos) return false;
  folder.erase(last);
  const auto above = FindLastBackslashMB(folder);
  if (above == std::string::npos) return false;
  folder.erase(above + 1);
  return true;
}

// Clears the existence flag of a file whose name is spelled differently on disk.
void CheckCase(const std::string& path, SitePathRec& rec) {
  if (rec.exists != 0 && !IsSpelledAsOnDisk(path)) rec.exists = 0;
}

template <class Table>
int DeleteFrom(Table* table, int id) {
  return id < 0 || table == nullptr ? -1 : table->Delete(id);
}

}  // namespace

int SiteMgrBase::AddUrl(const std::string& url) {
  if (url.empty() || openSiteId < 0 || urlDB == nullptr) return -1;
  const int known = urlDB->Find(url);
  return known >= 0 ? known : urlDB->Add(url);
}

int SiteMgrBase::AddLink(const std::string& text, const UrlID& from, const UrlID& to, int type) {
  if (text.empty() || openSiteId < 0 || linkDB == nullptr) return -1;
  return linkDB->Add(text, from, to, type);
}

int SiteMgrBase::AddPath(const std::string& path, const std::string& siteDir, int checkCase) {
  return Work(*this).AddPath(path, siteDir, checkCase != 0, nullptr);
}

int SiteMgrBase::Work::AddPath(const std::string& path, const std::string& siteDir, bool checkCase,
                               const platform::FileStat* seen) {
  SitePathDB* const paths = base_.pathDB;
  if (path.empty() || base_.openSiteId < 0 || paths == nullptr) return -1;
  const int known = paths->Find(path);
  if (known >= 0) return known;

  const int number = paths->Add(path);
  SitePathRec rec;
  if (number < 0 || paths->Get(number, rec) < 0) return -1;
  if (FillFromDisk(path, siteDir, seen, rec) < 0) return -1;
  if (checkCase) CheckCase(path, rec);
  return paths->Update(rec) < 0 ? -1 : number;
}

int SiteMgrBase::CheckPath(const std::string& path, const std::string& siteDir) {
  if (path.empty() || openSiteId < 0 || pathDB == nullptr) return -1;
  const int number = pathDB->Find(path);
  if (number < 0) return -1;
  const OperationMemo* const memo = GetOperationMemo();
  if (memo != nullptr && memo->missingPaths.contains(number)) return number;

  SitePathRec rec;
  if (pathDB->Get(number, rec) < 0) return -1;
  if (rec.exists != 0) return number;
  const SitePathRec before = rec;
  if (Work(*this).FillFromDisk(path, siteDir, nullptr, rec) < 0) return -1;
  CheckCase(path, rec);
  if (rec != before && pathDB->Update(rec) < 0) return -1;
  return number;
}

int SiteMgrBase::Work::FillFromDisk(const std::string& path, const std::string& siteDir,
                                    const platform::FileStat* seen, SitePathRec& rec) {
  platform::FileStat found;
  if (seen != nullptr) found = *seen;
  OperationMemo* const memo = base_.GetOperationMemo();
  const bool there = seen != nullptr || platform::Stat(path, found) == 0;
  if (!there || !found.isRegular()) {
    rec.exists = 0;
    if (memo != nullptr) memo->missingPaths.insert(rec.id);
  } else {
    StoreFileFacts(path, siteDir, found, rec);
    if (seen == nullptr && rec.exists != 0 && memo != nullptr) {
      memo->foundFiles.push_back(rec.id);
    }
    if (RelateToFolder(path, rec.id) < 0) return -1;
  }
  rec.fileType = static_cast<std::int32_t>(ClassifyFileType(path));
  return 0;
}

void SiteMgrBase::Work::StoreFileFacts(const std::string& path, const std::string& siteDir,
                                       const platform::FileStat& found, SitePathRec& rec) {
  rec.exists = path.starts_with(siteDir) ? 1 : 0;
  rec.size = static_cast<std::int32_t>(found.size);
  rec.creationTime = found.creationTime;
  rec.modificationTime = found.modificationTime;
  rec.accessTime = found.accessTime;
}

int SiteMgrBase::Work::RelateToFolder(const std::string& path, int number) {
  if (base_.folderDB == nullptr) return -1;
  const std::string folder(FolderOf(path));
  int folderNumber = base_.folderDB->Find(folder);
  if (folderNumber < 0) folderNumber = base_.AddFolder(folder, 1);
  // The folders of a file outside of the site climb up to a root.
  if (folderNumber < 0 && FlagsOf(base_.GetLinkRules()).registersFilesOutside) {
    folderNumber = base_.folderDB->Find(folder);
  }
  if (folderNumber < 0) return -1;
  return base_.AddRel(UrlID(kKindFolder, folderNumber), UrlID(kKindPath, number));
}

int SiteMgrBase::AddFolder(const std::string& folder, int withParents) {
  if (folder.empty() || openSiteId < 0 || folderDB == nullptr) return -1;

  std::vector<int> climbed;  // folders added, from `folder` upwards
  int parent = -1;           // the known folder at which the climb ends
  for (std::string name = folder; parent < 0;) {
    parent = folderDB->Find(name);
    if (parent >= 0) break;
    const int number = folderDB->Add(name);
    if (number < 0) return -1;
    if (withParents == 0) return number;
    climbed.push_back(number);
    // If the root is not known yet, the climb ends with -1 and what was added stays, on purpose.
    // The site folder is registered before, so a climb inside the site never comes so far.
    if (!CutToParent(name)) return -1;
  }
  for (auto child = climbed.rbegin(); child != climbed.rend(); ++child) {
    if (AddRel(UrlID(kKindFolder, parent), UrlID(kKindFolder, *child)) < 0) return -1;
    parent = *child;
  }
  return parent;
}

int SiteMgrBase::AddRel(const UrlID& parent, const UrlID& child) {
  if (openSiteId < 0 || relDB == nullptr) return -1;
  const int known = relDB->First(parent, child);
  return known >= 0 ? known : relDB->Add(parent, child);
}

int SiteMgrBase::DelUrl(int id) {
  return DeleteFrom(urlDB, id);
}
int SiteMgrBase::DelPath(int id) {
  return DeleteFrom(pathDB, id);
}
int SiteMgrBase::DelLink(int id) {
  return DeleteFrom(linkDB, id);
}
int SiteMgrBase::DelFolder(int id) {
  return DeleteFrom(folderDB, id);
}
int SiteMgrBase::DelRel(int id) {
  return DeleteFrom(relDB, id);
}

int SiteMgrBase::DeleteString(std::string* text) {
  delete text;
  return 0;
}

}  // namespace zvrsit
