// A site on which plans are made and carried out.
#pragma once

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "repair/disk_change.h"
#include "repair/repair_plan.h"
#include "support/test_site.h"

namespace zvrsit::test {

// Files by their names from the folder of the site.
using Files = std::map<std::string, std::string>;

class MovedSite : public TestSite {
 public:
  explicit MovedSite(LinkRules rules) : TestSite(rules) {}

  void SetProfile(const std::string& baseUrl, const std::string& extensions,
                  const std::string& defaultName) {
    SiteSiteProfDB& profiles = *mgr->GetSiteProf();
    const int number = profiles.Find("demo");
    for (const auto& [slot, text] :
         {std::pair(kSlotLiveUrl, baseUrl), std::pair(kSlotFallbackExtensions, extensions)}) {
      if (!text.empty()) {
        EXPECT_GE(profiles.SetFolder(number, slot, text), 0);
      }
    }
    if (!defaultName.empty()) {
      EXPECT_GE(profiles.SetText(number, &SiteSiteRec::defaultUrl, defaultName), 0);
    }
  }

  bool Rebuild() {
    if (mgr->GetOpenSiteId() < 0 && Open() != 0) return false;
    return mgr->SiteRebuildDB(1, nullptr) == 0 && mgr->NeedToRebuild("demo") == 2;
  }

  Files ReadAll() const {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(native(""))) {
      if (!entry.is_regular_file()) continue;
      const std::string name = std::filesystem::relative(entry.path(), native("")).generic_string();
      files[name] = ReadWhole(entry.path().string());
    }
    return files;
  }

  // The name of a file of the site, from its path.
  std::string NameOf(const std::string& file) const {
    std::string name;
    EXPECT_TRUE(platform::ToNativePath(file, name));
    return std::filesystem::relative(name, native("")).generic_string();
  }

  int Plan(const std::string& from, const std::string& to, RepairPlan& plan) {
    return PlanMove(*mgr, path(from), path(to), plan);
  }

  // Makes the edits of a plan in the files, and the move if there is one. False, with nothing
  // changed, where symbolic links forbid it.
  bool Change(const RepairPlan& plan, const std::string& from = "", const std::string& to = "") {
    DiskChange change{plan.files, {}, {}};
    if (!from.empty()) change.moves.push_back({path(from), path(to)});
    const std::string journal = folder().path("journal");
    DiskFault fault;
    const int result = ChangeDisk(change, journal, nullptr, fault);
    if (result == -1 && fault.reason == EMLINK) return false;
    EXPECT_EQ(result, 0) << fault.path << " " << fault.reason;
    EXPECT_EQ(EndRepair(journal), 0);
    return true;
  }
};

}  // namespace zvrsit::test
