// The configuration of a site: the file zvrsit.toml in its folder (docs/configuration.md).
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/external_options.h"
#include "cli/given_site.h"
#include "findings/ignores.h"
#include "findings/rules.h"

namespace zvrsit::cli {

inline constexpr const char* kConfigName = "zvrsit.toml";

struct Config {
  GivenSite site;  // names in it are absolute; the folder is always set
  std::vector<std::pair<Rule, Severity>> rules;
  Ignores ignores;
  GivenExternal external;  // names of files in it are absolute
};

// The configuration in a native folder; empty for none.
std::string ConfigIn(const std::string& folder);
// The configuration nearest to the native folder `from`, looked for upwards; empty for none.
std::string FindConfig(const std::string& from);
// Throws Failure: kFileSystem when the file cannot be read, kUsage with the place and, for an
// unknown key, the likeliest right one, when it is not as it should be.
Config ReadConfig(const std::string& file);
// Takes from the configuration what is not given, except the folder.
void FillFrom(const GivenSite& config, GivenSite& given);

}  // namespace zvrsit::cli
