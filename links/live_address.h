// The address that a site is served under.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/api.h"

namespace zvrsit {

// The folder of a web server that a site is served from. When addresses are compared, the letter
// case of the host does not count; http and https are equal, and so are their default ports.
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
  // "/x/y" for what lies in it. It has no dots, query or fragment, and is still percent-encoded.
  // False when `url` names another place.
  bool PathOf(std::string_view url, std::string& path) const;

 private:
  std::string url_;
  std::string host_;                  // lower case, with ":port" unless that is the default
  std::vector<std::string> folders_;  // the segments of the path, decoded
};

}  // namespace zvrsit
