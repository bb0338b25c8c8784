#include <algorithm>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

int RunAdd(const Options& options, const std::string& name, const GivenSite& site) {
  Session session(options, Database::kMake);
  AddSite(session, name, site);
  const SiteProfile profile = ReadProfile(session, name);
  if (options.json) {
    PrintJson(ProfileAsJson(name, profile));
  } else {
    PrintProfile(name, profile);
  }
  return kClean;
}

// A line a site, in columns.
void PrintSites(const Json& rows) {
  std::size_t width = 0;
  std::size_t folderWidth = 0;
  for (const Json& row : rows) {
    width = std::max(width, LineOfJson(row["name"]).size());
    folderWidth = std::max(folderWidth, LineOfJson(row["folder"]).size());
  }
  for (const Json& row : rows) {
    Print("{:<{}}  {:<{}}  {:<7}  {}\n", LineOfJson(row["name"]), width, LineOfJson(row["folder"]),
          folderWidth, row["rules"].get<std::string>(), row["state"].get<std::string>());
  }
}

int RunSites(const Options& options) {
  Session session(options, Database::kMustExist);
  Json rows = Json::array();
  for (const std::string& name : TakeList(session.manager().EnumSiteProf())) {
    rows.push_back(ProfileAsJson(name, ReadProfile(session, name)));
  }
  if (options.json) {
    PrintJson(rows);
  } else {
    PrintSites(rows);
  }
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

void AddSiteName(CLI::App& command, std::string& name) {
  command.add_option("NAME", name, "the name of the site")->option_text(" ")->required();
}

void AddSiteCommands(CLI::App& app, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto site = std::make_shared<GivenSite>();
  CLI::App* add = app.add_subcommand("add", "Register a folder as a site");
  AddSiteName(*add, *name);
  AddGiven(*add, "FOLDER", site->folder, "the folder of the site")->option_text(" ")->required();
  AddSiteOptions(*add, *site);
  add->callback([&options, &run, name, site] {
    run = [&options, name, site] { return RunAdd(options, *name, *site); };
  });

  CLI::App* sites = app.add_subcommand("sites", "List the sites");
  sites->callback([&options, &run] { run = [&options] { return RunSites(options); }; });

  const auto diff = std::make_shared<bool>(false);
  CLI::App* rebuild = app.add_subcommand("rebuild", "Read a whole site anew from disk");
  AddSiteName(*rebuild, *name);
  rebuild->add_flag("--diff", *diff, "also drop what has vanished from disk");
  rebuild->callback([&options, &run, name, diff] {
    run = [&options, name, diff] { return RunRebuild(options, *name, *diff); };
  });
}

}  // namespace zvrsit::cli
