#include <fmt/core.h>

#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/rebuild.h"

namespace zvrsit::cli {
namespace {

int RunAdd(const Options& options, const std::string& name, const NewSite& site) {
  Session session(options, Database::kMake);
  AddSite(session, name, site);
  return kClean;
}

const char* RebuildState(int state) {
  return state == 2 ? "rebuilt" : state == 1 ? "last rebuild failed" : "never rebuilt";
}

int RunSites(const Options& options) {
  Session session(options, Database::kMustExist);
  SiteMgr& manager = session.manager();
  const std::unique_ptr<std::vector<std::string*>> names(manager.EnumSiteProf());
  if (names == nullptr) throw Failure(kDatabase, "the site profiles cannot be read");
  Json rows = Json::array();
  for (std::string* held : *names) {
    const std::string name = Take(held);
    SiteProfile profile;
    if (manager.GetSiteProf(name, profile) != 0) continue;
    const std::string folder = NativePath(profile.folders[kSlotSiteFolder]);
    if (options.json) {
      rows.push_back({{"name", JsonText(name)},
                      {"folder", JsonText(folder)},
                      {"top", JsonText(NativePath(profile.topFile))},
                      {"rules", RulesName(profile.linkRules)},
                      {"state", RebuildState(profile.rebuildState)}});
    } else {
      fmt::print("{}  {}  {}, {}\n", LineText(name), LineText(folder), RulesName(profile.linkRules),
                 RebuildState(profile.rebuildState));
    }
  }
  if (options.json) PrintJson(rows);
  return kClean;
}

int RunRebuild(const Options& options, const std::string& name, bool diff) {
  Session session(options, Database::kMustExist);
  session.Open(name);
  const int code = RebuildSite(session, !diff);
  const SiteTotals totals = CountSite(session);
  session.Close();
  if (options.json) {
    PrintJson(TotalsAsJson(totals));
  } else {
    PrintTotals(totals);
  }
  return code;
}

}  // namespace

void AddSiteCommands(CLI::App& app, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto site = std::make_shared<NewSite>();
  CLI::App* add = app.add_subcommand("add", "Register a folder as a site");
  add->add_option("NAME", *name, "how the site is called")->required();
  AddNewSiteOptions(*add, *site);
  add->callback([&options, &run, name, site] {
    run = [&options, name, site] { return RunAdd(options, *name, *site); };
  });

  CLI::App* sites = app.add_subcommand("sites", "List the sites");
  sites->callback([&options, &run] { run = [&options] { return RunSites(options); }; });

  const auto diff = std::make_shared<bool>(false);
  CLI::App* rebuild = app.add_subcommand("rebuild", "Read a whole site anew from disk");
  rebuild->add_option("NAME", *name, "the site")->required();
  rebuild->add_flag("--diff", *diff, "also drop what has vanished from disk");
  rebuild->callback([&options, &run, name, diff] {
    run = [&options, name, diff] { return RunRebuild(options, *name, *diff); };
  });
}

}  // namespace zvrsit::cli
