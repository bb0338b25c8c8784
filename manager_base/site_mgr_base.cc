#include "manager_base/site_mgr_base.h"

#include <algorithm>
#include <utility>

#include "css/css_control.h"
#include "links/page_types.h"
#include "manager_base/operation_memo.h"
#include "manager_base/site_locks.h"
#include "platform/file.h"
#include "storage/records.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

constexpr int kNotOnDisk = -2;  // the site folder or the top file

// The open mode of the profile tables: 0 plain, 1 with a backup, 2 with backup and restoring.
int ProfileOpenMode(int mode) {
  switch (mode) {
    case 1:
    case 2:
      return 1;
    case 3:
    case 4:
      return 2;
    default:
      return 0;
  }
}

// Whether the folder part of `path` (all of it, without a `\`) is a folder on disk.
bool FolderIsThere(std::string path) {
  const auto backslash = FindLastBackslashMB(path);
  if (backslash != std::string::npos) path.erase(backslash);
  platform::FileStat found;
  return platform::Stat(path, found) == 0 && found.isFolder();
}

bool FileIsThere(const std::string& path) {
  platform::FileStat found;
  return platform::Stat(path, found) == 0 && found.isRegular();
}

template <class Table>
void Drop(Table*& table) {
  delete table;
  table = nullptr;
}

template <class Table>
void CloseAndDrop(Table*& table) {
  if (table == nullptr) return;
  table->Flush();
  table->Close();
  Drop(table);
}

}  // namespace

SiteMgrBase::~SiteMgrBase() {
  if (siteProf != nullptr) siteProf->Close();
  delete siteProf;
  if (servProf != nullptr) servProf->Close();
  delete servProf;
  delete folderDB;
  delete relDB;
  delete pathDB;
  delete urlDB;
  delete linkDB;
  delete dbDir;
  delete docRoot;
  delete cssCtrl;
  delete defaultUrl;
  delete servProfPath;
  delete operationMemo;
  delete siteFolder;
  delete liveUrl;
  delete locks;
  delete pageTypes;
}

void SiteMgrBase::setDom(DOM* newDom) {
  dom = newDom;
  delete cssCtrl;
  cssCtrl = new CCSSControl;
  cssCtrl->SetObject(dom);
}

void SiteMgrBase::setDB(const char* dir, const char* siteProfName, const char* servProfName,
                        int mode) {
  delete siteProf;
  delete servProf;
  siteProf = nullptr;
  servProf = nullptr;
  if (dir == nullptr || siteProfName == nullptr || servProfName == nullptr) return;
  const std::string folder = dir;
  if (platform::MakeFolderOfPath(folder) == 0) {
    delete servProfPath;
    servProfPath = new std::string(folder + servProfName);
    siteProf = new SiteSiteProfDB;
    servProf = new SiteServProfDB;
    if (locks == nullptr) {
      OpenProfiles(folder + siteProfName, ProfileOpenMode(mode));
    } else {
      locks->SetPaths(folder, folder + siteProfName);
      OpenSharedProfiles(ProfileOpenMode(mode));
    }
  }
  delete dbDir;
  dbDir = new std::string(folder);
}

void SiteMgrBase::OpenProfiles(const std::string& path, int openMode) {
  siteProf->Open(path, openMode);
  // Closed again at once, on purpose: each operation on server profiles opens it anew.
  servProf->Open(*servProfPath, openMode);
  servProf->Flush();
  servProf->Close();
}

bool SiteMgrBase::ReadProfileText(std::int32_t ref, std::string& text) const {
  return siteProf != nullptr && siteProf->Text(ref, text) == 0;
}

bool SiteMgrBase::ReadOpenSite(SiteSiteRec& rec) const {
  return openSiteId >= 0 && siteProf != nullptr && siteProf->Get(openSiteId, rec) == 0;
}

int SiteMgrBase::OpenSite(int siteId, int) {
  if (siteId < 0 || siteProf == nullptr || dbDir == nullptr || dbDir->empty() || openSiteId >= 0) {
    return -1;
  }
  if (LockSite(siteId) < 0) return -1;
  const int result = OpenHeldSite(siteId);
  if (result < 0) UnlockSite(siteId);
  return result;
}

int SiteMgrBase::OpenHeldSite(int siteId) {
  const ProfileUse use(*this);
  if (siteProf->records() == nullptr || siteProf->strings() == nullptr) return -1;
  SiteSiteRec rec;
  if (siteProf->Get(siteId, rec) < 0) return -1;

  std::string folder;
  if (!ReadProfileText(rec.folders[SiteSiteRec::kSiteFolder], folder)) return -1;
  if (!FolderIsThere(folder)) return kNotOnDisk;
  std::string topFile;
  if (!ReadProfileText(rec.topFile, topFile)) return -1;
  if (!FileIsThere(topFile)) return kNotOnDisk;

  TableFiles files;
  if (!ReadTableFiles(rec, files)) return -1;
  OpenTables(files);
  linkRules = (rec.linkRules & 1) != 0 ? LinkRules::Web : LinkRules::Classic;
  if (ReadDefaultUrl(rec) < 0) return -1;
  if (cssCtrl != nullptr && NotifyCss(rec) < 0) return -1;
  KeepSiteFolder(rec);
  openSiteId = siteId;
  return 0;
}

void SiteMgrBase::KeepSiteFolder(const SiteSiteRec& rec) {
  Drop(siteFolder);
  Drop(liveUrl);
  Drop(pageTypes);
  std::string text;
  if (ReadProfileText(rec.folders[SiteSiteRec::kSiteFolder], text)) {
    siteFolder = new std::string(text);
  }
  if (ReadProfileText(rec.folders[SiteSiteRec::kLiveUrl], text)) {
    liveUrl = new std::string(text);
  }
  if (linkRules == LinkRules::Classic) return;
  text.clear();
  ReadProfileText(rec.folders[SiteSiteRec::kPageTypes], text);
  pageTypes = new PageTypes(text);
}

bool SiteMgrBase::ReadTableFiles(const SiteSiteRec& rec, TableFiles& files) const {
  const std::int32_t refs[] = {rec.urlFile, rec.pathFile, rec.linkFile, rec.folderFile,
                               rec.relFile};
  for (std::size_t i = 0; i < files.size(); ++i) {
    std::string name;
    if (!ReadProfileText(refs[i], name) || name.empty()) return false;
    files[i] = *dbDir + name;
  }
  return true;
}

// A table that cannot be opened leaves the site open without tables, on purpose: every later
// operation finds them absent.
void SiteMgrBase::OpenTables(const TableFiles& files) {
  DropTables();
  urlDB = new SiteUrlDB;
  pathDB = new SitePathDB;
  linkDB = new SiteLinkDB;
  folderDB = new SiteFolderDB;
  relDB = new SiteRelDB;
  if (OnlyAsks()) {
    for (SiteTable* table :
         std::initializer_list<SiteTable*>{urlDB, pathDB, linkDB, folderDB, relDB})
      table->SetReadOnly();
  }
  const int results[] = {urlDB->Open(files[0]), pathDB->Open(files[1]), linkDB->Open(files[2]),
                         folderDB->Open(files[3]), relDB->Open(files[4])};
  if (std::ranges::any_of(results, [](int result) { return result < 0; })) DropTables();
}

void SiteMgrBase::DropTables() {
  Drop(urlDB);
  Drop(pathDB);
  Drop(linkDB);
  Drop(folderDB);
  Drop(relDB);
}

// A default URL that cannot be read leaves the tables open while no site counts as open, on
// purpose; the next opening drops them.
int SiteMgrBase::ReadDefaultUrl(const SiteSiteRec& rec) {
  Drop(defaultUrl);
  if (rec.defaultUrl < 0) return 0;
  defaultUrl = new std::string;
  return ReadProfileText(rec.defaultUrl, *defaultUrl) ? 0 : -1;
}

int SiteMgrBase::NotifyCss(SiteSiteRec& rec) {
  if (siteProf == nullptr || siteProf->strings() == nullptr) return -1;
  if (cssCtrl == nullptr) return 0;
  std::string folder;
  if (!ReadProfileText(rec.folders[SiteSiteRec::kSiteFolder], folder)) return -1;

  cssCtrl->ClearSiteOption();
  // Unset or unreadable, these two are handed on empty.
  std::string slot7;
  std::string slot3;
  ReadProfileText(rec.folders[7], slot7);
  ReadProfileText(rec.folders[3], slot3);
  cssCtrl->SetSiteSaveDir(folder, slot7, slot3);
  cssCtrl->SetLinkRules(linkRules);

  std::string live;
  if (ReadProfileText(rec.folders[SiteSiteRec::kLiveUrl], live)) cssCtrl->SetLiveUrl(live);

  Drop(docRoot);
  if (rec.useDocRoot != 0 && rec.folders[SiteSiteRec::kDocumentRoot] >= 0) {
    docRoot = new std::string;
    if (!ReadProfileText(rec.folders[SiteSiteRec::kDocumentRoot], *docRoot)) Drop(docRoot);
  }
  if (docRoot != nullptr && !docRoot->empty()) cssCtrl->SetSiteDocumentRoot(*docRoot);
  return 0;
}

int SiteMgrBase::CloseSite() {
  if (openSiteId < 0) return -1;
  CloseAndDrop(linkDB);
  CloseAndDrop(urlDB);
  CloseAndDrop(pathDB);
  CloseAndDrop(folderDB);
  CloseAndDrop(relDB);
  if (cssCtrl != nullptr) cssCtrl->ClearSiteOption();
  Drop(docRoot);
  Drop(siteFolder);
  Drop(liveUrl);
  UnlockSite(openSiteId);
  Drop(pageTypes);
  openSiteId = -1;
  return 0;  // defaultUrl stays until the next opening, on purpose
}

SiteMgrBase::Operation::Operation(SiteMgrBase& manager)
    : manager_(manager), outermost_(manager.operationMemo == nullptr) {
  if (outermost_) manager_.operationMemo = new OperationMemo;
}

SiteMgrBase::Operation::~Operation() {
  if (outermost_) Drop(manager_.operationMemo);
}

}  // namespace zvrsit
