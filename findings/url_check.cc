#include "findings/url_check.h"

#include <algorithm>
#include <array>

#include "util/ascii.h"

namespace zvrsit {
namespace {

// What no host may hold: the forbidden domain code points of the standard that are printable.
constexpr std::string_view kForbidden = " #%/:<>?@[\\]^|";

bool IsHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::string LowerScheme(std::string_view url) {
  const auto colon = url.find(':');
  std::string scheme(url.substr(0, colon == url.npos ? 0 : colon));
  std::ranges::transform(scheme, scheme.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
  });
  return scheme;
}

std::string FaultOfPort(std::string_view port) {
  if (!std::ranges::all_of(port, [](char c) { return c >= '0' && c <= '9'; })) {
    return "its port is no number";
  }
  port.remove_prefix(std::min(port.find_first_not_of('0'), port.size()));
  const bool fits = port.size() < 5 || (port.size() == 5 && port <= "65535");
  return fits ? "" : "its port is above 65535";
}

std::string FaultOfHost(std::string_view host) {
  if (host.empty()) return "it has no host";
  if (host.front() == '[') {
    const auto isOfAddress = [](char c) { return IsHex(c) || c == ':' || c == '.'; };
    const bool isAddress = host.size() > 3 && host.back() == ']' &&
                           std::ranges::all_of(host.substr(1, host.size() - 2), isOfAddress);
    return isAddress ? "" : "its host is no address in brackets";
  }
  for (std::size_t i = 0; i < host.size(); ++i) {
    const auto byte = static_cast<unsigned char>(host[i]);
    if (host[i] == '%' && i + 2 < host.size() && IsHex(host[i + 1]) && IsHex(host[i + 2])) continue;
    if (byte < ' ' || byte == 0x7F || kForbidden.find(host[i]) != kForbidden.npos) {
      return "its host holds a character that no host has";
    }
  }
  return "";
}

// The parts of a URL of one of these schemes, as places in its text: from `host` to `end` it names
// a server, behind a user and a password where `host` is not `begin`.
struct Authority {
  bool isThere = false;
  std::size_t begin = 0;
  std::size_t host = 0;
  std::size_t end = 0;
};

Authority AuthorityOf(std::string_view url) {
  constexpr std::array<std::string_view, 5> kSchemes{"http", "https", "ws", "wss", "ftp"};
  const std::string scheme = LowerScheme(url);
  const bool hasScheme = std::ranges::find(kSchemes, scheme) != kSchemes.end();
  if (!hasScheme && !url.starts_with("//")) return {};
  // Any number of slashes, of either kind, is taken for two.
  const std::size_t begin =
      std::min(url.find_first_not_of("/\\", hasScheme ? scheme.size() + 1 : 0), url.size());
  const std::size_t end = std::min(url.find_first_of("/\\?#", begin), url.size());
  const std::size_t at = url.substr(begin, end - begin).rfind('@');
  return {true, begin, at == url.npos ? begin : begin + at + 1, end};
}

}  // namespace

std::string FaultOfUrl(std::string_view url) {
  const Authority authority = AuthorityOf(url);
  if (!authority.isThere) return "";
  const std::string_view place = url.substr(authority.host, authority.end - authority.host);
  const auto bracket = place.rfind(']');
  const auto colon = place.find(':', bracket == place.npos ? 0 : bracket);
  std::string fault = FaultOfHost(place.substr(0, colon));
  if (!fault.empty() || colon == place.npos) return fault;
  return FaultOfPort(place.substr(colon + 1));
}

bool IsWebUrl(std::string_view url) {
  const std::string scheme = LowerScheme(url);
  const bool isWeb = scheme == "http" || scheme == "https" || url.starts_with("//");
  return isWeb && FaultOfUrl(url).empty();
}

std::string WithoutCredentials(std::string_view url) {
  if (url.find('@') == url.npos) return std::string(url);
  // As browsers read it: without white space in front, tabs and line ends.
  std::string read(url.substr(std::min(url.find_first_not_of(" \t\r\n\f"), url.size())));
  std::erase_if(read, [](char c) { return c == '\t' || c == '\r' || c == '\n'; });
  // What is left of "http:@//user:password@host" has a password once more.
  bool hasSome = false;
  for (Authority all = AuthorityOf(read); all.host != all.begin; all = AuthorityOf(read)) {
    read.erase(all.begin, all.host - all.begin);
    hasSome = true;
  }
  return hasSome ? read : std::string(url);
}

std::string HostOfUrl(std::string_view url) {
  const std::size_t slashes = url.find("//");
  if (slashes == url.npos || slashes > url.find_first_of("/?#")) return "";
  const std::size_t begin = slashes + 2;
  std::string host(url.substr(begin, url.find_first_of("/?#\\", begin) - begin));
  host.erase(0, host.rfind('@') + 1);
  LowerAsciiLetters(host);
  return host;
}

}  // namespace zvrsit
