// The files of a database of the older generation, damaged: all that a program does with a site,
// and a rebuild, after which the site is whole. The fields of its profiles go to the newer
// generation, as they are.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/damaged_files.h"
#include "fuzz/target.h"
#include "legacy/sit_mgr.h"
#include "legacy/sit_peeper.h"
#include "manager/site_mgr.h"
#include "util/server_fields.h"

namespace zvrsit::fuzz {
namespace {

const std::vector<std::string> kOlderFiles = {
    "db/sites",        "db/sites_S",     "db/servers",      "db/servers_S",
    "db/demo/Url.db",  "db/demo/Url.dS", "db/demo/Link.db", "db/demo/Link.dS",
    "db/demo/Junk.db", "db/demo/Rel.db", "db/demo/Rel.dS",  "db/demo/Folder.db"};
constexpr int kMostAnswers = 100;

void Give(std::string* text) {
  SitMgrBase::DeleteString(text);
}

// A database in the working folder.
void MakeOlder() {
  SitMgr manager;
  manager.setDB("db\\", "sites", "servers");
  SitServProperty server;
  server.host = "ftp.example.org";
  server.password = "secret";
  server.lockDir = 7;
  manager.SetServProf("host", server);
  SitSiteProperty site;
  site.dir[1] = "site\\";
  site.topFile = "site\\index.html";
  site.servProf = "host";
  manager.SetSiteProf("demo", site);
  if (manager.SiteOpen("demo") != 0 || manager.SiteRebuildDB(1) != 0) std::abort();
  manager.UrlAdd(kKindUrl, "http://x/");
  manager.SiteClose();
}

// Profiles are read, and stored in the newer generation.
void CarryProfiles(SitMgr& older) {
  std::filesystem::remove_all("newer");
  std::filesystem::create_directory("newer");
  SiteMgr newer;
  newer.setDB("newer\\", "sites.R", "servers.R", 0);
  older.EnumServProf(1);
  for (int i = 0; i < kMostAnswers; ++i) {
    const std::unique_ptr<std::string> name(older.EnumServProf(0));
    if (name == nullptr) break;
    SitServProperty old;
    if (older.GetServProf(*name, old) != 0) continue;
    ServProfile server;
    ForEachServerField<ServProfile, SitServProperty>(
        [&](ServerField, auto field, auto oldField) { server.*field = old.*oldField; });
    ServProfile have;
    if (newer.SetServProf(*name, server) < 0) continue;
    if (newer.GetServProf(*name, have) != 0 || have != server) std::abort();
  }
  older.EnumSiteProf(1);
  for (int i = 0; i < kMostAnswers; ++i) {
    const std::unique_ptr<std::string> name(older.EnumSiteProf(0));
    if (name == nullptr) break;
    SitSiteProperty old;
    if (older.GetSiteProf(*name, old) != 0) continue;
    SiteProfile site;
    site.folders = old.dir;
    site.topFile = old.topFile;
    site.server = old.servProf;
    SiteProfile have;
    if (newer.SetSiteProf(*name, site) < 0) continue;
    if (newer.GetSiteProf(*name, have) != 0 || have != site) std::abort();
  }
}

void AskOlder(SitMgr& manager) {
  manager.EnumLink(1, nullptr, nullptr);
  for (int i = 0; i < kMostAnswers && manager.GetLastError() != kSitPastEnd; ++i) {
    std::string* from = nullptr;
    std::string* to = nullptr;
    if (manager.EnumLink(0, &from, &to) != 0) continue;
    Give(from);
    Give(to);
  }
  manager.EnumPath(1);
  for (int i = 0; i < kMostAnswers; ++i) {
    const std::unique_ptr<std::string> path(manager.EnumPath(0));
    if (path == nullptr) break;
    SitUrlRec record;
    manager.GetUrlProperty(*path, record);
    manager.SetUrlProperty(*path, record);
    for (int k = 0; k < kMostAnswers; ++k) {
      std::string* const target = manager.GetForeLinks(*path);
      if (target == nullptr) break;
      Give(target);
    }
    Give(manager.GetBackLinks(*path));
  }
  manager.SearchKeyword(1, "T");
  Give(manager.SearchKeyword(0, "T"));
  Give(manager.GetChild("site\\"));
}

void ChangeOlder(SitMgr& manager) {
  SitLinkProperty link;
  if (manager.GetLinkProperty("site\\index.html", "site\\b.html", link) == 0) {
    manager.SetLinkProperty("site\\index.html", "site\\b.html", link);
  }
  manager.Save("site\\index.html");
  manager.Remove("site\\b.html");
  manager.Undo();
  manager.Undo();
  manager.UpdateLinkFamily();
}

// After damage to its stores alone, a complete rebuild makes a site whole.
void UseOlder(bool mustHeal) {
  SitMgr manager;
  manager.setDB("db\\", "sites", "servers");
  CarryProfiles(manager);
  if (manager.SiteOpen("demo") == 0) {
    (void)manager.IsSiteWhole();
    AskOlder(manager);
    ChangeOlder(manager);
    manager.SiteClose();
  }
  SitPeeper peeper;
  peeper.setDB("db\\", "sites", "servers");
  if (auto* const paths = peeper.EnumPath("demo")) {
    for (std::string* path : *paths) Give(path);
    delete paths;
  }
  if (auto* const sites = peeper.GetSiteByPath("site\\b.html")) {
    for (std::string* site : *sites) Give(site);
    delete sites;
  }
  if (manager.SiteOpen("demo") != 0) return;
  const int result = manager.SiteRebuildDB(1);
  if (mustHeal && (result != 0 || !manager.IsSiteWhole())) std::abort();
  manager.SiteClose();
}

void ReadOlder(std::string_view input) {
  static DamagedFiles& files = *new DamagedFiles(kOlderFiles, &MakeOlder);
  const unsigned damaged = files.Damage(input);
  constexpr unsigned kProfiles = 0xF;  // the first four files
  UseOlder((damaged & kProfiles) == 0);
}

std::vector<std::string> OlderSeeds() {
  return DamagedFiles::Seeds(kOlderFiles.size());
}

}  // namespace

const Target kLegacyTarget = {"legacy", &ReadOlder, &OlderSeeds};

}  // namespace zvrsit::fuzz
