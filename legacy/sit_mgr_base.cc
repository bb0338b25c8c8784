#include "legacy/sit_mgr_base.h"

#include "legacy/page_reader.h"
#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"

namespace zvrsit {

SitMgrBase::SitMgrBase() : inside_(std::make_unique<Inside>(*this)) {}

SitMgrBase::SitMgrBase(const SitMgrBase& other)
    : inside_(std::make_unique<Inside>(*this, *other.inside_)) {}

SitMgrBase& SitMgrBase::operator=(const SitMgrBase& other) {
  static_cast<SitMgrState&>(*inside_) = *other.inside_;
  return *this;
}

SitMgrBase::SitMgrBase(const char* siteProfPath, const char* servProfPath, const char* dbDir)
    : SitMgrBase() {
  if (dbDir != nullptr) inside_->dbDir = dbDir;
  if (siteProfPath != nullptr) {
    inside_->siteProf = std::make_shared<SitSiteProf>(siteProfPath, inside_->history.get());
  }
  if (servProfPath != nullptr) {
    inside_->servProf = std::make_shared<SitServProf>(servProfPath, inside_->history.get());
  }
}

SitMgrBase::~SitMgrBase() = default;

SitMgrBase::Inside::Inside(SitMgrBase& owner) : manager(owner) {
  history = std::make_shared<SitHist>();
}

SitMgrBase::Inside::Group::Group(SitHist& steps) : history_(steps) {
  history_.NewStep()->groupMark = kGroupBegin;
}
SitMgrBase::Inside::Group::~Group() {
  history_.NewStep()->groupMark = kGroupEnd;
}

int SitMgrBase::setDB(const std::string& dbDir, const std::string& siteProfName,
                      const std::string& servProfName) {
  inside_->dbDir = dbDir;
  platform::MakeFolderOfPath(dbDir + siteProfName);
  inside_->siteProf = std::make_shared<SitSiteProf>(dbDir + siteProfName, inside_->history.get());
  inside_->servProf = std::make_shared<SitServProf>(dbDir + servProfName, inside_->history.get());
  return inside_->siteProf->IsOpen() && inside_->servProf->IsOpen() ? inside_->Succeed()
                                                                    : inside_->Fail(kSitCannotOpen);
}

void SitMgrBase::setDom(DOM* dom) {
  inside_->dom = dom;
}

int SitMgrBase::lastError() const {
  return inside_->lastError;
}

int SitMgrBase::lastErrno() const {
  return inside_->lastErrno;
}

int SitMgrBase::OpenSite() const {
  return inside_->site ? inside_->siteId : -1;
}

std::string* SitMgrBase::DBDir() const {
  return inside_->dbDir ? new std::string(*inside_->dbDir) : nullptr;
}

int SitMgrBase::DeleteString(std::string* text) {
  delete text;
  return 0;
}

int SitMgrBase::Inside::Fail(int error) {
  lastError = error;
  if (error == kSitCannotOpen || error == kSitDeleteFailed || error == kSitWriteFailed) {
    lastErrno = platform::LastError();
  }
  return -1;
}

int SitMgrBase::Inside::FailedWrites() const {
  int count = 0;
  const auto add = [&count](const auto& store) { count += store ? store->failedWrites() : 0; };
  add(siteProf);
  add(servProf);
  add(urlDB);
  add(junkDB);
  add(folderDB);
  add(linkDB);
  add(relDB);
  return count;
}

int SitMgrBase::Inside::Written(int before, int result, int error) {
  return FailedWrites() == before ? Succeed(result) : Fail(error);
}

std::string* SitMgrBase::Inside::FailText(int error) {
  lastError = error;
  return nullptr;
}

int SitMgrBase::Inside::Succeed(int result) {
  lastError = kSitOk;
  return result;
}

SitPageReader& SitMgrBase::Inside::Reader() {
  if (!pageReader) pageReader = std::make_shared<SitPageReader>();
  return *pageReader;
}

}  // namespace zvrsit
