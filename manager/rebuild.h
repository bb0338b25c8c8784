// One run of a rebuild of the open site.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "manager/rebuild_progress.h"
#include "manager/site_mgr.h"

namespace zvrsit {

namespace platform {
struct FileStat;
struct FindData;
struct FindState;
}  // namespace platform
class SitePathRec;

// Private to SiteMgr; the program sees only its operations.
class SiteMgr::Rebuild {
 public:
  enum class Kind { kComplete, kDiff };

  Rebuild(SiteMgr& manager, Kind kind, CZvrSiteRebuildProgressDlg* dialog)
      : manager_(manager), kind_(kind), progress_(dialog) {}

  // 0 or -1, also when the dialog cancelled.
  int Run();

 private:
  struct Folder {
    std::string name;
    int number;
  };

  bool CanRun();
  int RunSteps();

  // rebuild.cc
  int ClearTables();
  int ResetPaths();
  int RefreshPaths();
  int CollectLinks();
  void CollectLinksOf(int number);
  bool IsToBeRead(int number, const SitePathRec& rec) const;
  int DropVanished();
  int MarkFamily();

  // rebuild_walk.cc
  int WalkFolders();
  int WalkFolder(const Folder& folder);
  int Visit(const Folder& folder, platform::FindState* search, const platform::FindData& entry);
  int RegisterFile(const Folder& folder, const std::string& path, const platform::FileStat& found);
  int RegisterFolder(const Folder& folder, const std::string& name,
                     const platform::FileStat& found);
  bool IsIgnored(const std::string& path) const;
  void SetWalked(int number);
  bool HasWalked(int number) const;

  SiteMgr& manager_;
  const Kind kind_;
  RebuildProgress progress_;
  std::string siteDir_;

  std::vector<Folder> workList_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;  // real folders
  std::vector<bool> walked_;   // by path number: the walk has seen the file
  std::vector<int> vanished_;  // path numbers
};

}  // namespace zvrsit
