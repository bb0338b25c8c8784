// Sharing a database with other processes.
#include <memory>

#include "manager_base/inside.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/table_files.h"

namespace zvrsit {

void SiteMgrBase::SetLocking(Locking locking, int patience) {
  inside->locks.reset();
  if (locking != Locking::kOff) {
    inside->locks = std::make_unique<SiteLocks>(locking == Locking::kAsk, patience);
  }
}

void SiteMgrBase::SetMapsTables(bool maps) {
  inside->mapsTables = maps;
}

bool SiteMgrBase::FoundInUse() const {
  return inside->locks != nullptr && inside->locks->foundInUse();
}

int SiteMgrBase::LastSystemError() {
  return platform::LastError();
}

// Makes the profiles and backs them up, or restores them, as without locking.
void SiteMgrBase::Work::OpenSharedProfiles(int openMode) {
  if (base_.inside->onlyAsks() || !ProfileUse::Hold(base_, openMode)) return;
  base_.servProf->SetUndo(base_.inside->undo.get());
  if (base_.servProf->Open(*base_.servProfPath, openMode) == 0) {
    static_cast<void>(base_.servProf->Close());
  }
  ProfileUse::LetGo(base_);
}

int SiteMgrBase::LockProfiles() {
  if (inside->locks == nullptr) return 0;
  return siteProf != nullptr && ProfileUse::Hold(*this, kOpenPlain) ? 0 : -1;
}

void SiteMgrBase::UnlockProfiles() {
  if (inside->locks != nullptr) ProfileUse::LetGo(*this);
}

int SiteMgrBase::KeepProfiles() {
  return inside->undo == nullptr ? 0 : inside->undo->End();
}

bool SiteMgrBase::WasCutOff(const std::string& folder) {
  platform::FileStat stat;
  return platform::Stat(folder + kTablesUndo, stat) == 0;
}

bool SiteMgrBase::ProfilesWereCutOff() const {
  platform::FileStat stat;
  return platform::Stat(ProfileUndoOf(inside->siteProfPath), stat) == 0;
}

int SiteMgrBase::UndoCutOff(const std::string& folder) {
  return UndoLog::Undo(folder + kTablesUndo);
}

void SiteMgrBase::SetSyncing(bool syncs) {
  platform::SetSyncing(syncs);
}

int SiteMgrBase::SyncFolder(const std::string& folder, const std::vector<std::string>& files) {
  std::vector<std::string> paths;
  paths.reserve(files.size());
  for (const std::string& file : files) paths.push_back(folder + file);
  return platform::SyncFiles(paths) == 0 ? platform::SyncFolder(folder) : -1;
}

int SiteMgrBase::LockSite(int siteId) {
  if (siteId < 0) return -1;
  SiteLocks* const locks = inside->locks.get();
  return locks == nullptr || locks->Hold(SiteLocks::OfSite(siteId)) > 0 ? 0 : -1;
}

void SiteMgrBase::UnlockSite(int siteId) {
  if (inside->locks != nullptr && siteId >= 0) inside->locks->LetGo(SiteLocks::OfSite(siteId));
}

SiteMgrBase::ProfileUse::ProfileUse(const SiteMgrBase& manager)
    : manager_(manager),
      isHeld_(manager.inside->locks == nullptr ||
              (manager.siteProf != nullptr && Hold(manager, kOpenPlain))) {}

SiteMgrBase::ProfileUse::~ProfileUse() {
  if (isHeld_ && manager_.inside->locks != nullptr) LetGo(manager_);
}

// Another process may have changed the profiles since they were last held, so they are opened
// again; the object stays where it is.
bool SiteMgrBase::ProfileUse::Hold(const SiteMgrBase& manager, int openMode) {
  SiteLocks& locks = *manager.inside->locks;
  const int uses = locks.Hold(SiteLocks::kProfiles);
  if (uses != 1) return uses > 0;
  SiteSiteProfDB* const profiles = manager.siteProf;
  std::destroy_at(profiles);
  std::construct_at(profiles);
  if (locks.onlyAsks()) {
    profiles->SetReadOnly();
  } else if (!MakeUndo(manager)) {
    locks.LetGo(SiteLocks::kProfiles);
    return false;
  }
  profiles->SetUndo(manager.inside->undo.get());
  // A table that does not open has no profiles; the lock is held all the same.
  static_cast<void>(profiles->Open(locks.profilesPath(), openMode));
  return true;
}

// Undoes a change of the profiles that was cut off, and gets ready for the next.
bool SiteMgrBase::ProfileUse::MakeUndo(const SiteMgrBase& manager) {
  Inside& inside = *manager.inside;
  const std::string path = ProfileUndoOf(inside.siteProfPath);
  if (UndoLog::Undo(path) < 0) return false;
  inside.undo = std::make_unique<UndoLog>(path);
  for (const std::string& file : {inside.siteProfPath, *manager.servProfPath}) {
    inside.undo->NoteFile(file);
    inside.undo->NoteFile(TextFileOf(file));
  }
  return true;
}

// A file whose closing fails is let go of all the same: nothing is written any more.
void SiteMgrBase::ProfileUse::CloseOrFree(SiteTable& table) {
  if (table.Close() == 0) return;
  if (table.records() != nullptr) table.records()->SetReadOnly();
  if (table.strings() != nullptr) table.strings()->SetReadOnly();
  static_cast<void>(table.Close());
}

// A change that may not be on the disk is undone by whoever holds the profiles next. The table of
// servers is open only if an operation could not close it.
void SiteMgrBase::ProfileUse::LetGo(const SiteMgrBase& manager) {
  SiteLocks& locks = *manager.inside->locks;
  if (locks.Uses(SiteLocks::kProfiles) == 1) {
    CloseOrFree(*manager.siteProf);
    if (manager.servProf != nullptr) CloseOrFree(*manager.servProf);
  }
  if (locks.Uses(SiteLocks::kProfiles) == 1 && manager.inside->undo != nullptr) {
    static_cast<void>(manager.inside->undo->End());
    manager.inside->undo.reset();
  }
  locks.LetGo(SiteLocks::kProfiles);
}

bool SiteMgrBase::ProfileUse::ReadText(std::int32_t ref, std::string& text) const {
  return manager_.siteProf != nullptr && manager_.siteProf->Text(ref, text) == 0;
}

bool SiteMgrBase::ProfileUse::ReadOpenSite(SiteSiteRec& rec) const {
  return manager_.openSiteId >= 0 && manager_.siteProf != nullptr &&
         manager_.siteProf->Get(manager_.openSiteId, rec) == 0;
}

bool SiteMgrBase::ProfileUse::ReadSiteFolder(std::string& folder) const {
  SiteSiteRec site;
  return ReadOpenSite(site) && ReadText(site.folders[kSlotSiteFolder], folder);
}

SiteMgrBase::SiteUse::SiteUse(const SiteMgrBase& manager, int siteId, Locking purpose)
    : manager_(manager),
      siteId_(siteId),
      isHeld_(manager.inside->locks == nullptr ||
              manager.inside->locks->Hold(SiteLocks::OfSite(siteId), purpose == Locking::kAsk) >
                  0) {}

SiteMgrBase::SiteUse::~SiteUse() {
  if (isHeld_ && manager_.inside->locks != nullptr) {
    manager_.inside->locks->LetGo(SiteLocks::OfSite(siteId_));
  }
}

}  // namespace zvrsit
