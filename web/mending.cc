#include "web/mending.h"

#include <algorithm>
#include <initializer_list>
#include <memory>

#include "findings/escapes.h"
#include "findings/known_files.h"
#include "manager/site_mgr.h"
#include "platform/code_page.h"
#include "platform/native_path.h"

namespace zvrsit {
namespace {

#if defined(_WIN32)
constexpr std::string_view kSafe = "+,-./:=@\\_";
constexpr std::string_view kNeverQuoted = "\"%!";
constexpr char kQuote = '"';
constexpr std::string_view kQuoteWithin = "";
#else
constexpr std::string_view kSafe = "+,-./:=@_%";
constexpr std::string_view kNeverQuoted = "";
constexpr char kQuote = '\'';
constexpr std::string_view kQuoteWithin = R"('\'')";
#endif

bool IsSafe(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kSafe.find(c) != kSafe.npos;
}

bool IsAbsolute(std::string_view native) {
  return native.starts_with('/') || native.starts_with('\\') ||
         (native.size() > 1 && native[1] == ':');
}

std::string_view FolderPart(std::string_view name) {
  return name.substr(0, name.size() - KnownFiles::LastNameOf(name).size());
}
std::string_view Extension(std::string_view name) {
  const std::string_view last = KnownFiles::LastNameOf(name);
  return last.substr(std::min(last.rfind('.'), last.size()));
}

// The page that a fragment is missing in; a name with "#" is cut short, and then no file has it.
std::string PageOf(const Finding& finding) {
  return finding.target.substr(0, finding.target.find('#'));
}

// Whether a link leads to this fragment of a page. One that is written with escapes may do so.
bool IsLinked(SiteMgr& manager, int page, const std::string& fragment) {
  const std::unique_ptr<std::vector<int>> links(manager.GetBackLinks(UrlID(kKindPath, page)));
  SiteLink link;
  for (std::size_t i = 0; links != nullptr && i < links->size(); ++i) {
    if (manager.GetLink((*links)[i], link) != 0) continue;
    const std::size_t at = link.text.find('#');
    if (at == link.text.npos) continue;
    const std::string_view written = std::string_view(link.text).substr(at);
    if (written == fragment || written.find_first_of("%&") != written.npos) return true;
  }
  return links == nullptr;
}

// In shorter names one letter makes another word.
constexpr std::size_t kShortestMistaken = 4;

// Whether the missing file is what another one was called before, or one that has been misspelt.
bool IsOtherName(std::string_view missing, std::string_view other) {
  const std::string_view extension = Extension(other);
  return FolderPart(missing) == FolderPart(other) && Extension(missing) == extension &&
         KnownFiles::LastNameOf(other).size() >= kShortestMistaken + extension.size();
}

// The words behind the program; empty when one of them cannot be a word.
std::string Line(const std::string& program, std::string_view command, const std::string& site,
                 std::initializer_list<std::string_view> names) {
  std::string line = program;
  line += ' ';
  line += command;
  bool isWhole = true;
  const auto add = [&](std::string_view text) {
    const std::string word = ShellWord(text);
    isWhole = isWhole && !word.empty();
    line += ' ' + word;
  };
  add(site);
  const bool looksLikeOption =
      std::ranges::any_of(names, [](std::string_view name) { return name.starts_with('-'); });
  if (looksLikeOption) line += " --";
  for (const std::string_view name : names) add(name);
  return isWhole ? line : "";
}

// Erases those that several findings suggest: one of them alone can have the name.
void EraseDisputed(const FindingReport& report, std::set<std::string>& unlinked) {
  std::set<std::string> suggested;
  for (const Finding& finding : report.findings) {
    if (finding.suggestion.empty()) continue;
    const bool isFragment = finding.rule == Rule::kMissingFragment;
    const std::string name = (isFragment ? PageOf(finding) : "") + finding.suggestion;
    if (!suggested.insert(name).second) unlinked.erase(name);
  }
}

}  // namespace

std::string ShellWord(std::string_view text) {
  const std::string utf8 = platform::ToUtf8(text);
  const bool isText = platform::CodePage() != platform::kUtf8 || utf8 == text;
  if (!isText || WithoutControls(utf8) != utf8 || text.find_first_of("\n\t\r") != text.npos ||
      text.find_first_of(kNeverQuoted) != text.npos) {
    return "";
  }
  if (!text.empty() && std::ranges::all_of(text, &IsSafe)) return std::string(text);
  std::string word(1, kQuote);
  for (const char c : text) {
    if (c == kQuote) {
      word += kQuoteWithin;
    } else {
      word += c;
    }
  }
  return word + kQuote;
}

std::set<std::string> FindUnlinked(SiteMgr& manager, const FindingReport& report,
                                   const SiteContent& content) {
  std::set<std::string> unlinked;
  for (const std::int32_t file : content.unused) {
    unlinked.insert(content.files[static_cast<std::size_t>(file)].path);
  }
  for (const Finding& finding : report.findings) {
    if (finding.rule != Rule::kMissingFragment || finding.suggestion.empty()) continue;
    const std::string page = PageOf(finding);
    std::string path;
    if (!platform::FromNativePath(report.folder + page, path)) continue;
    const int number = manager.FindPath(path);
    if (number >= 0 && !IsLinked(manager, number, finding.suggestion)) {
      unlinked.insert(page + finding.suggestion);
    }
  }
  EraseDisputed(report, unlinked);
  return unlinked;
}

std::string Mending::CommandFor(const Finding& finding) const {
  const std::string& target = finding.target;
  const std::string& suggestion = finding.suggestion;
  if (site.empty() || suggestion.empty()) return "";
  const auto fix = [&](const char* option) {
    const std::string line = Line(program, "fix", site, {});
    return line.empty() ? line : line + option;
  };
  switch (finding.rule) {
    case Rule::kWrongCase:
      return IsAbsolute(target) ? "" : fix(" --wrong-case");
    case Rule::kExternalMoved:
      return fix(" --moved");
    case Rule::kMissingFile:
      if (IsAbsolute(target)) return "";
      if (KnownFiles::LastNameOf(target) == KnownFiles::LastNameOf(suggestion)) {
        return fix(" --moved");
      }
      if (!unlinked.contains(suggestion) || !IsOtherName(target, suggestion)) return "";
      return Line(program, "mv", site, {folder + suggestion, folder + target});
    case Rule::kMissingFragment: {
      // One link alone has more likely been misspelt itself.
      const std::string page = PageOf(finding);
      if (finding.places.size() < 2 || suggestion.size() <= kShortestMistaken ||
          !unlinked.contains(page + suggestion)) {
        return "";
      }
      return Line(program, "rename-id", site,
                  {folder + page, suggestion.substr(1), target.substr(page.size() + 1)});
    }
    default:
      return "";
  }
}

}  // namespace zvrsit
