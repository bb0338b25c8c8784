// The commands of the program, one file for each family. Each function adds its commands to the
// command line. The command that the user gives puts a function into `run`, which gives the exit
// code or throws Failure.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

#include "cli/session.h"

namespace zvrsit::cli {

using Run = std::function<int()>;

// add, sites, rebuild
void AddSiteCommands(CLI::App& app, const Options& options, Run& run);
// update
void AddUpdateCommand(CLI::App& app, const Options& options, Run& run);
// watch
void AddWatchCommand(CLI::App& app, const Options& options, Run& run);
// serve
void AddServeCommand(CLI::App& app, const Options& options, Run& run);
// links, broken
void AddLinkCommands(CLI::App& app, const Options& options, Run& run);
// files, urls (with --check: cli/url_commands.h), unused, family
void AddFileCommands(CLI::App& app, const Options& options, Run& run);
// save
void AddChangeCommands(CLI::App& app, const Options& options, Run& run);
// mv, rm, rename-id, fix
void AddRepairCommands(CLI::App& app, const Options& options, Run& run);
// verify, dump
void AddDatabaseCommands(CLI::App& app, const Options& options, Run& run);
// export
void AddExportCommand(CLI::App& app, const Options& options, Run& run);
// graph
void AddGraphCommand(CLI::App& app, const Options& options, Run& run);
// report
void AddReportCommand(CLI::App& app, const Options& options, Run& run);
// check
void AddCheckCommand(CLI::App& app, const Options& options, Run& run);
// site show, set, rename, delete
void AddProfileCommands(CLI::App& app, const Options& options, Run& run);
// server list, show, set, delete
void AddServerCommands(CLI::App& app, const Options& options, Run& run);
// legacy add, sites, rebuild, import, links, broken, peek, undo
void AddLegacyCommands(CLI::App& app, const Options& options, Run& run);

// manual, completion
void AddManualCommands(CLI::App& app, const Options& options, Run& run);

// The positional NAME of a site.
void AddSiteName(CLI::App& command, std::string& name);
// Refuses an empty name. A script gives one when a variable is not set.
CLI::Validator NotEmpty();

struct GivenSite;  // site_profile.h

// What the commands `add`, `sites` and `rebuild` of one generation do.
struct SiteCommands {
  std::function<int(const std::string& name, const GivenSite& site)> add;
  std::function<int()> list;
  std::function<int(const std::string& name, bool diff)> rebuild;
};
// What their help says.
struct SiteCommandHelp {
  const char* add;
  const char* list;
  const char* diff;
};
// The three commands below `app`. `addOptions` gives `add` what it takes beside NAME and FOLDER.
void AddSiteCommands(CLI::App& app, Run& run, const SiteCommands& commands,
                     const SiteCommandHelp& help, void (*addOptions)(CLI::App&, GivenSite&));

// The site and one end of the links that are asked for.
struct LinkQuery {
  std::string site;
  std::string from;  // empty: of any file
  std::string to;    // likewise
};
// The command `links` with NAME, --from and --to, and the command `broken` with NAME, below `app`.
using AskLinks = std::function<int(const LinkQuery&)>;
void AddLinkQueries(CLI::App& app, Run& run, const AskLinks& links, const AskLinks& broken);

}  // namespace zvrsit::cli
