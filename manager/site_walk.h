// The walk through the folders of a site on disk.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "manager/site_mgr.h"

namespace zvrsit {

class PageTypes;
namespace platform {
struct FileStat;
struct FindData;
struct FindState;
}  // namespace platform

// Meets the regular files and the folders below a folder, folder by folder, in the order of the
// system's listings. Left out are names with a "#" (in a link it would read as that of a fragment),
// folders that are links (what they lead to is met at its own place, or does not belong to the
// site), and what the hook wants left out; where the system numbers its files, no folder is entered
// twice.
class SiteWalk {
 public:
  // The caller's names of folders are numbers of 0 and above. A number below 0 ends the walk, which
  // then gives it.
  struct Steps {
    std::function<int(int folder, const std::string& path, const platform::FileStat& found)> file;
    // Gives the number of the folder `name`, which ends in `\`.
    std::function<int(int parent, const std::string& name)> folder;
    std::function<int()> nextFolder;
    std::function<void(const std::string& name)> unlisted;  // a folder that cannot be read
    // A native path of a folder, page or sheet that is left out for its name.
    std::function<void(const std::string& native)> leftOut;
  };

  // `types`: what is a page beside HTML pages; null for nothing.
  SiteWalk(Steps steps, const PageTypes* types, SiteMgr::IgnoreHook ignore, void* context)
      : steps_(std::move(steps)), types_(types), ignore_(ignore), context_(context) {}

  // 0, or what a step gave. `number` is that of `siteDir`.
  int Run(const std::string& siteDir, int number);

 private:
  struct Folder {
    std::string name;
    int number;
  };

  int WalkFolder(const Folder& folder);
  int Visit(const Folder& folder, platform::FindState* search, const platform::FindData& entry);
  int VisitFolder(const Folder& folder, const std::string& name, const platform::FileStat& found);
  void LeaveOut(const Folder& folder, const std::string& name, const platform::FileStat& found);
  bool IsIgnored(const std::string& path) const;

  const Steps steps_;
  const PageTypes* const types_;
  const SiteMgr::IgnoreHook ignore_;
  void* const context_;
  std::vector<Folder> workList_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;  // real folders
};

}  // namespace zvrsit
