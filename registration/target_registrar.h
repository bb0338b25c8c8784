// Enters in the tables what pages and style sheets refer to: one road for both.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "links/link_rules.h"
#include "util/url_id.h"

namespace zvrsit {

class SiteMgrBase;
class SitePathDB;
class SiteUrlDB;

// What became of a reference.
enum class Outcome {
  kDone,
  kSkipped,  // it is left out
  kFailed,   // by the classic rules, the rest of its page is lost
};

class TargetRegistrar {
 public:
  enum class From { kPage, kSheet };

  // The handles stay the caller's. Without a manager nothing may be entered.
  TargetRegistrar(SiteMgrBase* manager, SitePathDB* paths, SiteUrlDB* urls);

  const RuleFlags& rules() const { return rules_; }

  // Both set `place` where they are done. Files count as the site's below `siteFolder`.
  Outcome AddFile(const std::string& path, const std::string& siteFolder, From from, UrlID& place);
  Outcome AddUrl(const std::string& url, UrlID& place);

  // Whether what a text of the page says is known only once the server has run the page's code.
  bool IsHidden(std::string_view text) const;
  // The place in the page's file for one in its text; -1 when the page was converted to be read.
  std::int32_t OffsetInFile(std::int64_t offsetInText) const;

 private:
  SiteMgrBase* manager_;
  SitePathDB* paths_;
  SiteUrlDB* urls_;
  RuleFlags rules_;  // of the manager
};

}  // namespace zvrsit
