// From a link target, as written in a page or a style sheet, to a file of the site, by the classic
// rules. Paths are `\` paths in the ANSI code page; nothing here looks at the disk.
#pragma once

#include <string>

#include "platform/api.h"

namespace zvrsit {

// One target under the classic rules.
class ZVRSIT_API SiteUrl {
 public:
  // `siteRoot` may or may not end in "\"; `pagePath` is the full path of the page or sheet that
  // holds the link. Nothing is parsed yet.
  SiteUrl(const std::string& siteRoot, const std::string& pagePath, const std::string& href);
  virtual ~SiteUrl() = default;
  SiteUrl(const SiteUrl&) = delete;
  SiteUrl& operator=(const SiteUrl&) = delete;

  // 1 when the target names one of the schemes http, ftp, mailto, file, telnet, news, gopher;
  // else 0. "https:" and "//host" are local names by these rules, and so is "c:/a.htm".
  int IsExternal();
  // 1 when the target holds a "#" anywhere, else 0.
  int HasFragment();
  // 0 and the path in `out`; -1, with `out` as it was, for an external target and for one that
  // climbs above the top of the joined path.
  int GetLocalPath(std::string& out);

 private:
  std::string siteRoot_;
  std::string pagePath_;
  std::string href_;
};

}  // namespace zvrsit
