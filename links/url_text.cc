#include "links/url_text.h"

#include <charconv>
#include <utility>

#include "links/live_address.h"
#include "platform/utf8.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

// The parts of an http or https URL that begins with its scheme or with "//".
struct HttpParts {
  std::string_view user;
  std::string host;       // as LiveAddress has it
  std::string_view path;  // without query and fragment
  std::string_view rest;  // query and fragment
};

std::string Decoded(std::string_view segment) {
  std::string name;
  for (std::size_t i = 0; i < segment.size(); ++i) {
    const int high = segment[i] == '%' && segment.size() - i > 2 ? HexValue(segment[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(segment[i + 2]) : -1;
    name.push_back(low < 0 ? segment[i] : static_cast<char>(high * 16 + low));
    if (low >= 0) i += 2;
  }
  return name;
}

// False for a URL of another kind or without a host.
bool SplitHttp(std::string_view url, HttpParts& parts) {
  const std::string_view scheme = SchemeOf(url);
  const bool isHttp = EqualsLower(scheme, "http");
  const bool isHttps = EqualsLower(scheme, "https");
  if (!scheme.empty() && !isHttp && !isHttps) return false;
  std::size_t start = scheme.empty() ? 0 : scheme.size() + 1;
  const std::size_t slashes = start;
  while (start < url.size() && IsSlash(url[start])) ++start;
  // After a scheme of the web a browser takes any number of slashes, and none, for two.
  if (scheme.empty() && start - slashes < 2) return false;
  const std::string_view place = WithoutQueryAndFragment(url);
  if (start >= place.size()) return false;
  const std::size_t end = FindMB(place, start, IsSlash);
  std::string_view authority = place.substr(start, end - start);
  const std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    parts.user = authority.substr(0, at + 1);
    authority.remove_prefix(at + 1);
  }
  const std::size_t colon = authority.rfind(':');
  const bool hasPort = colon != std::string_view::npos && authority.back() != ']';
  std::string_view port = hasPort ? authority.substr(colon + 1) : std::string_view();
  while (port.size() > 1 && port.starts_with('0')) port.remove_prefix(1);
  parts.host = Decoded(authority.substr(0, hasPort ? colon : authority.size()));
  LowerAsciiLetters(parts.host);
  if (parts.host.empty()) return false;
  // A URL without a scheme has that of the page, which may be either.
  const bool isDefault = port.empty() || (!isHttps && port == "80") || (!isHttp && port == "443");
  if (!isDefault) parts.host.append(":").append(port);
  parts.path = place.substr(end);
  parts.rest = url.substr(place.size());
  return true;
}

// Whether `host` has no port, or one that is a number of 1 to 65535.
bool HasSoundPort(std::string_view host) {
  const std::size_t colon = host.rfind(':');
  if (colon == std::string_view::npos || host.back() == ']') return true;
  const std::string_view port = host.substr(colon + 1);
  int number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  return error == std::errc() && end == port.data() + port.size() && number > 0 && number < 65536;
}

// Takes "." and ".." out of the path of a URL, which begins with "/".
std::string RemoveDotSegments(std::string_view path) {
  std::string out;
  std::vector<std::size_t> cuts;  // where each segment of `out` begins, at its "/"
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin + 1, IsSlash);
    const std::string_view segment = path.substr(begin + 1, end - begin - 1);
    const int dots = DotsOf(segment);
    if (dots == 2 && !cuts.empty()) {
      out.resize(cuts.back());
      cuts.pop_back();
    }
    if (dots == 0) {
      cuts.push_back(out.size());
      out.append("/").append(segment);
    } else if (end == path.size()) {
      out.append("/");
    }
    begin = end;
  }
  return out;
}

}  // namespace

std::string_view SchemeOf(std::string_view target) {
  if (target.empty() || !IsAsciiLetter(target.front())) return {};
  for (std::size_t i = 1; i < target.size(); ++i) {
    const char c = target[i];
    if (c == ':') return target.substr(0, i);
    if (!IsAsciiLetter(c) && !IsAsciiDigit(c) && c != '+' && c != '-' && c != '.') return {};
  }
  return {};
}

std::string_view WithoutQueryAndFragment(std::string_view target) {
  return target.substr(0, FindMB(target, 0, [](char c) { return c == '#' || c == '?'; }));
}

int DotsOf(std::string_view segment) {
  int dots = 0;
  while (!segment.empty()) {
    const bool encoded = segment.size() >= 3 && segment[0] == '%' && segment[1] == '2' &&
                         LowerAscii(segment[2]) == 'e';
    if (!encoded && segment.front() != '.') return 0;
    segment.remove_prefix(encoded ? 3 : 1);
    if (++dots > 2) return 0;
  }
  return dots;
}

bool AppendPercentDecoded(std::string_view part, std::string& out) {
  const bool isUtf8 = platform::CodePage() == platform::kUtf8;
  const std::size_t begin = out.size();
  std::string utf8;      // the part, where the code page is another
  std::size_t rest = 0;  // what of the part is not in it yet
  bool decodedHigh = false;
  for (std::size_t i = 0; i < part.size(); ++i) {
    const int high = part[i] == '%' && part.size() - i > 2 ? HexValue(part[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(part[i + 2]) : -1;
    if (low < 0) {
      out.push_back(part[i]);
      continue;
    }
    out.push_back(static_cast<char>(high * 16 + low));
    if (!isUtf8) (utf8 += platform::ToUtf8(part.substr(rest, i - rest))) += out.back();
    decodedHigh |= high >= 8;
    i += 2;
    rest = i + 1;
  }
  if (!decodedHigh) return true;
  if (isUtf8) return platform::IsValidUtf8(std::string_view(out).substr(begin));
  utf8 += platform::ToUtf8(part.substr(rest));
  std::string converted;
  if (!platform::IsValidUtf8(utf8)) return false;
  if (!platform::ConvertToCodePage(utf8, "utf-8", converted)) return false;
  out.replace(begin, std::string::npos, converted);
  return true;
}

void AppendPathToUrl(std::string_view path, std::string& url) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  const std::array<bool, 256>& isLead = platform::LeadBytes();
  for (std::size_t i = 0; i < path.size(); ++i) {
    const char c = path[i];
    if (isLead[static_cast<unsigned char>(c)] && i + 1 < path.size()) {
      url.append(path.substr(i++, 2));
    } else if (c == '\\') {
      url.push_back('/');
    } else if (c == '%' || c == '#' || c == '?') {
      const auto byte = static_cast<unsigned char>(c);
      url.append({'%', kHex[byte >> 4], kHex[byte & 15]});
    } else {
      url.push_back(c);
    }
  }
}

bool JoinToUrl(std::string_view base, std::string_view target, std::string& out) {
  const std::size_t colon = SchemeOf(base).size();
  const std::size_t start = colon == 0 ? 0 : colon + 1;
  if (base.size() < start + 2 || !IsSlash(base[start]) || !IsSlash(base[start + 1])) return false;
  if (target.size() >= 2 && IsSlash(target[0]) && IsSlash(target[1])) {
    out = std::string(base.substr(0, start)).append(target);
    return true;
  }
  const std::string_view place = WithoutQueryAndFragment(base);
  const std::size_t pathStart = FindMB(place, start + 2, IsSlash);
  std::string_view basePath = place.substr(pathStart);
  if (basePath.empty()) basePath = "/";
  std::string joined(place.substr(0, pathStart));
  const std::string_view targetPath = WithoutQueryAndFragment(target);
  const std::string_view rest = target.substr(targetPath.size());
  if (targetPath.empty()) {
    joined.append(basePath);
    if (rest.empty() || rest.front() == '#') {
      const std::string_view baseRest = base.substr(place.size());
      joined.append(baseRest.substr(0, baseRest.find('#')));
    }
  } else if (IsSlash(targetPath.front())) {
    joined.append(RemoveDotSegments(targetPath));
  } else {
    std::string path(basePath);
    ReplaceCharMB(path, '\\', '/');
    path.resize(FindLastCharMB(path, '/') + 1);
    joined.append(RemoveDotSegments(path.append(targetPath)));
  }
  out = joined.append(rest);
  return true;
}

LiveAddress::LiveAddress(std::string_view url) {
  HttpParts parts;
  const std::size_t colon = url.find(':');
  if (SchemeOf(url).empty() || !url.substr(colon + 1).starts_with("//") || !SplitHttp(url, parts) ||
      !parts.user.empty() || !parts.rest.empty() || !HasSoundPort(parts.host) ||
      IsSlash(url[colon + 3]) || url.find_first_of(" \t\r\n\"<>") != std::string_view::npos) {
    return;
  }
  const std::string path = RemoveDotSegments(parts.path);
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin + 1, IsSlash);
    if (end > begin + 1) folders_.push_back(Decoded(path.substr(begin + 1, end - begin - 1)));
    begin = end;
  }
  host_ = std::move(parts.host);
  url_ = url;
  if (parts.path.empty() || !IsSlash(url_.back())) url_.push_back('/');
}

bool LiveAddress::PathOf(std::string_view url, std::string& path) const {
  HttpParts parts;
  if (!isSet() || !SplitHttp(url, parts) || parts.host != host_) return false;
  const std::string whole = parts.path.empty() ? "/" : RemoveDotSegments(parts.path);
  std::size_t begin = 0;
  for (const std::string& folder : folders_) {
    if (begin >= whole.size()) return false;
    const std::size_t end = FindMB(whole, begin + 1, IsSlash);
    if (Decoded(std::string_view(whole).substr(begin + 1, end - begin - 1)) != folder) return false;
    begin = end;
  }
  path = begin < whole.size() ? whole.substr(begin) : "/";
  return true;
}

}  // namespace zvrsit
