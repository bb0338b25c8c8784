#include "cli/beside_rebuild.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "cli/exit_code.h"
#include "cli/finished_files.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/site_profile.h"
#include "cli/table_files.h"
#include "cli/unsynced.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

fs::path NewFolder(const std::string& tables) {
  return PathOf(tables) / "new";
}

}  // namespace

bool HasFinishedRebuild(const std::string& tables) {
  return HasFinishedFiles(PathOf(tables));
}

void FinishRebuild(SiteMgr& manager, int number, const std::string& tables) {
  if (HasFinishedFiles(PathOf(tables))) {
    PutFinishedFiles(PathOf(tables));
    const bool isMarked = manager.SetSiteProfRebuildState(kRebuilt, number) == 0;
    if (!isMarked || manager.KeepProfiles() != 0) FailToWriteProfile("the site");
    EndFinishedFiles(PathOf(tables));
  }
  std::error_code error;
  fs::remove_all(NewFolder(tables), error);
  if (error) throw Failure(kFileSystem, NameOf(NewFolder(tables)) + ": " + error.message());
}

BesideRebuild::BesideRebuild(Session& session, const std::string& name, SiteProfile profile)
    : session_(session),
      name_(name),
      tables_(session.FolderOfTables(name)),
      profile_(std::move(profile)) {}

// When the other constructor has finished, the destructor cleans up even if this one fails.
BesideRebuild::BesideRebuild(Session& session, const std::string& name, bool anew)
    : BesideRebuild(session, name, (session.HoldSite(name), ReadProfile(session, name))) {
  session.LetProfilesGo();
  if (!anew && MayBeTorn(tables_)) {
    marks_ = NotedMarks(tables_);
    anew = true;
  }
  copy_ = std::make_unique<Session>(Options{NameOf(NewFolder(tables_)), false}, Database::kOwn);
  OpenCopy(anew);
}

void BesideRebuild::OpenCopy(bool anew) {
  if (copy_->manager().SetSiteProf(name_, profile_) != 0) {
    ThrowIfSystemFailed(tables_);
    throw Failure(kDatabase, tables_ + ": no copy of the profile of the site can be made");
  }
  const std::string folder = copy_->FolderOfTables(name_);
  const bool areThere = !anew && HasTables(tables_);
  if (areThere) CopyTables(tables_, folder);
  const bool isNew = !anew && profile_.rebuildState == kNeverRebuilt;
  if ((areThere || isNew) && copy_->OpenIfSound(name_)) return;
  if (!anew) Warn(tables_ + ": a table of the site was damaged; all are made anew");
  RemoveTables(folder);
  SiteMgr& manager = copy_->manager();
  if (manager.SetSiteProfRebuildState(kNeverRebuilt, manager.FindSiteProf(name_)) != 0) {
    FailToWriteProfile("\"" + name_ + "\"");
  }
  copy_->Open(name_);
}

BesideRebuild::~BesideRebuild() {
  if (copy_ != nullptr) copy_->Discard();
  std::error_code ignored;
  fs::remove_all(NewFolder(tables_), ignored);
  if (done_ || profile_.rebuildState == kRebuilt) return;
  SiteMgr& manager = session_.manager();
  manager.SetSiteProfRebuildState(kNotWhole, manager.FindSiteProf(name_));
}

void BesideRebuild::Commit() {
  if (SetMarks(copy_->manager(), marks_) != 0) copy_->FailToWrite();
  copy_->CloseUpdated();
  const fs::path folder = PathOf(copy_->FolderOfTables(name_));
  copy_.reset();
  FinishFiles(folder, PathOf(tables_));
  done_ = true;
  FinishRebuild(session_.manager(), session_.number(), tables_);
  if (!EndUnsynced(tables_)) throw Failure(kFileSystem, tables_ + ": cannot be written");
}

}  // namespace zvrsit::cli
