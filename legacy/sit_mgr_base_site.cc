// Opening and closing a site, and the profile of the open one.
#include <cstddef>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_base.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"

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
  history_->NewStep();
  if (!siteProf_ || !dbDir_) return Fail(kSitNoStore);
  if (site_) return Fail(kSitAlreadyHeld);
  SiteRec record;
  int number = -1;
  if (siteProf_->Find(name, record, &number) < 0) return Fail(kSitNoProfile);
  const std::array<std::int32_t, 5> files = {record.urlDB, record.junkDB, record.linkDB,
                                             record.folderDB, record.relDB};
  std::array<std::string, 5> paths;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto file = SiteString(files[i]);
    if (!file || file->empty()) return Fail(kSitNoValue);
    paths[i] = *dbDir_ + *file;
  }
  const std::string stamp = StampOf(paths);
  if (!OpenStores(paths)) {
    CloseStores();
    return Fail(kSitCannotOpen);
  }
  site_ = std::make_shared<SiteRec>(record);
  siteId_ = number;
  history_->EnterFiles(stamp);
  return Succeed();
}

bool SitMgrBase::OpenStores(const std::array<std::string, 5>& paths) {
  for (const std::string& path : paths) platform::MakeFolderOfPath(path);
  SitHist* history = history_.get();
  urlDB_ = std::make_shared<SitBlockDB>(history);
  junkDB_ = std::make_shared<SitBlockDB>(history);
  folderDB_ = std::make_shared<SitBlockDB>(history);
  linkDB_ = std::make_shared<SitPairDB>(paths[2], SitPairDB::kLinkFile, history);
  relDB_ = std::make_shared<SitPairDB>(paths[4], SitPairDB::kRelationFile, history);
  // A pair file with a damaged header is open all the same; a rebuild fills it again.
  return urlDB_->Open(paths[0], SitBlockDB::kUrlFile, SitBlockDB::kBuckets) == 0 &&
         junkDB_->Open(paths[1], SitBlockDB::kJunkFile, SitBlockDB::kBuckets) == 0 &&
         folderDB_->Open(paths[3], SitBlockDB::kFolderFile, SitBlockDB::kBuckets) == 0 &&
         linkDB_->IsOpen() && relDB_->IsOpen();
}

std::array<std::string, 5> SitMgrBase::StorePaths() const {
  return {urlDB_->path(), junkDB_->path(), linkDB_->path(), folderDB_->path(), relDB_->path()};
}

void SitMgrBase::CloseStores() {
  urlDB_.reset();
  junkDB_.reset();
  folderDB_.reset();
  linkDB_.reset();
  relDB_.reset();
  site_.reset();
  siteId_ = -1;
}

int SitMgrBase::SiteClose() {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  const std::array<std::string, 5> paths = StorePaths();
  bool closed = true;
  // Packing closes; what could not be packed is closed as it is.
  const auto close = [&closed](auto& store) {
    const bool packed = store.Pack(false) >= 0;
    closed = store.Close() == 0 && packed && closed;
  };
  for (SitPairDB* store : {linkDB_.get(), relDB_.get()}) close(*store);
  for (SitBlockDB* store : {urlDB_.get(), junkDB_.get(), folderDB_.get()}) close(*store);
  CloseStores();
  history_->LeaveFiles(StampOf(paths));
  return closed ? Succeed() : Fail(kSitWriteFailed);
}

bool SitMgrBase::IsSiteWhole() const {
  const auto isEntry = [this](const UrlID& id) {
    const SitBlockDB* store = id.kind == kKindPath     ? urlDB_.get()
                              : id.kind == kKindUrl    ? junkDB_.get()
                              : id.kind == kKindFolder ? folderDB_.get()
                                                       : nullptr;
    return store != nullptr && store->State(id.id) == kSitOk;
  };
  return linkDB_ && linkDB_->IsWhole() && relDB_->IsWhole() && urlDB_->IsWhole() &&
         junkDB_->IsWhole() && folderDB_->IsWhole() && SiteNow().rebuild != 1 &&
         linkDB_->HasAllEnds(isEntry) && relDB_->HasAllEnds(isEntry);
}

std::optional<std::string> SitMgrBase::SiteString(int id) const {
  return siteProf_ ? siteProf_->GetString(id) : std::nullopt;
}

SiteRec SitMgrBase::SiteNow() const {
  SiteRec record;
  if (site_ && siteProf_) siteProf_->Read(siteId_, record);
  return record;
}

std::string SitMgrBase::SiteFolder() const {
  std::string folder = SiteString(SiteNow().dir[1]).value_or("");
  if (!folder.empty() && folder.back() != '\\') folder += '\\';
  return folder;
}

std::string SitMgrBase::TopFile() const {
  return SiteString(SiteNow().topFile).value_or("");
}

// A setter of the open site's profile.
int SitMgrBase::SetOpenSite(const std::function<int()>& set) {
  if (linkDB_) return set();
  history_->NewStep();
  return Fail(kSitNotOpen);
}

int SitMgrBase::SetSiteTopFile(const std::string& text) {
  return SetOpenSite([&] { return SetSiteProfTopFile(siteId_, text); });
}

int SitMgrBase::SetSiteDir(const std::string& text, int folder) {
  return SetOpenSite([&] { return SetSiteProfDir(siteId_, text, folder); });
}

int SitMgrBase::SetSiteServProf(const std::string& text) {
  return SetOpenSite([&] { return SetSiteProfServProf(siteId_, text); });
}

int SitMgrBase::SetSiteUrlDB(const std::string& text) {
  return SetOpenSite([&] { return SetSiteProfUrlDB(siteId_, text); });
}

int SitMgrBase::SetSiteJunkDB(const std::string& text) {
  return SetOpenSite([&] { return SetSiteProfJunkDB(siteId_, text); });
}

int SitMgrBase::SetSiteLinkDB(const std::string& text) {
  return SetOpenSite([&] { return SetSiteProfLinkDB(siteId_, text); });
}

std::string* SitMgrBase::GetSiteTopFile() {
  return linkDB_ ? GetSiteProfTopFile(siteId_) : FailText(kSitNotOpen);
}

std::string* SitMgrBase::GetSiteDir(int folder) {
  return linkDB_ ? GetSiteProfDir(siteId_, folder) : FailText(kSitNotOpen);
}

}  // namespace zvrsit
