// `urls NAME --check`: what the external URLs of a site answer.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "cli/finding_options.h"

namespace zvrsit::cli {

// --check and the options that go with it, for the command `urls`.
void AddUrlCheck(CLI::App& urls, FindingOptions& wanted);
// Whether --check is given.
bool IsUrlCheck(const FindingOptions& wanted);

// A line or an object for each URL of the site, in the order of `urls`. kFindings when one is
// broken.
int RunUrlCheck(const Options& options, const std::string& site, FindingOptions wanted);

}  // namespace zvrsit::cli
