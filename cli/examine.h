// Looking through a folder of pages, or a site of the database, with nothing to set up.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/finding_options.h"
#include "cli/selection.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {

struct GivenCheck {
  GivenSite site;
  GivenPaths paths;
  FindingOptions findings;
};

// A site that is open, and whose findings are known.
struct ExaminedSite {
  Session& session;
  std::string name;     // empty for a folder that is no site of the database
  std::string top;      // the `\` path of its home page; may be empty
  std::string baseUrl;  // may be empty
};
using WhileOpen = std::function<void(const ExaminedSite& site, const FindingReport& report)>;

// Finds what is wrong with the paths that are given. In the folder of a site the database is
// brought up to date and asked; elsewhere, and where it cannot be, a database is made that goes
// again. Fills `report`, and in `given` what the configuration says; gives the exit code of the
// rebuild. `whileOpen` is called once, before the report is narrowed to the paths. Failures as of
// the parts.
int Examine(const Options& options, GivenCheck& given, FindingReport& report,
            const WhileOpen& whileOpen);

// The parts of it that other commands need:
//
// Configure, for a command that has the options of external checks. Failure(kUsage) too when these
// cannot be.
std::optional<Config> ConfigureCheck(FindingOptions& options, const std::string& found);
// If it is wanted, asks the URLs that links of these files of the open site lead to, and says what
// is wrong with them. `isWanted` takes files as findings name them.
std::vector<UrlFinding> AskOthers(const Options& options, Session& session,
                                  const FindingOptions& wanted, const std::string& baseUrl,
                                  const std::function<bool(const std::string&)>& isWanted);

}  // namespace zvrsit::cli
