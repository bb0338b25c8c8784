// What `check` and `broken` have in common: which rules count, and how findings are shown.
#pragma once

#include <CLI/CLI.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/config.h"
#include "cli/session.h"
#include "findings/collect.h"
#include "findings/finding.h"
#include "findings/output.h"

namespace zvrsit::cli {

struct FindingOptions {
  Severities severities;
  // What the command line says; it goes before the configuration.
  std::vector<std::pair<Rule, Severity>> rules;
  Ignores ignores;
  std::string config;  // native; empty: the one that is found
  bool usesConfig = true;
  GivenExternal external;
  FindingFormat format = FindingFormat::kText;
  std::string color = "auto";
  bool all = false;
  bool quiet = false;    // findings alone
  bool verbose = false;  // on stderr: what is looked at, and how long each step takes
};

// --rule, --ignore and --ignore-target, of one value each time; --config and --no-config.
void AddRuleOptions(CLI::App& command, FindingOptions& options);
// The same, and --all, --color, --quiet and --verbose.
void AddFindingOptions(CLI::App& command, FindingOptions& options);

// Reads the configuration that is wanted: the one that was named, else `found`, a native file or
// empty. What the command line says stays. Nothing when there is none; Failure as of ReadConfig().
std::optional<Config> Configure(FindingOptions& options, const std::string& found);

// The open site, as CollectFindings takes it. `top` is the `\` path of the home page, `urls` what
// is wrong with URLs of other sites.
FoundSite FoundSiteOf(const Session& session, const std::string& top,
                      std::vector<UrlFinding> urls = {});
// How files of that native folder are named from the working folder.
std::string PrefixOf(const std::string& folder);
// Finds what is wrong in the open site and how its files are named from the working folder.
// Throws Failure(kDatabase) when a table cannot be read.
void FindAll(Session& session, const std::string& top, const FindingOptions& options,
             FindingReport& report, std::vector<UrlFinding> urls = {});

// Says it on stderr where --verbose asks for it.
void Tell(const FindingOptions& options, std::string_view what);
// How long ago that was; what finding took.
double SecondsSince(std::chrono::steady_clock::time_point begin);
// How text looks on stdout.
TextStyle StyleOf(const FindingOptions& options);
// Prints the report on stdout.
void PrintFindings(const FindingReport& report, const FindingOptions& options);

}  // namespace zvrsit::cli
