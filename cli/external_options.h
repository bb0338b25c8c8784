// The options of external checks, on the command line and in the configuration.
#pragma once

#include <CLI/CLI.hpp>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "external/settings.h"

namespace zvrsit::cli {

// What is given, as texts, by the keys of the configuration.
using GivenExternal = std::map<std::string, std::string>;

struct ExternalWish {
  bool isWanted = false;
  ExternalSettings settings;
};

// Adds the options; `wish` is the one that turns the check on, such as "--external". What --help
// leaves out stands in the manual.
void AddExternalOptions(CLI::App& command, const std::string& wish, GivenExternal& given);

// The keys of the configuration's table.
std::vector<std::string> ExternalKeys();
// Whether the value of a key names a file.
bool IsExternalPath(const std::string& key);
// Throws Failure(kUsage) when one of `given`, which the command line gave, is of no use: nothing is
// to be asked, and that by no choice of the command line. `wish` as above.
void NeedUse(const GivenExternal& given, bool isWanted, const std::string& wish);
// Throws Failure(kUsage) when a configuration that was found, and not named, wants what the user
// alone may want: sites come from elsewhere too, with their configurations.
void NeedHarmless(const GivenExternal& found, const std::string& file);
// What is wrong with a value of a key; empty for nothing.
std::string FaultOfExternal(const std::string& key, const std::string& value);
// The settings; all values are good.
ExternalWish WishOf(const GivenExternal& given);

}  // namespace zvrsit::cli
