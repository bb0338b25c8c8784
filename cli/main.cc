// The program zvrsit.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#if !defined(_WIN32)
#include <fcntl.h>
#endif
#if defined(__linux__)
#include <sys/prctl.h>
#endif

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/help.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/unsynced.h"
#include "findings/suggestions.h"
#include "platform/version.h"

namespace zvrsit::cli {
namespace {

// Opens something under the numbers of standard streams that are closed. Otherwise a table could
// get such a number, and output would be written into it. Reads and writes of these streams fail,
// as they would otherwise.
void OccupyStandardStreams() {
#if !defined(_WIN32)
  for (const int fd : {0, 1, 2}) {
    if (fcntl(fd, F_GETFD) < 0) open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY);
  }
#endif
}

// Passwords are in memory, and are not to be in a core.
void ForbidCores() {
#if defined(__linux__)
  prctl(PR_SET_DUMPABLE, 0);
#endif
}

int Complain(const std::string& message, int code) {
  Warn(message);
  return code;
}

int Perform(const Run& run) {
  try {
    const int code = run();
    FinishOutput();
    return code;
  } catch (const Failure& failure) {
    return Complain(failure.what(), failure.code());
  } catch (const std::bad_alloc&) {
    return Complain("out of memory", kFileSystem);
  } catch (const std::exception& error) {
    return Complain(std::string("the database is damaged: ") + error.what(), kDatabase);
  }
}

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

// Also those of the commands above.
std::vector<std::string> OptionNames(const CLI::App* app) {
  std::vector<std::string> names;
  for (; app != nullptr; app = app->get_parent()) {
    for (const CLI::Option* option : app->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

// What is wrong with a command line, and where to read on.
int ComplainOfUsage(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App* at = &app;
  std::string command = app.get_name();
  while (!at->get_subcommands().empty()) {
    at = at->get_subcommands().front();
    command += " " + at->get_name();
  }
  std::string message = error.what();
  const std::vector<std::string> unknown = app.remaining(true);
  if (!unknown.empty() && unknown.front().starts_with('-')) {
    message = "\"" + unknown.front() + "\" is no option here" +
              DidYouMean(unknown.front(), OptionNames(at));
  } else if (!unknown.empty() && at->get_require_subcommand_min() > 0) {
    message = "\"" + unknown.front() + "\" is no command" +
              DidYouMean(unknown.front(), CommandNames(*at));
  }
  return Complain(message + (message.ends_with('?') ? " " : "; ") + command + " --help tells more",
                  kUsage);
}

struct CommandFamily {
  std::vector<std::string_view> commands;
  void (*add)(CLI::App& app, const Options& options, Run& run);
};

// In the order of the help.
const std::vector<CommandFamily>& CommandFamilies() {
  static const std::vector<CommandFamily> kAll = {
      {{"check"}, AddCheckCommand},
      {{"report"}, AddReportCommand},
      {{"add", "sites", "rebuild"}, AddSiteCommands},
      {{"update"}, AddUpdateCommand},
      {{"watch"}, AddWatchCommand},
      {{"serve"}, AddServeCommand},
      {{"links", "broken"}, AddLinkCommands},
      {{"files", "urls", "unused", "family"}, AddFileCommands},
      {{"save"}, AddChangeCommands},
      {{"mv", "rm", "rename-id", "fix"}, AddRepairCommands},
      {{"site"}, AddProfileCommands},
      {{"server"}, AddServerCommands},
      {{"export"}, AddExportCommand},
      {{"graph"}, AddGraphCommand},
      {{"verify", "dump"}, AddDatabaseCommands},
      {{"legacy"}, AddLegacyCommands},
      {{}, AddManualCommands},  // these tell of all commands
  };
  return kAll;
}

// The first argument that is no option for all commands, nor the value of one.
std::string_view FirstWord(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (!word.starts_with('-')) return word;
    if (word == "--db" || word == "--format") ++i;
  }
  return {};
}

// Of all commands only the family of `wanted` where there is one: adding all of them takes a third
// of the time of a short command.
void AddCommands(CLI::App& app, std::string_view wanted, const Options& options, Run& run) {
  const std::vector<CommandFamily>& all = CommandFamilies();
  const auto family = std::ranges::find_if(all, [wanted](const CommandFamily& one) {
    return std::ranges::find(one.commands, wanted) != one.commands.end();
  });
  if (family != all.end()) return family->add(app, options, run);
  for (const CommandFamily& one : all) one.add(app, options, run);
}

int Main(int argc, char** argv) {
  CLI::App app("Manages web sites: their files, the links between them, what is broken.", "zvrsit");
  Options options;
  Run run;
  app.formatter(std::make_shared<HelpFormatter>());
  app.add_option("--db", options.database, "the folder of the database, by default the user's own")
      ->option_text("FOLDER")
      ->check(NotEmpty());
  std::string format = "text";
  app.add_option("--format", format,
                 "how answers are printed; the first two for all, the others for findings")
      ->option_text("text|json|jsonl|csv|junit|sarif|github|markdown")
      ->check([](const std::string& name) {
        return FormatOfName(name) ? std::string()
                                  : "\"" + name + "\" is no format, such as text or json";
      });
  double wait = Patience() / 1000.0;
  app.add_option("--wait", wait,
                 "how long to wait for another process that uses the database; by default 3")
      ->option_text("SECONDS")
      ->check(CLI::Range(0.0, 1e6));
  app.set_version_flag("--version", std::string("zvrsit ") + Version());
  app.require_subcommand(1);
  app.fallthrough();
  app.allow_windows_style_options(false);  // a name may begin with "/"
  app.footer(
      "Every command takes --db FOLDER (of the database, by default the user's own) and\n"
      "--format text|json (of findings also jsonl|csv|junit|sarif|github|markdown).\n"
      "Exit codes: 0 clean, 1 findings, 2 usage, 3 database, 4 files, 130 interrupted.");
  AddCommands(app, FirstWord(argc, argv), options, run);
  FinishHelp(app);
  if (!AreArgumentsWhole()) {
    return Complain("an argument holds a character that the code page of the system lacks", kUsage);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& wanted) {
    const int code = app.exit(wanted);
    return std::cout.flush() ? code : Complain("the output cannot be written", kFileSystem);
  } catch (const CLI::ParseError& error) {
    return ComplainOfUsage(app, error);
  }
  options.json = format == "json";
  options.format = *FormatOfName(format);
  SetPatience(static_cast<int>(wait * 1000));
  // Not to wait for the disk is for tests, and for those who can make the database anew.
  if (const char* const sync = std::getenv("ZVRSIT_SYNC")) {
    if (std::string_view(sync) == "0") NeverWait();
  }
  return Perform(run);
}

}  // namespace
}  // namespace zvrsit::cli

int main(int argc, char** argv) {
  zvrsit::cli::OccupyStandardStreams();
  zvrsit::cli::ForbidCores();
  return zvrsit::cli::InAnsiConsole([&] { return zvrsit::cli::Main(argc, argv); });
}
