#include <memory>

#include "cli/beside_rebuild.h"
#include "cli/commands.h"
#include "cli/config.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

int RunAdd(const Options& options, const std::string& name, GivenSite site) {
  const std::string config = ConfigIn(site.folder.value_or(""));
  if (!config.empty()) FillFrom(ReadConfig(config).site, site);
  Session session(options, Database::kMake);
  AddSite(session, name, site);
  PrintObject(ProfileAsJson(name, ReadProfile(session, name)), options.json);
  return kClean;
}

int RunSites(const Options& options) {
  Session session(options, Database::kAsk);
  Json rows = Json::array();
  std::vector<Strings> lines;
  for (const std::string& name : TakeList(session.manager().EnumSiteProf())) {
    const SiteProfile profile = ReadProfile(session, name);
    rows.push_back(ProfileAsJson(name, profile));
    lines.push_back({name, NativePath(profile.folders[kSlotSiteFolder]),
                     RulesName(profile.linkRules), RebuildState(profile)});
  }
  session.LetGo();
  PrintList(rows, lines, options.json);
  return kClean;
}

int RunRebuild(const Options& options, const std::string& name, bool diff, bool anew) {
  Session session(options, Database::kMustExist);
  BesideRebuild rebuild(session, name, anew);
  const int code = RebuildSite(rebuild.copy(), !diff, session.database());
  const SiteTotals totals = CountSite(rebuild.copy());
  rebuild.Commit();
  session.LetGo();
  PrintTotals(totals, options.json);
  return code;
}

}  // namespace

CLI::Validator NotEmpty() {
  return CLI::Validator([](std::string& name) { return name.empty() ? "is empty" : ""; }, "");
}

void AddSiteName(CLI::App& command, std::string& name) {
  command.add_option("NAME", name, "the name of the site")->option_text(" ")->required();
}

void AddSiteCommands(CLI::App& app, Run& run, const SiteCommands& commands,
                     const SiteCommandHelp& help, void (*addOptions)(CLI::App&, GivenSite&)) {
  const auto name = std::make_shared<std::string>();
  const auto site = std::make_shared<GivenSite>();
  CLI::App* add = app.add_subcommand("add", help.add);
  AddSiteName(*add, *name);
  AddGiven(*add, "FOLDER", site->folder, "the folder of the site")->option_text(" ")->required();
  addOptions(*add, *site);
  add->callback([&run, name, site, command = commands.add] {
    run = [name, site, command] { return command(*name, *site); };
  });

  CLI::App* list = app.add_subcommand("sites", help.list);
  list->callback([&run, command = commands.list] { run = command; });

  const auto diff = std::make_shared<bool>(false);
  CLI::App* rebuild = app.add_subcommand("rebuild", "Read a whole site anew from disk");
  AddSiteName(*rebuild, *name);
  rebuild->add_flag("--diff", *diff, help.diff);
  rebuild->callback([&run, name, diff, command = commands.rebuild] {
    run = [name, diff, command] { return command(*name, *diff); };
  });
}

void AddSiteCommands(CLI::App& app, const Options& options, Run& run) {
  const auto anew = std::make_shared<bool>(false);
  AddSiteCommands(
      app, run,
      {[&options](const std::string& name, const GivenSite& site) {
         return RunAdd(options, name, site);
       },
       [&options] { return RunSites(options); },
       [&options, anew](const std::string& name, bool diff) {
         return RunRebuild(options, name, diff, *anew);
       }},
      {"Register a folder as a site", "List the sites", "also drop what has vanished from disk"},
      AddSiteOptions);
  app.get_subcommand("rebuild")->add_flag(
      "--anew", *anew, "makes new tables; titles and marks set by hand are lost");
}

}  // namespace zvrsit::cli
