#include "cli/gathered_view.h"

#include <ctime>
#include <filesystem>
#include <system_error>
#include <unordered_map>

#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/native_name.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

bool IsOfOthers(Rule rule) {
  return rule == Rule::kExternalBroken || rule == Rule::kExternalMoved ||
         rule == Rule::kExternalUnsure;
}

std::vector<std::string> RulesInForce(const FindingOptions& options) {
  const bool asksOthers = WishOf(options.external).isWanted;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kRuleCount; ++i) {
    const Rule rule = static_cast<Rule>(i);
    if (!options.severities.IsOn(rule) || (IsOfOthers(rule) && !asksOthers)) continue;
    names.emplace_back(TraitsOf(rule).name);
  }
  return names;
}

// What is kept of asking the URLs of the site, by record number.
std::unordered_map<int, ContentAnswer> KeptOf(const ExaminedSite& site,
                                              const std::string& keptFile) {
  std::unordered_map<int, ContentAnswer> kept;
  std::error_code error;
  if (!fs::exists(PathOf(keptFile), error)) return kept;
  std::vector<LinkedUrl> urls;
  const OwnedCells cells(site.session.manager().EnumUrl());
  for (std::size_t i = 0; cells != nullptr && i < cells->size(); ++i) {
    const SiteRecCell& cell = (*cells)[i];
    if (IsWebUrl(cell.GetName())) urls.push_back({cell.GetID(), cell.GetName()});
  }
  const std::vector<UrlResult> results = KeptResults(urls, keptFile);
  for (std::size_t i = 0; i < urls.size(); ++i) {
    const UrlResult& result = results[i];
    if (result.state == UrlState::kUnasked) continue;
    kept[urls[i].id.id] = {std::string(UrlStateName(result.state)),
                           !result.words.empty() ? result.words : std::to_string(result.status)};
  }
  return kept;
}

// The file that they are kept in; empty for none.
std::string KeptFileOf(const Options& options, const FindingOptions& findings,
                       const ExaminedSite& site) {
  if (!site.name.empty()) return KeptFileOfSite(site.session, site.name);
  const bool asksOthers = WishOf(findings.external).isWanted;
  return asksOthers ? KeptFileOfFolder(options, site.session.names().nativeFolder()) : "";
}

}  // namespace

std::string UtcNow() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::gmtime(&now))};
}

void Gather(const Options& options, const FindingOptions& findings, const ExaminedSite& site,
            const FindingReport& report, SiteView& view) {
  Session& session = site.session;
  SiteMgr& manager = session.manager();
  const SiteNames& names = session.names();
  const std::string& folder = names.nativeFolder();
  const ExportedSite exported{site.name, folder,
                              [&names](const std::string& path) { return names.Shown(path); }};
  const ContentWanted content{exported, site.top,
                              KeptOf(site, KeptFileOf(options, findings, site))};
  if (ReadContent(manager, content, view.content) != 0) {
    throw Failure(kDatabase, "the tables of the site cannot be read");
  }
  view.site = {site.name,      folder,
               site.baseUrl,   manager.GetLinkRules() == LinkRules::Classic,
               UtcNow() + "Z", RulesInForce(findings)};
  view.mending = {"zvrsit", site.name, folder, FindUnlinked(manager, report, view.content)};
  if (!options.database.empty()) {
    const std::string word = ShellWord(NativePath(AbsolutePath(options.database)));
    if (word.empty()) view.mending.site.clear();
    view.mending.program += " --db " + word;
  }
}

}  // namespace zvrsit::cli
