#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/site_profile.h"
#include "cli/table_files.h"
#include "cli/unsynced.h"

namespace zvrsit::cli {
namespace {

int ShowSite(const Options& options, Session& session, const std::string& name) {
  const SiteProfile profile = ReadProfile(session, name);
  session.LetGo();
  PrintObject(ProfileAsJson(name, profile), options.json);
  return kClean;
}

int RunShowSite(const Options& options, const std::string& name) {
  Session session(options, Database::kAsk);
  return ShowSite(options, session, name);
}

int RunSet(const Options& options, const std::string& name, const GivenSite& site) {
  Session session(options, Database::kMustExist);
  const std::vector<std::string> saved = ChangeSite(session, name, site);
  Json answer = ProfileAsJson(name, ReadProfile(session, name));
  session.LetGo();
  if (options.json) {
    Json& names = answer["saved"] = Json::array();
    for (const std::string& file : saved) names.push_back(JsonText(file));
  }
  PrintObject(answer, options.json);
  if (!options.json) {
    for (const std::string& file : saved) Print("read anew         {}\n", LineText(file));
  }
  return kClean;
}

int RunRename(const Options& options, const std::string& name, const std::string& newName) {
  Session session(options, Database::kMustExist);
  session.HoldSite(name);
  NeedNewName(session, newName, name);
  if (session.manager().RenameSiteProf(name, newName) != 0) {
    ThrowIfSystemFailed("\"" + name + "\" cannot be renamed");
    throw Failure(kUsage, "\"" + newName + "\" cannot be the name of a site");
  }
  MoveKeptAnswers(session.FolderOfTables(name), session.FolderOfTables(newName));
  return ShowSite(options, session, newName);
}

int RunDelete(const Options& options, const std::string& name) {
  Session session(options, Database::kMustExist);
  session.HoldSite(name);
  if (session.manager().DeleteSiteProf(name) != 0) FailToWriteProfile("\"" + name + "\"");
  ForgetUnsynced(session.FolderOfTables(name));
  RemoveKeptAnswers(session.FolderOfTables(name));
  if (options.json) PrintJson({{"deleted", JsonText(name)}});
  return kClean;
}

void AddSiteSet(CLI::App& site, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto given = std::make_shared<GivenSite>();
  CLI::App* set = site.add_subcommand("set", "Change what is given; an empty value unsets");
  AddSiteName(*set, *name);
  AddGiven(*set, "--folder", given->folder, "where the site was moved; it is to be rebuilt then")
      ->option_text("FOLDER");
  AddSiteOptions(*set, *given);
  AddGiven(*set, "--server", given->server, "the server that the application publishes the site to")
      ->option_text("NAME");
  set->callback([&options, &run, name, given] {
    run = [&options, name, given] { return RunSet(options, *name, *given); };
  });
}

}  // namespace

void AddProfileCommands(CLI::App& app, const Options& options, Run& run) {
  CLI::App* site = app.add_subcommand("site", "Show, change or delete the profile of a site");
  site->require_subcommand(1);
  const auto name = std::make_shared<std::string>();

  CLI::App* show = site->add_subcommand("show", "Show the profile of a site");
  AddSiteName(*show, *name);
  show->callback(
      [&options, &run, name] { run = [&options, name] { return RunShowSite(options, *name); }; });

  AddSiteSet(*site, options, run);

  const auto newName = std::make_shared<std::string>();
  CLI::App* rename = site->add_subcommand("rename", "Give a site another name");
  AddSiteName(*rename, *name);
  rename->add_option("NEW", *newName, "its new name")->option_text(" ")->required();
  rename->callback([&options, &run, name, newName] {
    run = [&options, name, newName] { return RunRename(options, *name, *newName); };
  });

  CLI::App* remove =
      site->add_subcommand("delete", "Forget a site; its files are left as they are");
  AddSiteName(*remove, *name);
  remove->callback(
      [&options, &run, name] { run = [&options, name] { return RunDelete(options, *name); }; });
}

}  // namespace zvrsit::cli
