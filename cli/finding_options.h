// What `check` and `broken` have in common: which rules count, and how findings are shown.
#pragma once

#include <CLI/CLI.hpp>

#include "cli/session.h"
#include "findings/finding.h"
#include "findings/output.h"

namespace zvrsit::cli {

struct FindingOptions {
  Severities severities;
  FindingFormat format = FindingFormat::kText;
  std::string color = "auto";
  bool all = false;
};

// --rule, --all and --color.
void AddFindingOptions(CLI::App& command, FindingOptions& options);

// Finds what is wrong in the open site and how its files are named from the working folder. `top`
// is the `\` path of the home page. Throws Failure(kDatabase) when a table cannot be read.
void FindAll(Session& session, const std::string& top, const FindingOptions& options,
             FindingReport& report);

// Prints the report on stdout.
void PrintFindings(const FindingReport& report, const FindingOptions& options);

}  // namespace zvrsit::cli
