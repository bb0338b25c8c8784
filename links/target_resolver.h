// The targets of a page or a style sheet, under either set of link rules, to files of the site and
// external URLs. Paths are `\` paths in the ANSI code page; nothing here looks at the disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "links/link_rules.h"
#include "links/live_address.h"

namespace zvrsit {

enum class TargetKind : std::uint8_t {
  kLocal,     // a path; a folder's ends in "\"
  kExternal,  // a URL
  kNone,      // nothing to record: data:, javascript:, about:, blob: (Web only)
  // Local, but no server has a file of that name, which holds %2F, %5C or %00 (Web only): a path as
  // it is written, which ends in "\".
  kUnservable,
  kUnresolvable,  // names nothing at all
};

// Whether all pages of one base mean the same by a target. Others may stand for the page itself.
bool IsTargetOfFolder(std::string_view target);

// The targets of one page or sheet, one after another, under either set of rules. Kept from page
// to page, it allocates nothing in the long run.
class TargetResolver {
 public:
  explicit TargetResolver(LinkRules rules = LinkRules::Classic) : rules_(FlagsOf(rules)) {}

  // Says where the folder `siteFolder` (which ends in "\") is served: URLs of that place name files
  // of it, and what leads out of a folder below the root of the server is a URL. A `url` that a
  // LiveAddress does not take says nothing. Without effect under Classic.
  void SetLiveUrl(std::string_view url, std::string_view siteFolder);

  // Begins a page: targets are taken from `pagePath`; "/" is `siteRoot`.
  void BeginPage(std::string_view siteRoot, std::string_view pagePath);
  // The value of the page's first BASE HREF, for the targets that follow. Without effect under
  // Classic, and for a value that names no place (data:, javascript:, unresolvable).
  void SetBase(std::string_view baseHref);

  // For kLocal, kUnservable and kExternal writes the path or URL to `out`; else leaves `out` alone.
  // A URL is the target as written (under Web without surrounding white space, tabs and line ends),
  // joined to an external base when there is one.
  TargetKind Resolve(std::string_view target, std::string& out);

  const RuleFlags& rules() const { return rules_; }
  // What all targets of one base share: two pages with the same base text resolve a target of
  // which IsTargetOfFolder holds to the same place.
  const std::string& baseText() const { return baseText_; }

 private:
  TargetKind ResolveWeb(std::string_view target, std::string& out);
  TargetKind ResolveUrl(std::string_view url, std::string& out);
  TargetKind ResolveJoined(const std::string& base, std::string_view target, std::string& out);
  TargetKind ResolveNames(std::string_view path, unsigned traits, std::string& out);
  TargetKind ResolveWebPath(std::string_view path, unsigned traits, std::string& out);
  bool IsSchemeOfBase(std::string_view scheme) const;
  void EnterFolder(bool isNamed);
  void LeaveFolder();
  void SetBaseFile(std::string_view path);
  void SetBasePlace(std::string_view place);
  void SetFolderUrl();

  RuleFlags rules_;
  std::string siteRoot_;  // ends in "\" under Web
  std::string pagePath_;
  std::string baseText_;

  // Under Web:
  std::string baseFile_;      // what "", "?q" and "#x" name: the page, or a local BASE
  std::string externalBase_;  // a BASE elsewhere, empty for none
  LiveAddress live_;
  std::string liveFolder_;
  std::string folderUrl_;  // of baseFile_'s folder, where "/" is not the site folder; else empty
  // Lengths of the folders that `..` may climb to, ascending: the first is the top, the last the
  // folder of baseFile_. An empty segment of a BASE is a folder as long as the one around it.
  std::vector<std::size_t> climb_;
  std::vector<std::size_t> rootClimb_;  // the same for "/"
  // Of the local target resolved last:
  std::vector<std::size_t> folders_;  // as climb_, and behind them where its file name begins
  std::size_t unnamed_ = 0;           // folders_.size() at the first name that no file can bear
  std::string clean_;                 // scratch
  std::string path_;                  // scratch
};

}  // namespace zvrsit
