// Asking the servers of other sites, for `check --external` and `urls --check`.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/external_options.h"
#include "cli/session.h"
#include "external/url_asker.h"
#include "findings/collect.h"
#include "findings/external_urls.h"

namespace zvrsit::cli {

// Throws Failure(kUsage) where the program was built without external checks.
void NeedExternalChecks();

struct Asking {
  ExternalWish wish;
  std::string baseUrl;   // of the site; empty for none
  std::string keptFile;  // native; empty: nothing is kept
  bool isQuiet = false;
};
// Asks them, with a bar on a terminal, and says on stderr what could not be done. An interrupt ends
// it: Failure; what was answered by then is kept.
AskedUrls AskWithProgress(const std::vector<LinkedUrl>& urls, Asking asking);

// What is kept of these URLs; nobody is asked.
std::vector<UrlResult> KeptResults(const std::vector<LinkedUrl>& urls, const std::string& keptFile);

// What is wrong with these URLs; results[i] are those of urls[i].
std::vector<UrlFinding> FindingsOf(const std::vector<LinkedUrl>& urls,
                                   const std::vector<UrlResult>& results);

// The file that keeps the answers for a site of the database.
std::string KeptFileOfSite(const Session& session, const std::string& name);
// The one for a native folder: that of the site with this folder, else the one that all folders
// which are no sites share. Makes the folder of the database. Empty when there can be none.
std::string KeptFileOfFolder(const Options& options, const std::string& folder);

}  // namespace zvrsit::cli
