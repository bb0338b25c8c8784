#include "legacy/sit_peeper.h"

#include <memory>

#include "legacy/sit_block_db.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"

namespace zvrsit {

SitPeeper::SitPeeper() : SitMgrBase(nullptr, nullptr, nullptr) {}

SitPeeper::~SitPeeper() = default;

int SitPeeper::BeginPeep(int siteId) {
  if (inside_->site) return inside_->Fail(kSitAlreadyHeld);
  auto record = std::make_shared<SiteRec>();
  if (!inside_->siteProf || inside_->siteProf->Read(siteId, *record) < 0)
    return inside_->Fail(kSitNotFound);
  // Without a database folder the last error stays as it was. Meant.
  const std::unique_ptr<std::string> folder(DBDir());
  if (!folder) return -1;
  const std::unique_ptr<std::string> name(GetSiteProfUrlDB(siteId));
  if (!name) return inside_->Fail(kSitNoValue);
  const std::string path = *folder + *name;
  auto urlDB = std::make_shared<SitBlockDB>();
  platform::FileStat stat;
  // Opening would make a file that is not there.
  if (platform::Stat(path, stat) < 0 || stat.size == 0 ||
      urlDB->Open(path, SitBlockDB::kUrlFile, SitBlockDB::kBuckets) < 0) {
    return inside_->Fail(kSitCannotOpen);
  }
  inside_->site = std::move(record);
  inside_->urlDB = std::move(urlDB);
  return inside_->Succeed();
}

int SitPeeper::EndPeep() {
  inside_->urlDB.reset();
  inside_->site.reset();
  return 0;
}

int SitPeeper::BeginPeep(const std::string& siteName) {
  SiteRec record;
  int siteId = -1;
  if (!inside_->siteProf || inside_->siteProf->Find(siteName, record, &siteId) < 0) return -1;
  return BeginPeep(siteId);
}

bool SitPeeper::IsWhole(const std::string& siteName) {
  if (BeginPeep(siteName) < 0) return false;
  const bool whole = inside_->urlDB->IsWhole() && inside_->site->rebuild != 1;
  EndPeep();
  return whole;
}

std::vector<std::string*>* SitPeeper::EnumPath(const std::string& siteName) {
  if (BeginPeep(siteName) < 0) return nullptr;
  auto paths = std::make_unique<std::vector<std::string*>>();
  for (int i = 0;; ++i) {
    std::string* path = UrlPath({kKindPath, i});
    if (path == nullptr && inside_->lastError == kSitPastEnd) break;
    if (path == nullptr && inside_->lastError == kSitNotFound) continue;
    // Null for an entry that is there and cannot be read. Meant.
    paths->push_back(path);
  }
  EndPeep();
  return paths.release();
}

std::vector<std::string*>* SitPeeper::GetSiteByPath(const std::string& path) {
  if (!inside_->siteProf || !inside_->siteProf->IsOpen() || inside_->siteProf->Num() < 0)
    return nullptr;
  auto names = std::make_unique<std::vector<std::string*>>();
  for (int n = 0; n < inside_->siteProf->Slots(); ++n) {
    if (BeginPeep(n) < 0) continue;
    if (inside_->urlDB->Find(path) >= 0) {
      if (std::string* name = SiteProfName(n)) names->push_back(name);
    }
    EndPeep();
  }
  return names.release();
}

int SitPeeper::DeleteStrings(std::vector<std::string*>* strings) {
  if (strings == nullptr) return -1;
  // The strings stay the caller's. Meant.
  strings->clear();
  return 0;
}

}  // namespace zvrsit
