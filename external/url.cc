#include "external/url.h"

#include <fmt/core.h>
#include <locale.h>
#include "external/curl_library.h"

#include <algorithm>
#include <array>
#include <memory>

#include "util/ascii.h"

namespace zvrsit {
namespace {

struct UrlFreer {
  void operator()(CURLU* url) const { Curl().url_cleanup(url); }
};
using UrlHandle = std::unique_ptr<CURLU, UrlFreer>;

std::string PartOf(CURLU* url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  if (Curl().url_get(url, part, &text, flags) != CURLUE_OK) return "";
  std::string copy(text);
  Curl().free(text);
  return copy;
}

// While it lives, libcurl takes names for UTF-8 in this thread.
class NamesInUtf8 {
 public:
  NamesInUtf8() : own_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (own_ != nullptr) before_ = uselocale(own_);
  }
  ~NamesInUtf8() {
    if (own_ == nullptr) return;
    uselocale(before_);
    freelocale(own_);
  }
  NamesInUtf8(const NamesInUtf8&) = delete;
  NamesInUtf8& operator=(const NamesInUtf8&) = delete;

 private:
  locale_t own_;
  locale_t before_ = nullptr;
};

// The host as name servers know it, or as it stands where none can.
std::string HostOf(CURLU* url) {
  std::string host = PartOf(url, CURLUPART_HOST);
  const bool isPlain = std::ranges::all_of(host, [](unsigned char c) { return c < 0x80; });
  if (isPlain) return host;
  const NamesInUtf8 names;
  const std::string ascii = PartOf(url, CURLUPART_HOST, CURLU_PUNYCODE);
  return ascii.empty() ? host : ascii;
}

std::string LowerCase(std::string text) {
  LowerAsciiLetters(text);
  return text;
}

// What a browser takes for the URL: the fragment is cut off, and put into `fragment`.
std::string AsBrowsersRead(std::string_view text, std::string& fragment) {
  while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  std::string url;
  for (const char c : text) {
    if (c != '\t' && c != '\n' && c != '\r') url += c;
  }
  const std::size_t hash = url.find('#');
  if (hash != url.npos) {
    fragment = url.substr(hash + 1);
    url.resize(hash);
  }
  const std::size_t query = std::min(url.find('?'), url.size());
  std::replace(url.begin(), url.begin() + static_cast<std::ptrdiff_t>(query), '\\', '/');
  return url;
}

// The scheme in lower case; empty for a reference without one.
std::string SchemeOf(const std::string& url) {
  const std::size_t end = url.find_first_of(":/?");
  if (end == url.npos || url[end] != ':' || end == 0) return "";
  return LowerCase(url.substr(0, end));
}

// A path and query, with what a URL cannot hold percent-encoded.
std::string PercentEncoded(std::string_view text) {
  constexpr std::string_view kEncoded = " \"<>`{}";
  std::string encoded;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte >= 0x7F || kEncoded.find(c) != kEncoded.npos) {
      encoded += fmt::format("%{:02X}", byte);
    } else {
      encoded += c;
    }
  }
  return encoded;
}

// Sets `url` to what `read` means; false when that is no http or https URL.
bool SetUrl(const std::string& read, const AskableUrl* base, CURLU* url) {
  std::string scheme = SchemeOf(read);
  std::string whole = read;
  if (scheme.empty() && read.starts_with("//")) {
    scheme = base == nullptr || base->isSecure() ? "https" : "http";
    whole = scheme + ":" + read;
  }
  if (!scheme.empty()) {
    if (scheme != "http" && scheme != "https") return false;
    // Any number of slashes is taken for two.
    const std::size_t rest = whole.find_first_not_of('/', scheme.size() + 1);
    if (rest == whole.npos) return false;
    whole = scheme + "://" + whole.substr(rest);
  } else if (base == nullptr ||
             Curl().url_set(url, CURLUPART_URL, base->url.c_str(), 0) != CURLUE_OK) {
    return false;
  }
  const std::size_t path =
      scheme.empty() ? 0 : std::min(whole.find_first_of("/?", scheme.size() + 3), whole.size());
  whole.replace(path, whole.npos, PercentEncoded(whole.substr(path)));
  return whole.empty() ||
         Curl().url_set(url, CURLUPART_URL, whole.c_str(), CURLU_URLENCODE) == CURLUE_OK;
}

}  // namespace

std::optional<AskableUrl> ParseUrl(std::string_view text, const AskableUrl* base) {
  AskableUrl parsed;
  const UrlHandle url(Curl().url());
  if (!SetUrl(AsBrowsersRead(text, parsed.fragment), base, url.get())) return std::nullopt;
  parsed.user = PartOf(url.get(), CURLUPART_USER, CURLU_URLDECODE);
  parsed.password = PartOf(url.get(), CURLUPART_PASSWORD, CURLU_URLDECODE);
  parsed.host = LowerCase(HostOf(url.get()));
  for (const CURLUPart part : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_OPTIONS}) {
    Curl().url_set(url.get(), part, nullptr, 0);
  }
  Curl().url_set(url.get(), CURLUPART_HOST, parsed.host.c_str(), 0);
  parsed.url = PartOf(url.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT);
  parsed.origin = LowerCase(PartOf(url.get(), CURLUPART_SCHEME)) + "://" + parsed.host + ":" +
                  PartOf(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
  const std::string query = PartOf(url.get(), CURLUPART_QUERY);
  parsed.path = PartOf(url.get(), CURLUPART_PATH) + (query.empty() ? "" : "?" + query);
  return parsed.host.empty() || parsed.url.empty() ? std::nullopt : std::optional(parsed);
}

bool LooksLikeLogin(const AskableUrl& url) {
  constexpr std::array<std::string_view, 6> kWords{"login",  "log-in",  "log_in",
                                                   "signin", "sign-in", "sign_in"};
  constexpr std::array<std::string_view, 6> kSegments{"/auth/",  "/oauth/", "/oauth2/",
                                                      "/saml2/", "/saml/",  "/sso/"};
  constexpr std::array<std::string_view, 4> kHosts{"login.", "accounts.", "auth.", "sso."};
  const std::string path = LowerCase(url.path.substr(0, url.path.find('?'))) + "/";
  const auto isLetter = [&path](std::size_t i) { return path[i] >= 'a' && path[i] <= 'z'; };
  const auto isIn = [&path](std::string_view word) { return path.find(word) != path.npos; };
  // Not amid letters, as in "cataloging". Paths begin and end with a slash.
  const auto isWord = [&](std::string_view word) {
    for (std::size_t at = 0; (at = path.find(word, at + 1)) != path.npos;) {
      if (!isLetter(at - 1) || !isLetter(at + word.size())) return true;
    }
    return false;
  };
  const auto beginsHost = [&url](std::string_view label) { return url.host.starts_with(label); };
  return std::ranges::any_of(kWords, isWord) || std::ranges::any_of(kSegments, isIn) ||
         std::ranges::any_of(kHosts, beginsHost);
}

}  // namespace zvrsit
