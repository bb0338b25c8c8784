#include "cli/url_commands.h"

#include <algorithm>
#include <map>

#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/freshness.h"
#include "cli/output.h"
#include "cli/site_profile.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"

namespace zvrsit::cli {
namespace {

// A URL of the site that is not to be asked.
UrlResult Unasked(const std::string& url) {
  UrlResult result;
  result.url = WithoutCredentials(url);
  const std::string fault = FaultOfUrl(url);
  result.state = fault.empty() ? UrlState::kUnasked : UrlState::kBroken;
  result.words = !fault.empty()  ? "is no URL: " + fault
                 : IsWebUrl(url) ? "was not asked, as only forms lead to it or it is ignored"
                                 : "was not asked, as it is neither http nor https";
  return result;
}

// The results of all URLs, by record number.
std::vector<UrlResult> ResultsOfAll(Session& session, const std::vector<LinkedUrl>& linked,
                                    const AskedUrls& asked) {
  std::map<int, std::size_t> places;  // in `linked`, by record number
  for (std::size_t i = 0; i < linked.size(); ++i) places[linked[i].id.id] = i;
  std::vector<UrlResult> results;
  const OwnedCells urls(session.manager().EnumUrl());
  for (std::size_t i = 0; urls != nullptr && i < urls->size(); ++i) {
    const auto place = places.find((*urls)[i].GetID().id);
    results.push_back(place == places.end() ? Unasked((*urls)[i].GetName())
                                            : asked.results[place->second]);
  }
  return results;
}

Json ResultAsJson(const UrlResult& result) {
  return {{"url", JsonText(result.url)},
          {"state", UrlStateName(result.state)},
          {"status", result.status > 0 ? Json(result.status) : Json()},
          {"message", JsonText(result.words)},
          {"movedTo", result.movedTo.empty() ? Json() : Json(JsonText(result.movedTo))},
          {"time", result.time > 0 ? Json(result.time) : Json()}};
}

int PrintResults(const std::vector<UrlResult>& results, bool json) {
  JsonRows rows;
  bool isClean = true;
  for (const UrlResult& result : results) {
    const std::string_view state = UrlStateName(result.state);
    isClean = isClean && state != UrlStateName(UrlState::kBroken);
    if (json) {
      rows.Add(ResultAsJson(result));
    } else {
      Print("{:<8}{}{}{}\n", state, LineText(result.url), result.words.empty() ? "" : " ",
            LineText(result.words));
    }
  }
  if (json) rows.End();
  return isClean ? kClean : kFindings;
}

}  // namespace

void AddUrlCheck(CLI::App& urls, FindingOptions& wanted) {
  AddExternalOptions(urls, "--check", wanted.external);
  urls.add_option("--ignore-target", wanted.ignores.targets, "asks no URLs like this")
      ->option_text("GLOB")
      ->allow_extra_args(false);
}

bool IsUrlCheck(const FindingOptions& wanted) {
  return WishOf(wanted.external).isWanted;
}

int RunUrlCheck(const Options& options, const std::string& site, FindingOptions wanted) {
  NeedExternalChecks();
  Session session(options, Database::kAsk);
  session.OpenToAsk(site);
  Configure(wanted, ConfigIn(session.names().nativeFolder()));
  const SiteProfile profile = ReadProfile(session, site);
  const std::string keptFile = KeptFileOfSite(session, site);
  const std::vector<LinkedUrl> urls = ListLinkedUrls(session.manager(), session.names().folder(),
                                                     wanted.ignores, [](auto&) { return true; });
  session.LetGo();
  TellChanges(session, CompareSite(session), site);
  const AskedUrls asked = AskWithProgress(
      urls, {WishOf(wanted.external), profile.folders[kSlotLiveUrl], keptFile, wanted.quiet});
  return PrintResults(ResultsOfAll(session, urls, asked), options.json);
}

}  // namespace zvrsit::cli
