#include <limits>
#include <map>
#include <memory>
#include <optional>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/password.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

struct TextField {
  const char* option;
  const char* key;
  std::string ServProfile::*text;
  const char* help;
};
constexpr TextField kTexts[] = {
    {"--host", "host", &ServProfile::host, "the host to publish to"},
    {"--user", "user", &ServProfile::user, "the user there"},
    {"--dir", "dir", &ServProfile::dir, "the remote folder that the site goes to"},
    {"--firewall-host", "firewall_host", &ServProfile::firewallHost, "the firewall's host"},
    {"--firewall-user", "firewall_user", &ServProfile::firewallUser, "the user there"},
    {"--first-dir", "first_dir", &ServProfile::initRemoteDir, "the folder a session begins in"},
    {"--recent-remote", "recent_remote", &ServProfile::mruDirRemote, "remote folders used lately"},
    {"--recent-local", "recent_local", &ServProfile::mruDirLocal, "local folders used lately"},
    {"--text-suffixes", "text_suffixes", &ServProfile::asciiSuffix,
     "the extensions of files that are sent as text"},
};

struct NumberField {
  const char* option;
  const char* key;
  std::int32_t ServProfile::*number;
  std::int32_t largest;  // from 0
  const char* help;
};
// The meaning of these numbers belongs to the program that publishes.
constexpr std::int32_t kAnyNumber = std::numeric_limits<std::int32_t>::max();
constexpr NumberField kNumbers[] = {
    {"--firewall", "firewall", &ServProfile::firewall, kAnyNumber,
     "the kind of firewall, 0 for none"},
    {"--transfer-type", "transfer_type", &ServProfile::transferType, kAnyNumber,
     "how files are sent"},
    {"--first-dir-mode", "first_dir_mode", &ServProfile::initDirMode, kAnyNumber,
     "how --first-dir is meant"},
    {"--lock-dir", "lock_dir", &ServProfile::lockDir, 1, "whether a session stays in it, 0 or 1"},
};

// What `server set` was told, by option.
struct Given {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::int32_t> numbers;
  bool password = false;
  bool firewallPassword = false;
};

ServProfile ReadServer(Session& session, const std::string& name) {
  ServProfile server;
  if (session.manager().GetServProf(name, server) != 0) {
    throw Failure(kUsage, "there is no server named \"" + name + "\"");
  }
  return server;
}

// A password is not shown, only whether there is one.
Json ServerAsJson(const std::string& name, const ServProfile& server) {
  Json row{{"name", JsonText(name)}};
  for (const TextField& field : kTexts) row[field.key] = JsonText(server.*field.text);
  for (const NumberField& field : kNumbers) row[field.key] = server.*field.number;
  row["password"] = !server.password.empty();
  row["firewall_password"] = !server.firewallPassword.empty();
  return row;
}

int ShowServer(const Options& options, Session& session, const std::string& name) {
  const ServProfile server = ReadServer(session, name);
  session.LetGo();
  PrintObject(ServerAsJson(name, server), options.json);
  return kClean;
}

int RunList(const Options& options) {
  Session session(options, Database::kAsk);
  Json rows = Json::array();
  std::vector<Strings> lines;
  for (const std::string& name : TakeList(session.manager().EnumServProf())) {
    const ServProfile server = ReadServer(session, name);
    rows.push_back(ServerAsJson(name, server));
    lines.push_back({name, server.host, server.dir});
  }
  session.LetGo();
  PrintList(rows, lines, options.json);
  return kClean;
}

int RunShowServer(const Options& options, const std::string& name) {
  Session session(options, Database::kAsk);
  return ShowServer(options, session, name);
}

int RunSet(const Options& options, const std::string& name, const Given& given) {
  std::optional<std::string> password;
  std::optional<std::string> firewallPassword;
  if (given.password) password = AskPassword("Password");
  if (given.firewallPassword) firewallPassword = AskPassword("Password of the firewall");

  if (name.empty()) throw Failure(kUsage, "an empty name is no server's");
  Session session(options, Database::kMake);
  ServProfile server;
  session.manager().GetServProf(name, server);
  for (const TextField& field : kTexts) {
    if (const auto text = given.texts.find(field.option); text != given.texts.end()) {
      server.*field.text = text->second;
    }
  }
  for (const NumberField& field : kNumbers) {
    if (const auto number = given.numbers.find(field.option); number != given.numbers.end()) {
      server.*field.number = number->second;
    }
  }
  if (password) server.password = *password;
  if (firewallPassword) server.firewallPassword = *firewallPassword;
  if (session.manager().SetServProf(name, server) != 0) {
    FailToWriteProfile("the server \"" + name + "\"");
  }
  return ShowServer(options, session, name);
}

// The sites that are published to the server.
std::vector<std::string> SitesOf(Session& session, const std::string& server) {
  std::vector<std::string> sites = TakeList(session.manager().EnumSiteProf());
  std::erase_if(
      sites, [&](const std::string& site) { return ReadProfile(session, site).server != server; });
  return sites;
}

// Without `force` it is a failure when sites name the server. With it, they name none afterwards.
void TakeOutOfSites(Session& session, const std::string& server, bool force) {
  SiteMgr& manager = session.manager();
  std::string names;
  for (const std::string& site : SitesOf(session, server)) {
    names += (names.empty() ? "" : ", ") + site;
    if (force && manager.SetSiteProfServer("", manager.FindSiteProf(site)) != 0) {
      FailToWriteProfile("\"" + site + "\"");
    }
  }
  if (!names.empty() && !force) {
    throw Failure(kUsage, "\"" + server + "\" is the server of " + names +
                              " (--force deletes it all the same)");
  }
}

int RunDelete(const Options& options, const std::string& name, bool force) {
  Session session(options, Database::kMustExist);
  ReadServer(session, name);
  TakeOutOfSites(session, name, force);
  if (session.manager().DeleteServProf(name) != 0) {
    FailToWriteProfile("the server \"" + name + "\"");
  }
  if (options.json) PrintJson({{"deleted", JsonText(name)}});
  return kClean;
}

void AddName(CLI::App& command, std::string& name) {
  command.add_option("NAME", name, "the name of the server")->option_text(" ")->required();
}

void AddServerSet(CLI::App& server, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto given = std::make_shared<Given>();
  CLI::App* set =
      server.add_subcommand("set", "Change what is given, in a new profile if there is none");
  AddName(*set, *name);
  for (const TextField& field : kTexts) {
    set->add_option_function<std::string>(
           field.option,
           [given, &field](const std::string& text) { given->texts[field.option] = text; },
           field.help)
        ->option_text("TEXT");
  }
  for (const NumberField& field : kNumbers) {
    set->add_option_function<std::int32_t>(
           field.option,
           [given, &field](std::int32_t number) { given->numbers[field.option] = number; },
           field.help)
        ->option_text("NUMBER")
        ->check(CLI::Range(0, field.largest));
  }
  set->add_flag("--password", given->password,
                "ask for the password, or read it as a line of standard input");
  set->add_flag("--firewall-password", given->firewallPassword,
                "likewise for the firewall, as the next line");
  set->callback([&options, &run, name, given] {
    run = [&options, name, given] { return RunSet(options, *name, *given); };
  });
}

}  // namespace

void AddServerCommands(CLI::App& app, const Options& options, Run& run) {
  CLI::App* server = app.add_subcommand(
      "server", "Servers for the application that publishes the sites; zvrsit sends nothing");
  server->require_subcommand(1);
  const auto name = std::make_shared<std::string>();

  CLI::App* list = server->add_subcommand("list", "List the servers");
  list->callback([&options, &run] { run = [&options] { return RunList(options); }; });

  CLI::App* show = server->add_subcommand("show", "Show the profile of a server");
  AddName(*show, *name);
  show->callback(
      [&options, &run, name] { run = [&options, name] { return RunShowServer(options, *name); }; });

  AddServerSet(*server, options, run);

  const auto force = std::make_shared<bool>(false);
  CLI::App* remove = server->add_subcommand("delete", "Forget a server that no site names");
  AddName(*remove, *name);
  remove->add_flag("--force", *force, "take it out of the sites that name it");
  remove->callback([&options, &run, name, force] {
    run = [&options, name, force] { return RunDelete(options, *name, *force); };
  });
}

}  // namespace zvrsit::cli
