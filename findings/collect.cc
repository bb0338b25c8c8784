#include "findings/collect.h"

#include <algorithm>

#include "findings/site_findings.h"
#include "manager/site_mgr.h"
#include "platform/native_path.h"

namespace zvrsit {

int CollectFindings(SiteMgr& manager, const FoundSite& site, const Severities& severities,
                    FindingReport& report) {
  if (!platform::ToNativePath(site.folder, report.folder)) return -1;
  manager.CountSite(report.totals);
  SiteFindings findings(manager, site, severities);
  if (!findings.Collect()) return -1;
  report.findings = findings.List();
  return 0;
}

std::size_t FindingReport::Count(Severity severity) const {
  return static_cast<std::size_t>(std::ranges::count(findings, severity, &Finding::severity));
}

std::size_t FindingReport::CountPlaces() const {
  std::size_t places = 0;
  for (const Finding& finding : findings) places += finding.places.size();
  return places;
}

}  // namespace zvrsit
