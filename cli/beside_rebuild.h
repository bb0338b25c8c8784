// A rebuild beside the tables of a site, which it takes the place of only when it has come to its
// end. Until then, and however it ends, the tables before are there and are asked.
//
// It lies in the folder `new` of the tables, a small database of its own. When all its files are
// written, the folder with them becomes the folder `done`; this is the moment at which the rebuild
// counts. Then they are moved to their places one by one, which whoever next holds the site ends if
// this process does not.
#pragma once

#include <memory>
#include <string>

#include "cli/session.h"

namespace zvrsit::cli {

class BesideRebuild {
 public:
  // Holds the site `name` of `session` and opens a copy of it. Throws as Session::Open. Damaged
  // tables are not copied but made anew, and stderr says so.
  BesideRebuild(Session& session, const std::string& name);
  // A site that was never whole is marked as one whose rebuild failed, unless Commit was called.
  ~BesideRebuild();
  BesideRebuild(const BesideRebuild&) = delete;
  BesideRebuild& operator=(const BesideRebuild&) = delete;

  // The copy, to be rebuilt.
  Session& copy() { return *copy_; }
  // Writes the copy to disk and puts it in the place of the tables. Throws Failure(kFileSystem).
  void Commit();

 private:
  BesideRebuild(Session& session, const std::string& name, SiteProfile profile);
  void OpenCopy();

  Session& session_;
  const std::string name_;
  const std::string tables_;  // their native folder
  const SiteProfile profile_;
  std::unique_ptr<Session> copy_;
  bool done_ = false;
};

// Whether a rebuild in the native folder `tables` waits for its files to be moved.
bool HasFinishedRebuild(const std::string& tables);
// Moves them, and marks the site of that number as rebuilt; removes a rebuild that was not
// finished. The site is held by `manager`. Throws Failure(kFileSystem).
void FinishRebuild(SiteMgr& manager, int number, const std::string& tables);

}  // namespace zvrsit::cli
