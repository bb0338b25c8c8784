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

// A part of SiteMgr: the program sees only SiteMgr's operations.
class SiteMgr::Rebuild {
 public:
  enum class Kind { kComplete, kDiff };
  // Of the names of a file that the walk does not meet, at most this many are read.
  static constexpr int kMostNames = 8;

  Rebuild(SiteMgr& manager, Kind kind, CZvrSiteRebuildProgressDlg* dialog)
      : manager_(manager), work_(manager), kind_(kind), progress_(dialog) {}

  // 0 or -1, also when the dialog cancelled.
  int Run();

 private:
  bool CanRun();
  [[nodiscard]] int RunSteps();

  // rebuild.cc
  [[nodiscard]] int ClearTables();
  [[nodiscard]] int ResetPaths();
  [[nodiscard]] int RefreshPaths();
  [[nodiscard]] int CollectLinks();
  void CollectLinksOf(int number, bool isFound);
  [[nodiscard]] int CollectFound(int count);
  [[nodiscard]] int CollectWaitingSheets();
  bool IsToBeReadAs(const std::string& path);
  bool GoesInCircles(const std::string& folder) const;
  void Skip(int number, const std::string& path);
  bool IsToBeRead(int number, const std::string& path, const SitePathRec& rec) const;
  [[nodiscard]] int DropVanished();
  [[nodiscard]] int MarkFamily();

  // rebuild_walk.cc
  [[nodiscard]] int WalkFolders();
  [[nodiscard]] int RegisterFile(int folder, const std::string& path,
                                 const platform::FileStat& found);
  [[nodiscard]] int RegisterFolder(int parent, const std::string& name);
  void SetWalked(int number);
  bool HasWalked(int number) const;

  SiteMgr& manager_;
  Work work_;
  const Kind kind_;
  RebuildProgress progress_;
  std::string siteDir_;
  Inside::Reading reading_;

  std::vector<bool> walked_;   // by path number: the walk has seen the file
  std::vector<int> vanished_;  // path numbers
  // For files that the walk does not meet: under how many names a real file was met, and which
  // folders are reached in circles.
  std::map<std::pair<std::uint64_t, std::uint64_t>, int> names_;
  std::map<std::string, bool> circles_;
};

}  // namespace zvrsit
