#include "cli/legacy_totals.h"

#include "cli/output.h"

namespace zvrsit::cli {

LegacyTotals CountLegacy(LegacySession& session) {
  SitMgr& manager = session.manager();
  LegacyTotals totals;
  const int files = manager.UrlNum(kKindPath);
  for (int i = 0; i < files; ++i) {
    const int status = manager.GetUrlStatus({kKindPath, i});
    if (manager.GetLastError() == kSitOk && (status & kStatusBroken) == 0) ++totals.files;
  }
  manager.EnumUrl(1);
  while (std::string* url = manager.EnumUrl(0)) {
    SitMgr::DeleteString(url);
    ++totals.urls;
  }
  session.ForEachLink("", "", [&totals](const LegacyLink& link) {
    ++totals.links;
    if (!link.exists) ++totals.broken;
  });
  return totals;
}

Json TotalsRow(const LegacyTotals& totals) {
  return {{"files", totals.files},
          {"links", totals.links},
          {"broken", totals.broken},
          {"urls", totals.urls}};
}

std::string TotalsLine(const LegacyTotals& totals) {
  return Counted(totals.files, "file", "files") + ", " + Counted(totals.links, "link", "links") +
         ", " + std::to_string(totals.broken) + " broken, " +
         Counted(totals.urls, "external URL", "external URLs");
}

}  // namespace zvrsit::cli
