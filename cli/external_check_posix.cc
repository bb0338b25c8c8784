#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/interrupts.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "external/curl_library.h"
#include "external/own_network.h"
#include "external/url.h"

namespace zvrsit::cli {
namespace {

void TellWhatWasNotAsked(const AskedUrls& asked) {
  std::map<std::string, long> counts;
  for (const UrlResult& result : asked.results) {
    if (result.state == UrlState::kUnasked) ++counts[result.words];
  }
  for (const auto& [words, count] : counts) {
    Warn(Counted(count, "external URL", "external URLs") + ": each " + words);
  }
}

std::vector<std::string> TextsOf(const std::vector<LinkedUrl>& urls) {
  std::vector<std::string> texts(urls.size());
  std::ranges::transform(urls, texts.begin(), &LinkedUrl::url);
  return texts;
}

// libcurl would do without them.
void NeedFiles(const ExternalSettings& settings) {
  for (const std::string& name : {settings.netrc, settings.caFile}) {
    const std::ifstream file(PathOf(name));
    if (!name.empty() && !file) throw Failure(kFileSystem, name + ": this file cannot be read");
  }
}

}  // namespace

void NeedExternalChecks() {
  if (const char* const fault = WhyNoCurl()) {
    throw Failure(kUsage, std::string("no servers can be asked without libcurl 4: ") + fault);
  }
}

std::vector<UrlResult> KeptResults(const std::vector<LinkedUrl>& urls,
                                   const std::string& keptFile) {
  ExternalSettings settings;
  settings.offline = true;
  std::error_code error;
  return AskUrls(TextsOf(urls), settings,
                 std::filesystem::exists(PathOf(keptFile), error) ? keptFile : "",
                 [](std::size_t, std::size_t, std::string_view) {})
      .results;
}

AskedUrls AskWithProgress(const std::vector<LinkedUrl>& urls, Asking asking) {
  ExternalSettings& settings = asking.wish.settings;
  NeedFiles(settings);
  const std::optional<AskableUrl> live = ParseUrl(asking.baseUrl);
  if (live && !settings.offline && LiesInOwnNetwork(live->host)) settings.privateNetwork = true;

  const Interrupts interrupts;
  BarLine bar(!asking.isQuiet);
  AskedUrls asked = AskUrls(TextsOf(urls), settings, asking.keptFile,
                            [&](std::size_t done, std::size_t all, std::string_view url) {
                              Interrupts::Check();
                              bar.Draw(static_cast<int>(done * 100 / all),
                                       fmt::format("{} of {} URLs", done, all), std::string(url));
                            });
  bar.Clear();
  if (!asked.fault.empty()) Warn(asking.keptFile + ": answers cannot be kept: " + asked.fault);
  if (asked.asked > 1 && asked.unreached == asked.asked) {
    Warn("no server could be reached: is this machine connected? --offline takes what is kept");
  }
  if (!asking.isQuiet) TellWhatWasNotAsked(asked);
  return asked;
}

}  // namespace zvrsit::cli
