// The rules that a site is held against. docs/rules.md describes them for users.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

enum class Severity : std::uint8_t { kOff, kWarning, kError };

enum class Rule : std::uint8_t {
  kMissingFile,
  kMissingFragment,
  kWrongCase,
  kFolderWithoutIndex,
  kOutsideSite,
  kUnservableName,
  kMalformedUrl,
  kExternalBroken,
  kExternalMoved,
  kExternalUnsure,
  kOrphanPage,
  kUnusedFile,
  kDuplicateId,
};
inline constexpr std::size_t kRuleCount = 13;

struct RuleTraits {
  std::string_view name;  // as in options and outputs
  Severity severity;      // unless the user chooses another
  std::string_view summary;
};

// By Rule.
inline constexpr std::array<RuleTraits, kRuleCount> kRules{{
    {"missing-file", Severity::kError, "A reference leads to a file that is not there."},
    {"missing-fragment", Severity::kError,
     "The fragment of a link names nothing in the page that it leads to."},
    {"wrong-case", Severity::kError,
     "A file is there under this name in other letter case only, which most servers tell apart."},
    {"folder-without-index", Severity::kError,
     "A link leads to a folder that has no document to show."},
    {"outside-site", Severity::kWarning,
     "A reference leads to a file that is there but lies outside of the site."},
    {"unservable-name", Severity::kError,
     "A reference holds %2F, %5C or %00 in a name: no server has such a file."},
    {"malformed-url", Severity::kError, "A reference to another site is no URL."},
    {"external-broken", Severity::kError, "The URL of another site leads nowhere."},
    {"external-moved", Severity::kWarning, "The URL of another site has moved for good."},
    {"external-unsure", Severity::kWarning,
     "Whether the URL of another site leads anywhere could not be found out."},
    {"orphan-page", Severity::kWarning, "No way leads to a page from the home page."},
    {"unused-file", Severity::kOff, "Nothing refers to a file that is no page."},
    {"duplicate-id", Severity::kWarning, "Two elements of one page have the same ID."},
}};

inline constexpr const RuleTraits& TraitsOf(Rule rule) {
  return kRules[static_cast<std::size_t>(rule)];
}
std::vector<std::string> RuleNames();
// The rule of a name; nothing when there is none.
std::optional<Rule> RuleOfName(std::string_view name);

// "error", "warning" or "off".
std::string_view SeverityName(Severity severity);
std::optional<Severity> SeverityOfName(std::string_view name);

// Which severity each rule has.
class Severities {
 public:
  Severities();  // those of kRules
  Severity Of(Rule rule) const { return severities_[static_cast<std::size_t>(rule)]; }
  bool IsOn(Rule rule) const { return Of(rule) != Severity::kOff; }
  // Switches off the rules that are not about references.
  void KeepLinks();
  void Set(Rule rule, Severity severity) { severities_[static_cast<std::size_t>(rule)] = severity; }

 private:
  std::array<Severity, kRuleCount> severities_;
};

}  // namespace zvrsit
