// URLs and paths of references: where they lead, what is wrong with them, and how they are shown.
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "external/url.h"
#include "findings/url_check.h"
#include "fuzz/target.h"
#include "links/fragment.h"
#include "links/target_resolver.h"
#include "links/url_text.h"

namespace zvrsit::fuzz {
namespace {

constexpr std::string_view kUrlSite = "\\srv\\site\\";

bool HasDots(std::string_view path) {
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('\\'), path.size());
    const std::string_view name = path.substr(0, end);
    if (name == "." || name == "..") return true;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

void Resolve(LinkRules rules, std::string_view liveUrl, const std::string& page,
             const std::string& base, const std::string& target) {
  TargetResolver resolver(rules);
  resolver.SetLiveUrl(liveUrl, kUrlSite);
  resolver.BeginPage(kUrlSite, page);
  if (!base.empty()) resolver.SetBase(base);
  std::string place = "none";
  const TargetKind kind = resolver.Resolve(target, place);
  if (kind != TargetKind::kLocal) return;
  if (place.empty()) std::abort();
  // A path of the web rules is one that can be compared with others.
  if (rules == LinkRules::Web && (place.front() != '\\' || HasDots(place))) std::abort();
  std::string again;
  if (resolver.Resolve(target, again) != kind || again != place) std::abort();
}

// What was taken apart is taken apart again in the same way.
void NeedAskable(const AskableUrl& url) {
  if (url.host.empty() || !url.path.starts_with('/')) std::abort();
  const std::optional<AskableUrl> again = ParseUrl(url.url);
  if (!again || again->url != url.url || again->origin != url.origin || again->path != url.path) {
    std::abort();
  }
  if (!again->user.empty() || !again->password.empty() || !again->fragment.empty()) std::abort();
  (void)LooksLikeLogin(url);
}

void Look(const std::string& target) {
  const std::string shown = WithoutCredentials(target);
  if (WithoutCredentials(shown) != shown) std::abort();
  (void)FaultOfUrl(target);
  std::string buffer;
  (void)FragmentOf(target, buffer);
  std::string decoded;
  (void)AppendPercentDecoded(target, decoded);
  if (decoded.size() > target.size()) std::abort();
}

// The first byte chooses where the site is served; then lines: a page of it, a base, a target.
void ReadUrl(std::string_view input) {
  if (input.empty()) return;
  std::string rest(input.substr(1));
  const auto line = [&rest] {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    std::string text = rest.substr(0, end);
    rest.erase(0, end + 1);
    return text;
  };
  const std::string page =
      std::string(kUrlSite) + "a\\" + std::to_string(input[0] & 0xFF) + ".html";
  const std::string base = line();
  const std::string target = line();
  constexpr std::string_view kUrls[] = {"", "http://h/", "https://h:8080/docs/"};
  for (const LinkRules rules : {LinkRules::Classic, LinkRules::Web}) {
    Resolve(rules, kUrls[(input[0] & 0xFF) % std::size(kUrls)], page, base, target);
  }
  Look(target);
  const std::optional<AskableUrl> from = ParseUrl(base);
  const std::optional<AskableUrl> to = ParseUrl(target, from ? &*from : nullptr);
  if (to) NeedAskable(*to);
}

std::vector<std::string> UrlSeeds() {
  return {"0\n../b/./c.html?q=1#top",
          "1http://h/x/\n//h/docs/../%2e%2E/a%20b.htm",
          "2sub/\n/docs/a//b\\..\\c.html",
          "1\nhttp://user:pass@[::1]:80/p?a=b#c",
          "2HTTPS://h:8080/docs/d/\n ht\ttp://h\\x ",
          "0\njavascript:void(0)",
          "0data:x\nfile:///c|/x/../y",
          "1\nhttp://0x7f.1/%zz\xC3\xA9",
          "2\nhttp://xn--caf-dma.example./a%2Fb%5Cc%00"};
}

}  // namespace

const Target kUrlTarget = {"url", &ReadUrl, &UrlSeeds};

}  // namespace zvrsit::fuzz
