// A rebuild beside the tables of a site. It takes their place only when it has come to its end.
// Until then, and also when it never ends, the old tables are there and answer questions.
//
// It lies in the folder `new` of the tables, as a small database of its own. When all its files are
// written, the folder with them is renamed to `done`; from this moment the rebuild counts. Then the
// files are moved to their places one by one. If this process does not finish that, the next one
// that holds the site does.
#pragma once

#include <memory>
#include <string>

#include "cli/session.h"
#include "cli/unsynced.h"

namespace zvrsit::cli {

class BesideRebuild {
 public:
  // Holds the site `name` of `session` and opens a copy of it. Throws as Session::Open. Damaged
  // tables are not copied but made again, and stderr says so. With `anew` sound ones are too.
  BesideRebuild(Session& session, const std::string& name, bool anew = false);
  // Unless Commit was called, a site that was never whole is marked as one whose rebuild failed.
  ~BesideRebuild();
  BesideRebuild(const BesideRebuild&) = delete;
  BesideRebuild& operator=(const BesideRebuild&) = delete;

  // The copy, to be rebuilt.
  Session& copy() { return *copy_; }
  // Writes the copy to disk and puts it in the place of the tables. Throws Failure(kFileSystem).
  void Commit();

 private:
  BesideRebuild(Session& session, const std::string& name, SiteProfile profile);
  void OpenCopy(bool anew);

  Session& session_;
  const std::string name_;
  const std::string tables_;  // their native folder
  const SiteProfile profile_;
  std::unique_ptr<Session> copy_;
  std::vector<Mark> marks_;  // that the tables may not tell any more
  bool done_ = false;
};

// Whether a finished rebuild in the native folder `tables` still has files to be moved.
bool HasFinishedRebuild(const std::string& tables);
// Moves these files and marks the site of that number as rebuilt; a rebuild that was not finished
// is removed. `manager` holds the site. Throws Failure(kFileSystem).
void FinishRebuild(SiteMgr& manager, int number, const std::string& tables);

}  // namespace zvrsit::cli
