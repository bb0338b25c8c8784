// Opening and closing a site, and the profile of the open one.
#include <cstddef>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"
#include "util/site_name.h"

namespace zvrsit {

namespace {

// Tells files of these paths from others, and from themselves when they have been written since.
std::string StampOf(const std::array<std::string, 5>& paths) {
  std::string stamp;
  for (const std::string& path : paths) {
    platform::FileStat stat;
    platform::Stat(path, stat);
    stamp += path + '|' + std::to_string(stat.size) + '|' + std::to_string(stat.file) + '|' +
             std::to_string(stat.modificationNanoseconds) + '|';
  }
  return stamp;
}

}  // namespace

int SitMgrBase::SiteOpen(const std::string& name) {
  inside_->history->NewStep();
  if (!inside_->siteProf || !inside_->dbDir) return inside_->Fail(kSitNoStore);
  if (inside_->site) return inside_->Fail(kSitAlreadyHeld);
  SiteRec record;
  int number = -1;
  if (inside_->siteProf->Find(name, record, &number) < 0) return inside_->Fail(kSitNoProfile);
  const std::array<std::int32_t, 5> files = {record.urlDB, record.junkDB, record.linkDB,
                                             record.folderDB, record.relDB};
  std::array<std::string, 5> paths;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto file = inside_->SiteString(files[i]);
    if (!file || file->empty()) return inside_->Fail(kSitNoValue);
    if (LeavesFolder(*file)) return inside_->Fail(kSitCannotOpen);
    paths[i] = *inside_->dbDir + *file;
  }
  const std::string stamp = StampOf(paths);
  if (!inside_->OpenStores(paths)) {
    inside_->CloseStores();
    return inside_->Fail(kSitCannotOpen);
  }
  inside_->site = std::make_shared<SiteRec>(record);
  inside_->siteId = number;
  inside_->history->EnterFiles(stamp);
  return inside_->Succeed();
}

bool SitMgrBase::Inside::OpenStores(const std::array<std::string, 5>& paths) {
  for (const std::string& path : paths) platform::MakeFolderOfPath(path);
  SitHist* steps = history.get();
  urlDB = std::make_shared<SitBlockDB>(steps);
  junkDB = std::make_shared<SitBlockDB>(steps);
  folderDB = std::make_shared<SitBlockDB>(steps);
  linkDB = std::make_shared<SitPairDB>(paths[2], SitPairDB::kLinkFile, steps);
  relDB = std::make_shared<SitPairDB>(paths[4], SitPairDB::kRelationFile, steps);
  // A pair file with a damaged header is open all the same; a rebuild fills it again.
  return urlDB->Open(paths[0], SitBlockDB::kUrlFile, SitBlockDB::kBuckets) == 0 &&
         junkDB->Open(paths[1], SitBlockDB::kJunkFile, SitBlockDB::kBuckets) == 0 &&
         folderDB->Open(paths[3], SitBlockDB::kFolderFile, SitBlockDB::kBuckets) == 0 &&
         linkDB->IsOpen() && relDB->IsOpen();
}

std::array<std::string, 5> SitMgrBase::Inside::StorePaths() const {
  return {urlDB->path(), junkDB->path(), linkDB->path(), folderDB->path(), relDB->path()};
}

void SitMgrBase::Inside::CloseStores() {
  urlDB.reset();
  junkDB.reset();
  folderDB.reset();
  linkDB.reset();
  relDB.reset();
  site.reset();
  siteId = -1;
}

int SitMgrBase::SiteClose() {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const std::array<std::string, 5> paths = inside_->StorePaths();
  bool closed = true;
  // Packing closes; what could not be packed is closed as it is.
  const auto close = [&closed](auto& store) {
    const bool packed = store.Pack(false) >= 0;
    closed = store.Close() == 0 && packed && closed;
  };
  for (SitPairDB* store : {inside_->linkDB.get(), inside_->relDB.get()}) close(*store);
  for (SitBlockDB* store : {inside_->urlDB.get(), inside_->junkDB.get(), inside_->folderDB.get()})
    close(*store);
  inside_->CloseStores();
  inside_->history->LeaveFiles(StampOf(paths));
  return closed ? inside_->Succeed() : inside_->Fail(kSitWriteFailed);
}

bool SitMgrBase::IsSiteWhole() const {
  const auto isEntry = [this](const UrlID& id) {
    const SitBlockDB* store = id.kind == kKindPath     ? inside_->urlDB.get()
                              : id.kind == kKindUrl    ? inside_->junkDB.get()
                              : id.kind == kKindFolder ? inside_->folderDB.get()
                                                       : nullptr;
    return store != nullptr && store->State(id.id) == kSitOk;
  };
  return inside_->linkDB && inside_->linkDB->IsWhole() && inside_->relDB->IsWhole() &&
         inside_->urlDB->IsWhole() && inside_->junkDB->IsWhole() && inside_->folderDB->IsWhole() &&
         inside_->SiteNow().rebuild != 1 && inside_->linkDB->HasAllEnds(isEntry) &&
         inside_->relDB->HasAllEnds(isEntry);
}

std::optional<std::string> SitMgrBase::Inside::SiteString(int id) const {
  return siteProf ? siteProf->GetString(id) : std::nullopt;
}

SiteRec SitMgrBase::Inside::SiteNow() const {
  SiteRec record;
  if (site && siteProf) siteProf->Read(siteId, record);
  return record;
}

std::string SitMgrBase::Inside::SiteFolder() const {
  std::string folder = SiteString(SiteNow().dir[1]).value_or("");
  if (!folder.empty() && folder.back() != '\\') folder += '\\';
  return folder;
}

std::string SitMgrBase::Inside::TopFile() const {
  return SiteString(SiteNow().topFile).value_or("");
}

// A setter of the open site's profile.
int SitMgrBase::Inside::SetOpenSite(const std::function<int()>& set) {
  if (linkDB) return set();
  history->NewStep();
  return Fail(kSitNotOpen);
}

int SitMgrBase::SetSiteTopFile(const std::string& text) {
  return inside_->SetOpenSite([&] { return SetSiteProfTopFile(inside_->siteId, text); });
}

int SitMgrBase::SetSiteDir(const std::string& text, int folder) {
  return inside_->SetOpenSite([&] { return SetSiteProfDir(inside_->siteId, text, folder); });
}

int SitMgrBase::SetSiteServProf(const std::string& text) {
  return inside_->SetOpenSite([&] { return SetSiteProfServProf(inside_->siteId, text); });
}

int SitMgrBase::SetSiteUrlDB(const std::string& text) {
  return inside_->SetOpenSite([&] { return SetSiteProfUrlDB(inside_->siteId, text); });
}

int SitMgrBase::SetSiteJunkDB(const std::string& text) {
  return inside_->SetOpenSite([&] { return SetSiteProfJunkDB(inside_->siteId, text); });
}

int SitMgrBase::SetSiteLinkDB(const std::string& text) {
  return inside_->SetOpenSite([&] { return SetSiteProfLinkDB(inside_->siteId, text); });
}

std::string* SitMgrBase::GetSiteTopFile() {
  return inside_->linkDB ? GetSiteProfTopFile(inside_->siteId) : inside_->FailText(kSitNotOpen);
}

std::string* SitMgrBase::GetSiteDir(int folder) {
  return inside_->linkDB ? GetSiteProfDir(inside_->siteId, folder) : inside_->FailText(kSitNotOpen);
}

}  // namespace zvrsit
