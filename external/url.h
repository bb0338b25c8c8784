// URLs as they are asked.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zvrsit {

// An absolute http or https URL, taken apart.
struct AskableUrl {
  std::string url;     // what is asked: encoded, without a user, a password and a fragment
  std::string origin;  // scheme, host and port, such as "https://example.org:443"
  std::string host;    // in lower case; an IPv6 address in brackets
  std::string path;    // with the query; begins with "/"
  std::string user;    // decoded; empty for none
  std::string password;
  std::string fragment;  // as it is written

  bool isSecure() const { return url.starts_with("https:"); }
};

// Takes a URL apart as browsers do: white space at its ends, tabs and line ends are left out, other
// control characters are encoded, `\` is taken for "/". A relative one is resolved against `base`;
// without it, "//host" is taken for https. Nothing when it has no host or another scheme.
std::optional<AskableUrl> ParseUrl(std::string_view text, const AskableUrl* base = nullptr);

// Whether a URL looks like that of a page where people log in.
bool LooksLikeLogin(const AskableUrl& url);

}  // namespace zvrsit
