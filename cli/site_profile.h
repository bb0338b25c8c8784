// The profile of a site as the user gives it and as it is shown. Used by `add`, `check`, `sites`
// and `site`.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

#include "cli/given_site.h"
#include "cli/output.h"
#include "cli/session.h"
#include "links/page_types.h"

namespace zvrsit::cli {

// An option whose value stays unset unless it is given.
CLI::Option* AddGiven(CLI::App& command, const std::string& name, std::optional<std::string>& value,
                      const std::string& help);
// --top.
void AddTopOption(CLI::App& command, GivenSite& site);
// --top, --default-url, --fallback-extensions, --doc-root, --base-url, --page-types and --rules.
void AddSiteOptions(CLI::App& command, GivenSite& site);

// The profile of a new site, not stored yet. `folder` must be given. Without `rules` they are the
// web rules; without `top` the home page is searched for. Throws Failure(kFileSystem) when a folder
// or the top file is not there.
SiteProfile NewProfile(Session& session, const GivenSite& site);
// Throws Failure(kUsage) when the database has a file of its own with this name, or a site other
// than `except` has it. Letter case is ignored, because on some systems both would have the same
// folder.
void NeedNewName(Session& session, const std::string& name, const std::string& except);
// Whether a profile has the values that are given; the folder is not looked at. Throws as
// NewProfile.
bool HasGiven(Session& session, const GivenSite& site, const SiteProfile& profile);
// Stores the profile of a new site. Throws as NewProfile, and Failure(kUsage) when the name is not
// allowed or taken.
void AddSite(Session& session, const std::string& name, const GivenSite& site);
// Changes the fields that are given. When the folder changes, paths below it change too, and the
// tables begin empty. When something changes on which all links depend, the site must be rebuilt.
// After a new default document, the affected pages are read again; gives their names, as they are
// shown. Failures as above.
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
