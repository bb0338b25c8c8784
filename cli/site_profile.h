// The profile of a site as the user gives it and as it is shown; shared by `add`, `check`, `sites`
// and `site`.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "cli/output.h"
#include "cli/session.h"
#include "links/page_types.h"

namespace zvrsit::cli {

// What the command line says of a site; what it does not say is not set. Names are native.
struct GivenSite {
  std::optional<std::string> folder;
  std::optional<std::string> top;         // absolute, or relative to the folder
  std::optional<std::string> defaultUrl;  // empty: none
  std::optional<std::string> docRoot;     // empty: none
  std::optional<std::string> pageTypes;   // empty: the usual ones; else what PageTypes takes
  std::optional<std::string> rules;       // "web" or "classic"
  std::optional<std::string> server;      // empty: none
  std::optional<std::string> liveUrl;     // empty: none; else what LiveAddress takes
};

// An option whose value stays unset unless it is given.
CLI::Option* AddGiven(CLI::App& command, const std::string& name, std::optional<std::string>& value,
                      const std::string& help);
// --top.
void AddTopOption(CLI::App& command, GivenSite& site);
// --top, --default-url, --doc-root, --live-url, --page-types and --rules.
void AddSiteOptions(CLI::App& command, GivenSite& site);

// The profile of a new site, not yet stored: `folder` has to be given, the rules are those of the
// web unless given, and the home page is looked for. Throws Failure(kFileSystem) when a folder or
// the top file is not there.
SiteProfile NewProfile(Session& session, const GivenSite& site);
// Throws Failure(kUsage) when the database has a file of its own by this name, or a site other than
// `except`, in whatever letter case: some systems would take their folders for one.
void NeedNewName(Session& session, const std::string& name, const std::string& except);
// Stores it; throws Failure(kUsage) too, when the name is not allowed or taken.
void AddSite(Session& session, const std::string& name, const GivenSite& site);
// Changes what is given. Where the folder changes, what lay below it moves along, and the tables
// begin anew. What all links depend on makes the site one to be rebuilt; after a new default
// document the pages that it concerns are read anew, and their names given, as they are shown.
// Failures as above.
std::vector<std::string> ChangeSite(Session& session, const std::string& name,
                                    const GivenSite& site);

// Reads a profile; throws Failure(kUsage) when there is none of that name.
SiteProfile ReadProfile(Session& session, const std::string& name);
Json ProfileAsJson(const std::string& name, const SiteProfile& profile);
// The page types that a profile stands for.
PageTypes PageTypesOf(const SiteProfile& profile);
// "web" or "classic".
const char* RulesName(LinkRules rules);
// "rebuilt", "to be rebuilt" or "last rebuild failed".
const char* RebuildState(const SiteProfile& profile);

}  // namespace zvrsit::cli
