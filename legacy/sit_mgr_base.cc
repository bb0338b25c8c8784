#include "legacy/sit_mgr_base.h"

#include "legacy/page_reader.h"
#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"

namespace zvrsit {

SitMgrBase::SitMgrBase() : history_(std::make_shared<SitHist>()) {}

SitMgrBase::SitMgrBase(const char* siteProfPath, const char* servProfPath, const char* dbDir)
    : SitMgrBase() {
  if (dbDir != nullptr) dbDir_ = dbDir;
  if (siteProfPath != nullptr) {
    siteProf_ = std::make_shared<SitSiteProf>(siteProfPath, history_.get());
  }
  if (servProfPath != nullptr) {
    servProf_ = std::make_shared<SitServProf>(servProfPath, history_.get());
  }
}

SitMgrBase::~SitMgrBase() = default;

SitMgrBase::Group::Group(SitHist& history) : history_(history) {
  history_.NewStep()->groupMark = kGroupBegin;
}
SitMgrBase::Group::~Group() {
  history_.NewStep()->groupMark = kGroupEnd;
}

int SitMgrBase::setDB(const std::string& dbDir, const std::string& siteProfName,
                      const std::string& servProfName) {
  dbDir_ = dbDir;
  platform::MakeFolderOfPath(dbDir + siteProfName);
  siteProf_ = std::make_shared<SitSiteProf>(dbDir + siteProfName, history_.get());
  servProf_ = std::make_shared<SitServProf>(dbDir + servProfName, history_.get());
  return siteProf_->IsOpen() && servProf_->IsOpen() ? Succeed() : Fail(kSitCannotOpen);
}

std::string* SitMgrBase::DBDir() const {
  return dbDir_ ? new std::string(*dbDir_) : nullptr;
}

int SitMgrBase::DeleteString(std::string* text) {
  delete text;
  return 0;
}

int SitMgrBase::Fail(int error) {
  lastError_ = error;
  if (error == kSitCannotOpen || error == kSitDeleteFailed || error == kSitWriteFailed) {
    lastErrno_ = platform::LastError();
  }
  return -1;
}

int SitMgrBase::FailedWrites() const {
  int count = 0;
  const auto add = [&count](const auto& store) { count += store ? store->failedWrites() : 0; };
  add(siteProf_);
  add(servProf_);
  add(urlDB_);
  add(junkDB_);
  add(folderDB_);
  add(linkDB_);
  add(relDB_);
  return count;
}

int SitMgrBase::Written(int before, int result, int error) {
  return FailedWrites() == before ? Succeed(result) : Fail(error);
}

std::string* SitMgrBase::FailText(int error) {
  lastError_ = error;
  return nullptr;
}

int SitMgrBase::Succeed(int result) {
  lastError_ = kSitOk;
  return result;
}

SitMgrBase::PageReader& SitMgrBase::Reader() {
  if (!reader_) reader_ = std::make_shared<PageReader>();
  return *reader_;
}

}  // namespace zvrsit
