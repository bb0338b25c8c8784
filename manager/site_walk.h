// The walk through the folders of a site on disk.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "manager/site_mgr.h"
#include "manager_base/folder_listings.h"

namespace zvrsit {

class PageTypes;
namespace platform {
struct FileStat;
struct FindData;
struct FindState;
}  // namespace platform

// Meets the regular files and the folders below a folder, folder by folder, in the order in which
// the system lists them. These are left out: names with a "#" (a link would have a fragment there);
// folders that are links (what they lead to is met at its own place, or does not belong to the
// site); and what the hook wants left out. If the system numbers its files, no folder is entered
// twice.
class SiteWalk {
 public:
  // The caller has a number of 0 or above for each folder. A number below 0 ends the walk and is
  // its result.
  struct Steps {
    std::function<int(int folder, const std::string& path, const platform::FileStat& found)> file;
    // Gives the number of the folder `name`, which ends in `\`.
    std::function<int(int parent, const std::string& name)> folder;
    std::function<int()> nextFolder;
    std::function<void(const std::string& name)> unlisted;  // a folder that cannot be read
    // Called with the native path of a folder, page or sheet that is left out because of its name.
    std::function<void(const std::string& native)> leftOut;
    // Called with the name, which ends in `\`, of a folder that is a link; may be empty.
    std::function<void(const std::string& name)> linkedFolder;
    // Called with every path that is left out because of its name; may be empty.
    std::function<void(const std::string& path)> passedBy;
  };

  // `types`: which files are pages beside HTML pages; null for no others.
  SiteWalk(Steps steps, const PageTypes* types, SiteMgr::IgnoreHook ignore, void* context)
      : steps_(std::move(steps)), types_(types), ignore_(ignore), context_(context) {}

  // Folders that are in `listings` are not looked into: they hold what is said there. What the walk
  // sees in the others is added.
  void Use(FolderListings& listings) { listings_ = &listings; }
  // 0, or what a step gave. `number` is that of `siteDir`.
  int Run(const std::string& siteDir, int number);

 private:
  struct Folder {
    std::string name;
    int number;
  };

  [[nodiscard]] int WalkFolder(const Folder& folder);
  [[nodiscard]] int WalkListed(const Folder& folder, const FolderListing& listing);
  [[nodiscard]] int Visit(const Folder& folder, platform::FindState* search,
                          const platform::FindData& entry, FolderListing* listing);
  [[nodiscard]] int Meet(const Folder& folder, const std::string& name,
                         const platform::FileStat& found, bool mayBeLink);
  int VisitFolder(const Folder& folder, const std::string& name, const platform::FileStat& found,
                  bool mayBeLink);
  void LeaveOut(const Folder& folder, const std::string& name, const platform::FileStat& found);
  bool IsIgnored(const std::string& path) const;

  const Steps steps_;
  const PageTypes* const types_;
  const SiteMgr::IgnoreHook ignore_;
  void* const context_;
  FolderListings* listings_ = nullptr;
  std::vector<Folder> workList_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;  // real folders
};

}  // namespace zvrsit
