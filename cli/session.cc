#include "cli/session.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/beside_rebuild.h"
#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/private_folder.h"
#include "cli/repair.h"
#include "cli/table_files.h"
#include "cli/unsynced.h"
#include "cli/update_command.h"
#include "findings/url_check.h"
#include "tables/table_files.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// The profiles are opened with a backup, which is used when they cannot be read.
constexpr int kWithBackup = 3;
constexpr int kWithoutBackup = 0;

int lockPatience = 3000;

std::string DefaultDatabase() {
#if defined(_WIN32)
  const char* base = std::getenv("LOCALAPPDATA");
  if (base != nullptr && *base != '\0') return NameOf(PathOf(base) / "zvrsit");
#else
  const char* base = std::getenv("XDG_DATA_HOME");
  if (base != nullptr && *base == '/') return NameOf(PathOf(base) / "zvrsit");
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home == '/') return NameOf(PathOf(home) / ".local/share/zvrsit");
#endif
  throw Failure(kUsage, "no home folder is known: name the database with --db FOLDER");
}

}  // namespace

int Patience() {
  return lockPatience;
}

void SetPatience(int milliseconds) {
  lockPatience = milliseconds;
}

std::string DatabaseFolder(const Options& options) {
  return options.database.empty() ? DefaultDatabase() : options.database;
}

std::string SystemReason() {
  const int error = SiteMgr::LastSystemError();
  // These are no failures: targets of links are looked for on the disk, whatever they are, and
  // locks are waited for.
  for (const int harmless : {0, ENOENT, ENOTDIR, EEXIST, EAGAIN, ELOOP, ENAMETOOLONG}) {
    if (error == harmless) return std::string();
  }
  return ": " + std::generic_category().message(error);
}

void ThrowIfSystemFailed(const std::string& what) {
  const std::string reason = SystemReason();
  if (!reason.empty()) throw Failure(kFileSystem, what + reason);
}

void FailToWriteProfile(const std::string& whose) {
  const std::string what = "the profile of " + whose + " cannot be written";
  ThrowIfSystemFailed(what);
  throw Failure(kDatabase, what);
}

std::string Take(std::string* text) {
  std::string result = text == nullptr ? std::string() : *text;
  SiteMgr::DeleteString(text);
  return result;
}

std::vector<std::string> TakeList(std::vector<std::string*>* list) {
  std::vector<std::string> result;
  if (list == nullptr) return result;
  for (std::string* text : *list) result.push_back(Take(text));
  SiteMgr::DeleteStrings(list);
  delete list;
  return result;
}

Session::Session(const Options& options, Database database)
    : onlyAsks_(database == Database::kAsk), isOwn_(database == Database::kOwn) {
  const fs::path folder = PathOf(DatabaseFolder(options));
  std::error_code error;
  if (database == Database::kMake || isOwn_) {
    error = MakeOwnFolder(folder);
    if (error) throw Failure(kFileSystem, NameOf(folder) + ": " + error.message());
  } else if (!fs::exists(folder / kSiteProfiles, error)) {
    throw Failure(kDatabase, NameOf(folder) + ": there is no database here (zvrsit add makes one)");
  }
  database_ = NameOf(folder);
  if (OpenProfiles()) return;
  // These profiles can be repaired only from their backup, or by undoing a change.
  if (onlyAsks_) {
    LetProfilesGo();
    const Session mending(options, Database::kMustExist);
  }
  if (onlyAsks_ && OpenProfiles()) return;
  const std::string texts = TextFileOf(kSiteProfiles);
  for (const std::string& file : {std::string(kSiteProfiles), texts}) {
    NeedAccess(NameOf(folder / file), onlyAsks_);
  }
  ThrowIfSystemFailed(NameOf(folder / kSiteProfiles));
  throw Failure(kDatabase, NameOf(folder / kSiteProfiles) + ": this file, or " + texts +
                               " beside it, is damaged");
}

void Session::OpenDatabase() {
  manager_->setDB(FolderPath(database_).c_str(), kSiteProfiles, kServerProfiles,
                  onlyAsks_ ? kWithoutBackup : kWithBackup);
}

// False when they cannot be read.
bool Session::OpenProfiles() {
  manager_ = std::make_unique<SiteMgr>();
  manager_->setDom(&dom_);
  if (!isOwn_) {
    manager_->SetLocking(onlyAsks_ ? SiteMgr::Locking::kAsk : SiteMgr::Locking::kChange,
                         lockPatience);
  }
  OpenDatabase();
  holdsProfiles_ = manager_->LockProfiles() == 0;
  NeedProfiles(holdsProfiles_ || !manager_->FoundInUse());
  if (onlyAsks_ && manager_->ProfilesWereCutOff()) return false;
  std::vector<std::string*>* const names = manager_->EnumSiteProf();
  TakeList(names);
  return names != nullptr;
}

Session::~Session() {
  if (manager_ == nullptr) return;
  try {
    if (manager_->GetOpenSiteId() >= 0) Close();
  } catch (const Failure&) {
    // The failure that ended the command is told.
  }
  if (manager_ == nullptr || onlyAsks_ || isOwn_) return;
  LetProfilesGo();
  OpenDatabase();  // the backup is that of the profiles as they are now
}

void Session::Discard() {
  manager_.reset();
  holdsProfiles_ = false;
}

void FailToLock(const SiteMgr& manager, const std::string& database, const std::string& what) {
  if (!manager.FoundInUse()) ThrowIfSystemFailed(database);
  throw InUse(kDatabase, what + " is in use by another process");
}

void Session::NeedProfiles(bool areHeld) {
  if (!areHeld) FailToLock(*manager_, database_, database_ + ": the database");
}

void Session::HoldProfiles() {
  if (holdsProfiles_) return;
  holdsProfiles_ = manager_->LockProfiles() == 0;
  NeedProfiles(holdsProfiles_);
}

void Session::LetProfilesGo() {
  if (holdsProfiles_) manager_->UnlockProfiles();
  holdsProfiles_ = false;
}

// Locks the site, and then the profiles; all processes do it in this order, so no two of them wait
// for each other. Before it is locked, the site may get another name.
void Session::LockSite(const std::string& name) {
  site_ = name;
  for (;;) {
    HoldProfiles();
    const int number = manager_->FindSiteProf(name);
    if (number < 0) throw Failure(kUsage, "there is no site named \"" + name + "\"");
    if (number == number_) return;
    LetProfilesGo();
    if (number_ >= 0) manager_->UnlockSite(number_);
    number_ = -1;
    if (manager_->LockSite(number) != 0) {
      FailToLock(*manager_, database_, "the site \"" + name + "\"");
    }
    number_ = number;
  }
}

void Session::KeepProfiles() {
  if (manager_->KeepProfiles() != 0) FailToWriteProfile("a site");
}

void Session::HoldOlder() {
  NeedProfiles(manager_->LockSite(kOlderDatabase) == 0);
}

void Session::LetGo() {
  LetProfilesGo();
  if (number_ < 0) return;
  stamp_ = StampOfTables(FolderOfTables(site_));
  manager_->UnlockSite(number_);
  if (manager_->GetOpenSiteId() == number_) manager_->UnlockSite(number_);
  number_ = -1;
}

bool Session::HoldAgain() {
  HoldSite(site_);
  LetProfilesGo();
  const bool areSame = number_ == manager_->GetOpenSiteId() &&
                       StampOfTables(FolderOfTables(site_)) == stamp_ &&
                       manager_->NeedToRebuild(site_) == kRebuilt;
  // The open site has a hold of its own.
  return areSame && manager_->LockSite(number_) == 0;
}

std::string Session::FolderOfTables(const std::string& name) const {
  const fs::path path = PathOf(name);
  if (path.has_parent_path() || path.has_root_path() || path == "." || path == "..") {
    throw Failure(kDatabase, "the name of a profile leads out of the database: " + name);
  }
  return NameOf(PathOf(database_) / path);
}

void Session::HoldSite(const std::string& name) {
  LockSite(name);
  const std::string tables = FolderOfTables(site_);
  if (!onlyAsks_) {
    if (SiteMgr::UndoCutOff(FolderPath(tables)) != 0) {
      throw Failure(kFileSystem,
                    tables + ": a change that was cut off cannot be undone" + SystemReason());
    }
    FinishRebuild(*manager_, number_, tables);
    RecoverChange(*manager_, number_, tables);
  } else if (SiteMgr::WasCutOff(FolderPath(tables)) || HasFinishedRebuild(tables) ||
             HasJournal(tables)) {
    LetGo();
    try {
      Session(Options{database_, false}, Database::kMustExist).HoldSite(name);
    } catch (const Failure& failure) {
      throw Failure(
          failure.code(),
          "a change of \"" + name +
              "\" had stopped half-way, and cannot be finished or undone: " + failure.what());
    }
    LockSite(name);
  }
}

// The machine was started anew since the tables were written.
void Session::MakeAnew(const std::string& name) const {
  Warn("the machine was started anew since \"" + name + "\" was written: its pages are read again");
  static_cast<void>(UpdateSite(Options{database_, false}, name, false));
}

bool Session::OpenIfSound(const std::string& name) {
  HoldSite(name);
  if (!isOwn_ && MayBeTorn(FolderOfTables(site_))) {
    LetGo();
    MakeAnew(name);
    HoldSite(name);
  }
  SiteProfile profile;
  if (manager_->GetSiteProf(name, profile) != 0) {
    throw Failure(kDatabase, "the profile of \"" + name + "\" is damaged");
  }
  names_ = SiteNames(profile.folders[kSlotSiteFolder]);
  // Opening would make what is missing, and all answers would be empty.
  if (profile.rebuildState != 0 && !HasTables(FolderOfTables(site_))) return false;
  const int result = manager_->SiteOpen(name, 0);
  LetProfilesGo();
  if (result == -2) {
    std::error_code error;
    const bool folderIsThere = fs::is_directory(PathOf(names_.nativeFolder()), error);
    throw Failure(kFileSystem,
                  folderIsThere ? NativePath(profile.topFile) + ": the site's top file is not there"
                                : names_.nativeFolder() + ": the site folder is not there");
  }
  if (result != 0) throw Failure(kDatabase, "the profile of \"" + name + "\" is damaged");
  if (manager_->GetPathDB() != nullptr) return true;
  manager_->SiteClose();
  NeedAccessToTables(FolderOfTables(site_), onlyAsks_);
  return false;
}

void Session::Open(const std::string& name) {
  if (OpenIfSound(name)) return;
  throw Failure(kDatabase,
                FolderOfTables(site_) + ": a table of the site is damaged: zvrsit rebuild " + name);
}

void Session::OpenToAsk(const std::string& name) {
  HoldSite(name);
  const int state = manager_->NeedToRebuild(name);
  if (state != kRebuilt) {
    throw Failure(kDatabase,
                  (state == kNotWhole ? "the last rebuild or change of \"" + name + "\" did not end"
                                      : "\"" + name + "\" is to be rebuilt first") +
                      ": zvrsit rebuild " + name);
  }
  Open(name);
}

void Session::Close() {
  WriteWith([this] { return manager_->FlushSite(); });
  manager_->SiteClose();
}

void Session::CloseUpdated() {
  WriteUpdated();
  manager_->SiteClose();
}

void Session::WriteUpdated() {
  if (onlyAsks_) return;
  // Packing writes tables too.
  const auto write = [this] {
    return manager_->PackSite(false) != 0 ? -1 : manager_->FlushUpdated();
  };
  if (isOwn_ || !NoteUnsynced(FolderOfTables(site_), ListMarks(*manager_))) {
    return WriteWith(write);
  }
  const NoWaiting noWaiting;
  if (write() != 0) FailToWrite();
}

void Session::CloseSaved(const std::vector<std::string>& paths) {
  WriteWith([&] { return manager_->FlushSaved(paths); });
  manager_->SiteClose();
}

// The tables are written as a whole, or stay as they are.
void Session::WriteWith(const std::function<int()>& flush) {
  if (onlyAsks_) return;
  if (flush() != 0 || (!isOwn_ && !EndUnsynced(FolderOfTables(site_)))) FailToWrite();
}

void Session::SetRebuildState(int state) {
  if (manager_->SetSiteProfRebuildState(state, number_) != 0) FailToWrite();
}

void Session::FailToWrite() {
  const std::string what = FolderOfTables(site_) + ": the tables cannot be written";
  const std::string reason = SystemReason();
  Discard();
  throw Failure(kFileSystem, what + reason + "; they stay as they were");
}

void Session::FailToChange(const std::string& what) {
  const std::string reason = manager_->IsFull() ? std::string(": ") + kNoRoom : SystemReason();
  if (manager_->GetSiteProfRebuildState() == kRebuilt) SetRebuildState(kNotWhole);
  throw Failure(reason.empty() ? kDatabase : kFileSystem,
                what + reason + ": zvrsit rebuild " + site_);
}

std::string Session::ShownEntry(const UrlID& id) {
  if (id.kind == kKindUrl) return WithoutCredentials(Take(manager_->UrlUrl(id.id)));
  return names_.Shown(
      Take(id.kind == kKindFolder ? manager_->FolderName(id.id) : manager_->UrlPath(id.id)));
}

int Session::FindEntry(const std::string& native) {
  for (const std::string& path : names_.Candidates(native)) {
    const int number = manager_->FindPath(path);
    if (number >= 0) return number;
  }
  return -1;
}

UrlID Session::EntryOf(const std::string& native) {
  const int number = FindEntry(native);
  if (number < 0) throw Failure(kUsage, native + ": the site knows no such file");
  return UrlID(kKindPath, number);
}

UrlID Session::TargetOf(const std::string& nativeOrUrl) {
  const std::unique_ptr<vec<SiteRecCell>> urls(manager_->EnumUrl());
  for (std::size_t i = 0; urls != nullptr && i < urls->size(); ++i) {
    if ((*urls)[i].GetName() == nativeOrUrl) return (*urls)[i].GetID();
  }
  const int number = FindEntry(nativeOrUrl);
  if (number < 0) throw Failure(kUsage, nativeOrUrl + ": the site knows no such file or URL");
  return UrlID(kKindPath, number);
}

}  // namespace zvrsit::cli
