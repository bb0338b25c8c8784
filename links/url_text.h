// URLs as texts: their parts, and a relative one joined to another, after the URL Standard
// (url.spec.whatwg.org). Texts are in the ANSI code page; `\` counts as "/" everywhere.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "links/ascii.h"
#include "platform/api.h"
#include "platform/code_page.h"

namespace zvrsit {

inline bool IsSlash(char c) {
  return c == '/' || c == '\\';
}

// Index of the first single-byte character that `matches`, or the size.
template <class Predicate>
std::size_t FindMB(std::string_view text, std::size_t from, Predicate matches) {
  const std::array<bool, 256>& isLead = platform::LeadBytes();
  for (std::size_t i = from; i < text.size(); ++i) {
    if (isLead[static_cast<unsigned char>(text[i])]) {
      ++i;
    } else if (matches(text[i])) {
      return i;
    }
  }
  return text.size();
}

// The value of a hexadecimal digit, else -1.
inline int HexValue(char c) {
  if (IsAsciiDigit(c)) return c - '0';
  const char lower = AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The scheme of an absolute URL, without its ":"; empty when the target is relative.
std::string_view SchemeOf(std::string_view target);
std::string_view WithoutQueryAndFragment(std::string_view target);
// How many dots a segment stands for: "." is 1, ".." is 2, each also written as "%2e"; else 0.
int DotsOf(std::string_view segment);

// A relative target joined to the absolute URL (or "//host" URL) `base`; false when that has no
// path to join to.
bool JoinToUrl(std::string_view base, std::string_view target, std::string& out);

// The folder of a web server that a site is served from. The host is compared without regard to
// the case of letters, http and https are one, and so are their default ports.
class ZVRSIT_API LiveAddress {
 public:
  LiveAddress() = default;
  // `url` is an absolute http or https URL with a host, and without a user, a query or a fragment.
  // Any other text leaves the address unset. The final "/" may be missing.
  explicit LiveAddress(std::string_view url);

  bool isSet() const { return !url_.empty(); }
  // Whether it is a folder below the root of the server.
  bool isBelowRoot() const { return !folders_.empty(); }
  // As given, with the final "/".
  const std::string& url() const { return url_; }

  // The path of `url` (absolute, or "//host") from that folder on: "/" for the folder itself,
  // "/x/y" for what lies in it; without dots, query and fragment, and still percent-encoded. False
  // when `url` names a place elsewhere.
  bool PathOf(std::string_view url, std::string& path) const;

 private:
  std::string url_;
  std::string host_;                  // lower case, with ":port" unless that is the default
  std::vector<std::string> folders_;  // the segments of the path, decoded
};

}  // namespace zvrsit
