// The program zvrsit.
#include <fmt/core.h>

#include <cstdio>
#include <exception>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"

namespace zvrsit::cli {
namespace {

int Complain(const std::string& message, int code) {
  fmt::print(stderr, "zvrsit: {}\n", LineText(message));
  return code;
}

int Perform(const Run& run) {
  try {
    const int code = run();
    if (std::fflush(stdout) != 0) return Complain("the output cannot be written", kFileSystem);
    return code;
  } catch (const Failure& failure) {
    return Complain(failure.what(), failure.code());
  } catch (const std::bad_alloc&) {
    return Complain("out of memory", kFileSystem);
  } catch (const std::exception& error) {
    return Complain(std::string("the database is damaged: ") + error.what(), kDatabase);
  }
}

int Main(int argc, char** argv) {
  CLI::App app("Manages web sites: their files, the links between them, what is broken.", "zvrsit");
  Options options;
  Run run;
  std::string format = "text";
  app.add_option("--db", options.database, "the folder of the database");
  app.add_option("--format", format, "text or json")->check(CLI::IsMember({"text", "json"}));
  app.set_version_flag("--version", ZVRSIT_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  AddSiteCommands(app, options, run);
  AddLinkCommands(app, options, run);
  AddFileCommands(app, options, run);
  AddChangeCommands(app, options, run);
  AddCheckCommand(app, options, run);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kClean : kUsage;
  }
  options.json = format == "json";
  return Perform(run);
}

}  // namespace
}  // namespace zvrsit::cli

int main(int argc, char** argv) {
  return zvrsit::cli::Main(argc, argv);
}
