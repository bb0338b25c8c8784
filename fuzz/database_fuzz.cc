// The files of a database, damaged: all that a program does with a site; and its tables made anew,
// after which the site is whole.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "dom/dom.h"
#include "fuzz/damaged_files.h"
#include "fuzz/target.h"
#include "manager/site_mgr.h"

namespace zvrsit::fuzz {
namespace {

const std::vector<std::string> kNewerFiles = {
    "db/sites.R", "db/sites.S", "db/servers.R", "db/servers.S", "db/demo/UR",
    "db/demo/US", "db/demo/PR", "db/demo/PS",   "db/demo/LR",   "db/demo/LS",
    "db/demo/FR", "db/demo/FS", "db/demo/RR",   "db/demo/RS"};
constexpr unsigned kProfileFiles = 0xF;  // the first four

void SetUpNewer(SiteMgr& manager, DOM& dom) {
  manager.setDom(&dom);
  manager.setDB("db\\", "sites.R", "servers.R", 0);
}

void MakeNewer() {
  DOM dom;
  SiteMgr manager;
  SetUpNewer(manager, dom);
  ServProfile server;
  server.host = "ftp.example.org";
  server.password = "secret";
  SiteProfile site;
  site.folders[kSlotSiteFolder] = "site\\";
  site.topFile = "site\\index.html";
  site.server = "host";
  site.linkRules = LinkRules::Web;
  const bool isMade = manager.SetServProf("host", server) >= 0 &&
                      manager.SetSiteProf("demo", site) >= 0 && manager.SiteOpen("demo", 0) == 0 &&
                      manager.SiteRebuildDB(1, nullptr) == 0 && manager.SiteClose() == 0;
  if (!isMade) std::abort();
}

// Looks at the files as they lie there.
bool IsSound(SiteMgr& manager, bool tells) {
  TableFaults faults;
  if (manager.VerifySite("demo", faults) != 0) return false;
  for (const TableFault& fault : faults.told) {
    if (tells) std::cerr << fault.file << ":" << fault.offset << ": " << fault.what << "\n";
  }
  for (int table = 0; table <= static_cast<int>(TableKind::kServers); ++table) {
    std::vector<TableFault> stopped;
    std::size_t words = 0;
    const auto look = [](const DumpedRecord& record, void* sum) {
      *static_cast<std::size_t*>(sum) += record.words.size();
    };
    (void)manager.DumpTable(static_cast<TableKind>(table), "demo", true, look, &words, stopped);
  }
  return faults.isSound();
}

void AskNewer(SiteMgr& manager) {
  SiteTotals totals;
  (void)manager.CountSite(totals);
  std::vector<MissingFragment> missing;
  (void)manager.FindMissingFragments(missing);
  SiteChanges changes;
  (void)manager.CompareWithDisk(changes);
  const std::unique_ptr<vec<SiteRecCell>> files(manager.EnumPath());
  for (std::size_t i = 0; files != nullptr && i < files->size(); ++i) {
    const std::string name((*files)[i].GetName());
    std::vector<PageId> ids;
    (void)manager.ListPageIds(name, ids);
    manager.DeleteVecRecCell(manager.GetForeLinks(name));
    manager.DeleteVecRecCell(manager.GetBackLinks(name));
  }
}

void ChangeNewer(SiteMgr& manager) {
  (void)manager.Save("site\\index.html", nullptr);
  (void)manager.Remove("site\\b.html", 0);
  (void)manager.Move("site\\c.gif", "site\\d\\c.gif");
  (void)manager.UpdateLinkFamily();
  SiteUpdates updates;
  (void)manager.SiteUpdate(updates, nullptr);
  (void)manager.SiteRebuildDB(0, nullptr);
  (void)manager.PackSite();
}

void UseNewer(bool profilesAreSound) {
  DOM dom;
  SiteMgr manager;
  SetUpNewer(manager, dom);
  TableFaults faults;
  (void)manager.VerifyProfiles(faults);
  const bool wasSound = IsSound(manager, false);
  if (manager.SiteOpen("demo", 0) == 0) {
    AskNewer(manager);
    ChangeNewer(manager);
    if (manager.SiteClose() == 0 && wasSound && profilesAreSound && !IsSound(manager, true)) {
      std::abort();
    }
  } else if (wasSound && profilesAreSound) {
    std::abort();
  }
  if (!profilesAreSound) return;
  std::filesystem::remove_all("db/demo");
  std::filesystem::create_directory("db/demo");
  const bool isMade = manager.SiteOpen("demo", 0) == 0 && manager.SiteRebuildDB(1, nullptr) == 0 &&
                      manager.SiteClose() == 0;
  if (!isMade || !IsSound(manager, true)) std::abort();
}

void ReadDatabase(std::string_view input) {
  static DamagedFiles& files = *new DamagedFiles(kNewerFiles, &MakeNewer);
  UseNewer((files.Damage(input) & kProfileFiles) == 0);
}

std::vector<std::string> DatabaseSeeds() {
  return DamagedFiles::Seeds(kNewerFiles.size());
}

}  // namespace

const Target kDatabaseTarget = {"database", &ReadDatabase, &DatabaseSeeds};

}  // namespace zvrsit::fuzz
