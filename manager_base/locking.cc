// Sharing a database with other processes.
#include <memory>

#include "manager_base/site_locks.h"
#include "manager_base/site_mgr_base.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"

namespace zvrsit {

void SiteMgrBase::SetLocking(Locking locking, int patience) {
  delete locks;
  locks = locking == Locking::kOff ? nullptr : new SiteLocks(locking == Locking::kAsk, patience);
}

bool SiteMgrBase::OnlyAsks() const {
  return locks != nullptr && locks->onlyAsks();
}

bool SiteMgrBase::FoundInUse() const {
  return locks != nullptr && locks->foundInUse();
}

int SiteMgrBase::LastSystemError() {
  return platform::LastError();
}

// The profiles are made and backed up, or restored, as without locking.
void SiteMgrBase::OpenSharedProfiles(int openMode) {
  if (OnlyAsks() || !HoldProfiles(openMode)) return;
  servProf->Open(*servProfPath, openMode);
  servProf->Close();
  LetProfilesGo();
}

// Another process may have changed the profiles since they were last held, so they are opened anew;
// the object stays where it is.
bool SiteMgrBase::HoldProfiles(int openMode) const {
  const int uses = locks->Hold(SiteLocks::kProfiles);
  if (uses != 1) return uses > 0;
  std::destroy_at(siteProf);
  std::construct_at(siteProf);
  if (OnlyAsks()) siteProf->SetReadOnly();
  siteProf->Open(locks->profilesPath(), openMode);
  return true;
}

// A file that cannot be closed as it should is let go of all the same.
void SiteMgrBase::LetProfilesGo() const {
  if (locks->Uses(SiteLocks::kProfiles) == 1 && siteProf->Close() < 0) {
    if (siteProf->records() != nullptr) siteProf->records()->SetReadOnly();
    if (siteProf->strings() != nullptr) siteProf->strings()->SetReadOnly();
    siteProf->Close();
  }
  locks->LetGo(SiteLocks::kProfiles);
}

int SiteMgrBase::LockProfiles() {
  if (locks == nullptr) return 0;
  return siteProf != nullptr && HoldProfiles(kOpenPlain) ? 0 : -1;
}

void SiteMgrBase::UnlockProfiles() {
  if (locks != nullptr) LetProfilesGo();
}

int SiteMgrBase::LockSite(int siteId) {
  if (siteId < 0) return -1;
  return locks == nullptr || locks->Hold(SiteLocks::OfSite(siteId)) > 0 ? 0 : -1;
}

void SiteMgrBase::UnlockSite(int siteId) {
  if (locks != nullptr && siteId >= 0) locks->LetGo(SiteLocks::OfSite(siteId));
}

SiteMgrBase::ProfileUse::ProfileUse(const SiteMgrBase& manager)
    : manager_(manager),
      isHeld_(manager.locks == nullptr ||
              (manager.siteProf != nullptr && manager.HoldProfiles(kOpenPlain))) {}

SiteMgrBase::ProfileUse::~ProfileUse() {
  if (isHeld_ && manager_.locks != nullptr) manager_.LetProfilesGo();
}

SiteMgrBase::SiteUse::SiteUse(const SiteMgrBase& manager, int siteId, Locking purpose)
    : manager_(manager),
      siteId_(siteId),
      isHeld_(manager.locks == nullptr ||
              manager.locks->Hold(SiteLocks::OfSite(siteId), purpose == Locking::kAsk) > 0) {}

SiteMgrBase::SiteUse::~SiteUse() {
  if (isHeld_ && manager_.locks != nullptr) manager_.locks->LetGo(SiteLocks::OfSite(siteId_));
}

}  // namespace zvrsit
