#include "external/proxy.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "util/ascii.h"

namespace zvrsit {
namespace {

std::string FromEnvironment(const char* lower, const char* upper) {
  for (const char* const name : {lower, upper}) {
    const char* const value = name != nullptr ? std::getenv(name) : nullptr;
    if (value != nullptr && *value != '\0') return value;
  }
  return "";
}

// Whether a host is that of the list entry, or lies below it.
bool IsCovered(const std::string& host, std::string entry) {
  if (entry == "*") return true;
  if (entry.starts_with('.')) entry.erase(0, 1);
  if (entry.empty()) return false;
  LowerAsciiLetters(entry);
  return host == entry || host == "[" + entry + "]" || host.ends_with("." + entry);
}

bool IsAskedDirectly(const std::string& host) {
  const std::string list = FromEnvironment("no_proxy", "NO_PROXY");
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find_first_of(", ", at), list.size());
    if (IsCovered(host, list.substr(at, end - at))) return true;
    at = end + 1;
  }
  return false;
}

}  // namespace

std::string ProxyFor(const AskableUrl& url) {
  // HTTP_PROXY could be set by the header of a request, where this runs as a CGI program.
  std::string proxy = url.isSecure() ? FromEnvironment("https_proxy", "HTTPS_PROXY")
                                     : FromEnvironment("http_proxy", nullptr);
  if (proxy.empty()) proxy = FromEnvironment("all_proxy", "ALL_PROXY");
  return proxy.empty() || IsAskedDirectly(url.host) ? "" : proxy;
}

}  // namespace zvrsit
