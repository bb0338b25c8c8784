// One run of a rebuild of the open site.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "manager/rebuild_progress.h"
#include "manager/work.h"

namespace zvrsit {

// Private to SiteMgr; the program sees only its operations.
class SiteMgr::Rebuild {
 public:
  enum class Kind { kComplete, kDiff };

  Rebuild(SiteMgr& manager, Kind kind, CZvrSiteRebuildProgressDlg* dialog)
      : manager_(manager), work_(manager), kind_(kind), progress_(dialog) {}

  // 0 or -1, also when the dialog cancelled.
  int Run();

 private:
  bool CanRun();
  int RunSteps();

  // rebuild.cc
  int ClearTables();
  int ResetPaths();
  int RefreshPaths();
  int CollectLinks();
  void CollectLinksOf(int number, bool isFound);
  int CollectFound(int count);
  int CollectWaitingSheets();
  bool IsToBeReadAs(const std::string& path);
  bool GoesInCircles(const std::string& folder) const;
  void Skip(int number, const std::string& path);
  bool IsToBeRead(int number, const std::string& path, const SitePathRec& rec) const;
  int DropVanished();
  int MarkFamily();

  // rebuild_walk.cc
  int WalkFolders();
  int RegisterFile(int folder, const std::string& path, const platform::FileStat& found);
  int RegisterFolder(int parent, const std::string& name);
  void SetWalked(int number);
  bool HasWalked(int number) const;

  SiteMgr& manager_;
  Work work_;
  const Kind kind_;
  RebuildProgress progress_;
  std::string siteDir_;

  std::vector<bool> walked_;   // by path number: the walk has seen the file
  std::vector<int> vanished_;  // path numbers
  // Of files that the walk does not come to: under how many names a real one was met, and which
  // folders are reached in circles.
  std::map<std::pair<std::uint64_t, std::uint64_t>, int> names_;
  std::map<std::string, bool> circles_;
};

}  // namespace zvrsit
