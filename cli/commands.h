// The commands of the program, a family a file. Each function adds its commands to the command
// line; the one that is asked for puts what is to be run into `run`, which gives the exit code or
// throws Failure.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>

#include "cli/rebuild.h"
#include "cli/session.h"

namespace zvrsit::cli {

using Run = std::function<int()>;

// FOLDER, --top, --default-url, --doc-root and --rules, as `add` and `check` take them.
void AddNewSiteOptions(CLI::App& command, NewSite& site);

void AddSiteCommands(CLI::App& app, const Options& options, Run& run);  // add, sites, rebuild
void AddLinkCommands(CLI::App& app, const Options& options, Run& run);  // links, broken
void AddFileCommands(CLI::App& app, const Options& options,
                     Run& run);  // files, urls, unused, family
void AddChangeCommands(CLI::App& app, const Options& options, Run& run);  // save, rm, mv
void AddCheckCommand(CLI::App& app, const Options& options, Run& run);

}  // namespace zvrsit::cli
