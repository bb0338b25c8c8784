// From a link target, as written in a page or a style sheet, to a file of the site or an external
// URL. Paths are `\` paths in the ANSI code page; nothing here looks at the disk.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "links/link_rules.h"
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

enum class TargetKind : std::uint8_t {
  kLocal,         // a path; a folder's ends in "\"
  kExternal,      // a URL
  kNone,          // nothing to record: empty, data:, javascript:, about:, blob: (Web only)
  kUnresolvable,  // local, but no file can bear that name
};

// The targets of one page or sheet, one after another, under either set of rules. Kept from page
// to page, it allocates nothing in the long run.
class TargetResolver {
 public:
  explicit TargetResolver(LinkRules rules = LinkRules::Classic) : rules_(rules) {}

  // Begins a page: targets are taken from `pagePath`; "/" is `siteRoot`.
  void BeginPage(std::string_view siteRoot, std::string_view pagePath);
  // The value of the page's first BASE HREF, for the targets that follow. Without effect under
  // Classic, and for a value that names no place (data:, javascript:, unresolvable).
  void SetBase(std::string_view baseHref);

  // For kLocal and kExternal writes the path or URL to `out`; else leaves `out` alone. A URL is
  // the target as written (under Web without surrounding white space, tabs and line ends), joined
  // to an external base when there is one.
  TargetKind Resolve(std::string_view target, std::string& out);

  LinkRules rules() const { return rules_; }
  // What all targets of one folder share: two pages with the same base text resolve a target that
  // does not begin with "#" or "?" and is not empty to the same place.
  const std::string& baseText() const { return baseText_; }

 private:
  TargetKind ResolveWeb(std::string_view target, std::string& out);
  TargetKind ResolveWebPath(std::string_view path, std::string& out);
  void SetBaseFile(std::string_view path);

  LinkRules rules_;
  std::string siteRoot_;  // ends in "\" under Web
  std::string pagePath_;
  std::string baseText_;

  // Under Web:
  std::string baseFile_;      // what "", "?q" and "#x" name: the page, or a local BASE
  std::string externalBase_;  // a BASE elsewhere, empty for none
  // Lengths of the folders that `..` may climb to, ascending: the first is the top, the last the
  // folder of baseFile_.
  std::vector<std::size_t> climb_;
  std::vector<std::size_t> rootClimb_;  // the same for "/"
  std::vector<std::size_t> cuts_;  // scratch: where the segments of the target begin in the path
  std::string clean_;              // scratch
  std::string path_;               // scratch
};

// The classic rules without the copies that a SiteUrl makes.
bool ClassicIsExternal(std::string_view target);
int ClassicLocalPath(std::string_view siteRoot, std::string_view pagePath, std::string_view target,
                     std::string& out);

// Whether the target holds a "#".
bool HasFragment(std::string_view target);

}  // namespace zvrsit
