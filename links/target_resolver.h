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
  kNone,      // nothing to record: data:, javascript:, about:, blob: (with resolvesAsBrowser only)
  // Local, but no server has a file of that name, which holds %2F, %5C or %00 (with
  // resolvesAsBrowser only): a path as it is written, which ends in "\".
  kUnservable,
  kUnresolvable,  // names nothing at all
};

// Whether a target means the same in all pages of one base. A target for which this is false may
// mean the page itself.
bool IsTargetOfFolder(std::string_view target);

// Resolves the targets of one page or sheet after another, under either set of rules. An object
// that is used for page after page allocates nothing in the long run.
class TargetResolver {
 public:
  explicit TargetResolver(LinkRules rules = LinkRules::Classic) : rules_(FlagsOf(rules)) {}

  // Says under which URL the folder `siteFolder` (which ends in "\") is served. URLs of that place
  // then name files of the site. A path that leads out of the served folder, when that is not the
  // root of the server, is then a URL. A `url` that LiveAddress refuses has no effect, and neither
  // has a call without RuleFlags::resolvesAsBrowser.
  void SetLiveUrl(std::string_view url, std::string_view siteFolder);

  // Begins a page: targets are resolved from `pagePath`, and "/" is `siteRoot`.
  void BeginPage(std::string_view siteRoot, std::string_view pagePath);
  // Sets the base of the targets that follow, from the value of a BASE HREF. No effect under
  // Classic, and for a value that names no place (data:, javascript:, or unresolvable).
  void SetBase(std::string_view baseHref);

  // For kLocal, kUnservable and kExternal writes the path or URL to `out`; else leaves `out` alone.
  // A URL is the target as written (with RuleFlags::resolvesAsBrowser without surrounding white
  // space, tabs and line ends), joined to an external base when there is one.
  TargetKind Resolve(std::string_view target, std::string& out);

  const RuleFlags& rules() const { return rules_; }
  // A text for what all targets of one base share. Two pages with the same base text resolve a
  // target to the same place, if IsTargetOfFolder holds for it.
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
  std::string siteRoot_;  // ends in "\" with resolvesAsBrowser
  std::string pagePath_;
  std::string baseText_;

  // With resolvesAsBrowser:
  std::string baseFile_;      // what "", "?q" and "#x" name: the page, or a local BASE
  std::string externalBase_;  // a BASE elsewhere, empty for none
  LiveAddress live_;
  std::string liveFolder_;
  std::string folderUrl_;  // of baseFile_'s folder, where "/" is not the site folder; else empty
  // Lengths of the folders that `..` may climb to, ascending: the first is that of the top, the
  // last that of the folder of baseFile_. An empty segment of a BASE is a folder with the same
  // length as the one around it.
  std::vector<std::size_t> climb_;
  std::vector<std::size_t> rootClimb_;  // the same for "/"
  // Of the local target resolved last:
  std::vector<std::size_t> folders_;  // as climb_, and after them where its file name begins
  std::size_t unnamed_ = 0;           // folders_.size() at the first name that no file can bear
  std::string clean_;                 // scratch
  std::string path_;                  // scratch
};

}  // namespace zvrsit
