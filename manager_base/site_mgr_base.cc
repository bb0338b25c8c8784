#include "manager_base/site_mgr_base.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>

#include "css/css_control.h"
#include "manager_base/inside.h"
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
#include "util/site_name.h"

namespace zvrsit {

namespace {

constexpr int kNotOnDisk = -2;  // the site folder or the top file

// The open mode of the profile tables for a mode of setDB; any other mode is plain.
int ProfileOpenMode(int mode) {
  constexpr int kModes[] = {kOpenPlain, kOpenBackUp, kOpenBackUp, kOpenRestore, kOpenRestore};
  return mode >= 0 && mode < static_cast<int>(std::size(kModes)) ? kModes[mode] : kOpenPlain;
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

// The table goes also when it cannot be written, on purpose. Who wants to know flushes it before.
template <class Table>
void CloseAndDrop(Table*& table) {
  if (table == nullptr) return;
  static_cast<void>(table->Flush());
  static_cast<void>(table->Close());
  Drop(table);
}

}  // namespace

SiteMgrBase::SiteMgrBase() : inside(new Inside) {}

SiteMgrBase::~SiteMgrBase() {
  if (siteProf != nullptr) static_cast<void>(siteProf->Close());
  delete siteProf;
  if (servProf != nullptr) static_cast<void>(servProf->Close());
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
  delete inside;
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
    inside->siteProfPath = folder + siteProfName;
    siteProf = new SiteSiteProfDB;
    servProf = new SiteServProfDB;
    if (inside->locks == nullptr) {
      Work(*this).OpenProfiles(folder + siteProfName, ProfileOpenMode(mode));
    } else {
      inside->locks->SetPaths(folder, folder + siteProfName);
      Work(*this).OpenSharedProfiles(ProfileOpenMode(mode));
    }
  }
  delete dbDir;
  dbDir = new std::string(folder);
}

void SiteMgrBase::Work::OpenProfiles(const std::string& path, int openMode) {
  // A table that does not open stays closed, and its operations fail.
  static_cast<void>(base_.siteProf->Open(path, openMode));
  // Closed again at once, on purpose: each operation on server profiles opens it again.
  if (base_.servProf->Open(*base_.servProfPath, openMode) < 0) return;
  static_cast<void>(base_.servProf->Flush());
  static_cast<void>(base_.servProf->Close());
}

const std::string* SiteMgrBase::GetLiveUrl() const {
  return inside->liveUrl ? &*inside->liveUrl : nullptr;
}

LinkRules SiteMgrBase::GetLinkRules() const {
  return inside->linkRules;
}

OperationMemo* SiteMgrBase::GetOperationMemo() const {
  return inside->operationMemo.get();
}

int SiteMgrBase::OpenSite(int siteId, int) {
  if (siteId < 0 || siteProf == nullptr || dbDir == nullptr || dbDir->empty() || openSiteId >= 0) {
    return -1;
  }
  if (LockSite(siteId) < 0) return -1;
  const int result = Work(*this).OpenSite(siteId);
  if (result < 0) UnlockSite(siteId);
  return result;
}

// For a site that is locked already.
int SiteMgrBase::Work::OpenSite(int siteId) {
  const ProfileUse use(base_);
  const SiteSiteProfDB& profiles = *base_.siteProf;
  if (profiles.records() == nullptr || profiles.strings() == nullptr) return -1;
  SiteSiteRec rec;
  if (profiles.Get(siteId, rec) < 0) return -1;

  std::string folder;
  if (!use.ReadText(rec.folders[kSlotSiteFolder], folder)) return -1;
  if (!FolderIsThere(folder)) return kNotOnDisk;
  std::string topFile;
  if (!use.ReadText(rec.topFile, topFile)) return -1;
  if (!FileIsThere(topFile)) return kNotOnDisk;

  SiteTableNames names;
  if (profiles.ReadTableNames(siteId, names) < 0) return -1;
  const auto isUseless = [](const std::string& name) { return name.empty() || LeavesFolder(name); };
  if (std::ranges::any_of(names, isUseless)) return -1;
  OpenTables(names);
  base_.inside->linkRules = RulesOf(rec);
  if (ReadDefaultUrl(rec) < 0) return -1;
  if (base_.cssCtrl != nullptr && base_.NotifyCss(rec) < 0) return -1;
  KeepSite(rec);
  base_.openSiteId = siteId;
  return 0;
}

void SiteMgrBase::Work::KeepSite(const SiteSiteRec& rec) {
  const ProfileUse use(base_);
  Inside& kept = *base_.inside;
  kept.ForgetSite();
  std::string text;
  if (use.ReadText(rec.folders[kSlotSiteFolder], text)) kept.siteFolder = text;
  if (use.ReadText(rec.folders[kSlotLiveUrl], text)) kept.liveUrl = text;
  if (!FlagsOf(kept.linkRules).readsOtherPageTypes) return;
  text.clear();
  use.ReadText(rec.folders[kSlotPageTypes], text);
  kept.pageTypes.emplace(text);
  use.ReadText(rec.folders[kSlotFallbackExtensions], kept.fallbackExtensions);
}

// A table that cannot be opened leaves the site open without tables, on purpose: every later
// operation finds them absent.
void SiteMgrBase::Work::OpenTables(const SiteTableNames& names) {
  DropTables();
  base_.urlDB = new SiteUrlDB;
  base_.pathDB = new SitePathDB;
  base_.linkDB = new SiteLinkDB;
  base_.folderDB = new SiteFolderDB;
  base_.relDB = new SiteRelDB;
  const std::string& dir = *base_.dbDir;
  const bool canBeUndone = base_.inside->canBeUndone();
  for (SiteTable* const table : Tables()) {
    if (base_.inside->onlyAsks()) table->SetReadOnly();
    if (base_.inside->mapsTables) table->SetMapped();
    if (canBeUndone) table->SetDurable();
  }
  if (canBeUndone && UndoCutOff(dir + std::string(FolderOf(names[1]))) < 0) return DropTables();
  const int results[] = {base_.urlDB->Open(dir + names[0]), base_.pathDB->Open(dir + names[1]),
                         base_.linkDB->Open(dir + names[2]), base_.folderDB->Open(dir + names[3]),
                         base_.relDB->Open(dir + names[4])};
  if (std::ranges::any_of(results, [](int result) { return result < 0; })) DropTables();
}

std::array<SiteTable*, 5> SiteMgrBase::Work::Tables() const {
  return {base_.urlDB, base_.pathDB, base_.linkDB, base_.folderDB, base_.relDB};
}

void SiteMgrBase::Work::DropTables() {
  Drop(base_.urlDB);
  Drop(base_.pathDB);
  Drop(base_.linkDB);
  Drop(base_.folderDB);
  Drop(base_.relDB);
}

// When the default URL cannot be read, the tables stay open although no site counts as open, on
// purpose. The next opening drops them.
int SiteMgrBase::Work::ReadDefaultUrl(const SiteSiteRec& rec) {
  Drop(base_.defaultUrl);
  if (rec.defaultUrl < 0) return 0;
  base_.defaultUrl = new std::string;
  return ProfileUse(base_).ReadText(rec.defaultUrl, *base_.defaultUrl) ? 0 : -1;
}

int SiteMgrBase::NotifyCss(SiteSiteRec& rec) {
  const ProfileUse use(*this);
  if (siteProf == nullptr || siteProf->strings() == nullptr) return -1;
  if (cssCtrl == nullptr) return 0;
  std::string folder;
  if (!use.ReadText(rec.folders[kSlotSiteFolder], folder)) return -1;

  cssCtrl->ClearSiteOption();
  // Unset or unreadable, these two are handed on empty.
  std::string parts;
  std::string moreParts;
  use.ReadText(rec.folders[kSlotPageParts], parts);
  use.ReadText(rec.folders[kSlotMoreParts], moreParts);
  cssCtrl->SetSiteSaveDir(folder, parts, moreParts);
  cssCtrl->SetLinkRules(GetLinkRules());

  std::string live;
  if (use.ReadText(rec.folders[kSlotLiveUrl], live)) cssCtrl->SetLiveUrl(live);

  Drop(docRoot);
  if (rec.useDocRoot != 0 && rec.folders[kSlotDocumentRoot] >= 0) {
    docRoot = new std::string;
    if (!use.ReadText(rec.folders[kSlotDocumentRoot], *docRoot)) Drop(docRoot);
  }
  if (docRoot != nullptr && !docRoot->empty()) {
    cssCtrl->SetSiteDocumentRoot(*docRoot);
  }
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
  inside->ForgetSite();
  UnlockSite(openSiteId);
  openSiteId = -1;
  return 0;  // defaultUrl stays until the next opening, on purpose
}

ServedSite SiteMgrBase::Work::ServedSiteOf(const SiteMgrBase& manager) {
  const Inside& kept = *manager.inside;
  ServedSite site;
  site.folder = kept.siteFolder.value_or("");
  const bool hasRoot = manager.docRoot != nullptr && !manager.docRoot->empty();
  site.root = hasRoot ? *manager.docRoot : site.folder;
  site.liveUrl = kept.liveUrl.value_or("");
  if (manager.defaultUrl != nullptr) site.defaultNames = *manager.defaultUrl;
  site.fallbackExtensions = kept.fallbackExtensions;
  return site;
}

ServedSite SiteMgrBase::DescribeServer() const {
  return Work::ServedSiteOf(*this);
}

SiteMgrBase::Operation::Operation(SiteMgrBase& manager)
    : inside_(*manager.inside), outermost_(inside_.operationMemo == nullptr) {
  if (!outermost_) return;
  inside_.reading.reset();
  inside_.operationMemo = std::make_unique<OperationMemo>();
  if (FlagsOf(manager.GetLinkRules()).findsFolderDocuments) {
    inside_.operationMemo->served = std::make_shared<ServedFiles>(Work::ServedSiteOf(manager));
  }
  if (inside_.kept == nullptr) return;
  inside_.kept->places = {};
  inside_.operationMemo->places = &inside_.kept->places;
}

SiteMgrBase::Operation::~Operation() {
  if (outermost_) inside_.operationMemo.reset();
}

}  // namespace zvrsit
