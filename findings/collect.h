// Finds what is wrong with a site that is open.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "findings/finding.h"
#include "findings/rules.h"
#include "util/url_id.h"

namespace zvrsit {

class SiteMgr;

// What is wrong with the URL of another site, as asking it has shown.
struct UrlFinding {
  UrlID url;
  Rule rule = Rule::kExternalBroken;
  std::string target;  // the URL as it is shown; links to several URLs may share it
  std::string message;
  std::string suggestion;  // may be empty
};

struct FoundSite {
  // `\` paths.
  std::string folder;  // ends in `\`
  std::string top;     // may be empty
  // What there is on disk under a native path.
  std::function<std::filesystem::file_type(const std::string& native)> typeOf;
  std::vector<UrlFinding> urls;
};

// Fills `report`, except its time and prefix. `site` names the site folder and its home page;
// without a home page, no page is an orphan. It asks the tables. It reads pages that fragments lead
// to, unless their IDs are kept (SiteMgr::KeepPageIds); pages that have findings, for the places;
// and for kDuplicateId all pages. Rules that are off cost nothing. 0, or -1 when a table cannot be
// read.
[[nodiscard]] int CollectFindings(SiteMgr& manager, const FoundSite& site,
                                  const Severities& severities, FindingReport& report);

}  // namespace zvrsit
