// Older sites: add, sites, rebuild.
#include "cli/exit_code.h"
#include "cli/legacy_commands.h"
#include "cli/legacy_totals.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

Json SiteRow(const std::string& name, const SitSiteProperty& site) {
  return {{"name", JsonText(name)},
          {"folder", JsonText(NativePath(site.dir[kSlotSiteFolder]))},
          {"top", JsonText(NativePath(site.topFile))}};
}

int RunLegacyAdd(const Options& options, const std::string& name, const GivenSite& site) {
  LegacySession session(options, Database::kMake);
  SitMgr& manager = session.manager();
  if (manager.SiteProfGetID(name) >= 0) {
    throw Failure(kUsage, "there is an older site named \"" + name + "\" already");
  }
  const SiteProfile profile = NewProfile(session.newer(), site);
  SitSiteProperty property;
  property.topFile = profile.topFile;
  property.dir[kSlotSiteFolder] = profile.folders[kSlotSiteFolder];
  if (manager.SetSiteProf(name, property) != 0) {
    if (manager.GetLastError() != kSitBadArgument) session.FailToWrite();
    throw Failure(kUsage, "\"" + name + "\" cannot be made an older site");
  }
  session.Commit();
  session.LetGo();
  PrintObject(SiteRow(name, property), options.json);
  return kClean;
}

int RunLegacySites(const Options& options) {
  LegacySession session(options, Database::kAsk);
  SitMgr& manager = session.manager();
  Json rows = Json::array();
  std::vector<Strings> lines;
  manager.EnumSiteProf(1);
  while (std::string* next = manager.EnumSiteProf(0)) {
    const std::string name = Take(next);
    const SitSiteProperty site = session.Profile(name);
    rows.push_back(SiteRow(name, site));
    lines.push_back({name, NativePath(site.dir[kSlotSiteFolder])});
  }
  session.LetGo();
  PrintList(rows, lines, options.json);
  return kClean;
}

int RunLegacyRebuild(const Options& options, const std::string& name, bool diff) {
  LegacySession session(options, Database::kMustExist);
  session.OpenToRebuild(name);
  session.NeedFolder();
  if (session.manager().SiteRebuildDB(diff ? 0 : 1) != 0) session.FailToWrite();
  const LegacyTotals totals = CountLegacy(session);
  session.Commit();
  session.LetGo();
  if (options.json) {
    PrintJson(TotalsRow(totals));
  } else {
    Print("{}\n", TotalsLine(totals));
  }
  return kClean;
}

}  // namespace

void AddLegacySites(CLI::App& legacy, const Options& options, Run& run) {
  AddSiteCommands(legacy, run,
                  {[&options](const std::string& name, const GivenSite& site) {
                     return RunLegacyAdd(options, name, site);
                   },
                   [&options] { return RunLegacySites(options); },
                   [&options](const std::string& name, bool diff) {
                     return RunLegacyRebuild(options, name, diff);
                   }},
                  {"Register a folder as an older site", "List the older sites",
                   "let the entries of files keep their numbers"},
                  AddTopOption);
}

}  // namespace zvrsit::cli
