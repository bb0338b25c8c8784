// Commands that change the files of a site, and mend its links: what they have in common.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "cli/exit_code.h"
#include "cli/session.h"
#include "cli/update_command.h"
#include "repair/disk_change.h"
#include "repair/file_edits.h"

namespace zvrsit::cli {

// The `\` path of the journal of a change, in the native folder of the site's tables.
std::string JournalIn(const std::string& tables);
// Whether one was left behind.
bool HasJournal(const std::string& tables);
// Finishes or undoes a change that had stopped half-way, and says so on stderr. The site must be
// held. Throws Failure(kFileSystem) when this is not possible yet.
void RecoverChange(SiteMgr& manager, int number, const std::string& tables);

// Whether a `\` path is `place`; or, if that is a folder, which ends in `\`, lies below it.
bool LiesAt(const std::string& path, const std::string& place);
bool LiesAtAny(const std::string& path, const std::vector<std::string>& places);

struct RepairOptions {
  std::string site;
  bool dryRun = false;
};

// One change of a site.
class SiteRepair {
 public:
  // Brings the site up to date and opens it. Throws as UpdateSite and Session::Open.
  SiteRepair(const Options& options, const RepairOptions& wanted);

  Session& session() { return session_; }
  SiteMgr& manager() { return session_.manager(); }
  // What bringing it up to date has found.
  const Updated& found() const { return found_; }
  DiskChange& change() { return change_; }
  RepairPlan& plan() { return plan_; }

  // Makes the change and the plan's edits on the disk, brings the tables up to date, and says what
  // was done; in a dry run prints what would be done, as a diff. kFindings when references stay
  // that ought to change. Throws Failure(kFileSystem), with everything as it was.
  int Run();

 private:
  int Result() const { return plan_.kept.empty() ? kClean : kFindings; }
  void LeaveOutside();
  bool IsInside(const std::filesystem::path& real);
  void NeedInside(const std::string& path);
  void ChangeFiles();
  void ChangeTables();
  void PrintDiff();
  void PrintDone();
  void TellKept();
  std::string Shown(const std::string& path) { return session_.names().Shown(path); }

  const Options& options_;
  const RepairOptions wanted_;
  const Updated found_;
  Session session_;
  DiskChange change_;
  RepairPlan plan_;
};

}  // namespace zvrsit::cli
