// Under the web rules targets are resolved as a browser does, after the URL Standard
// (url.spec.whatwg.org), with the site in place of a host: "/" is the site root, and a path is a
// file name once its percent-encoding has been decoded.
#include "links/target_resolver.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "links/classic_target.h"
#include "links/url_text.h"
#include "platform/code_page_text.h"
#include "util/ascii.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr auto kNpos = std::string_view::npos;

// Bytes that make an extra step necessary. Most targets have few of them. A text without such a
// byte, even as a trail byte, does not need the step.
enum Trait : unsigned char {
  kControlOrSpace = 1,
  kColon = 2,
  kQueryOrFragment = 4,
  kPercent = 8,
};

constexpr std::array<unsigned char, 256> MakeTraits() {
  std::array<unsigned char, 256> traits{};
  for (std::size_t c = 0; c <= ' '; ++c) traits[c] = kControlOrSpace;
  traits[':'] = kColon;
  traits['#'] = traits['?'] = kQueryOrFragment;
  traits['%'] = kPercent;
  return traits;
}

// The traits of all bytes of a text.
unsigned TraitsOf(std::string_view text) {
  static constexpr std::array<unsigned char, 256> kTraits = MakeTraits();
  unsigned traits = 0;
  for (const char c : text) traits |= kTraits[static_cast<unsigned char>(c)];
  return traits;
}

// Without C0 controls and spaces at both ends, and without tabs and line ends anywhere.
std::string_view Cleaned(std::string_view target, std::string& scratch) {
  const auto isPadding = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!target.empty() && isPadding(target.front())) target.remove_prefix(1);
  while (!target.empty() && isPadding(target.back())) target.remove_suffix(1);
  if (target.find_first_of("\t\n\r") == kNpos) return target;
  scratch.clear();
  std::copy_if(target.begin(), target.end(), std::back_inserter(scratch),
               [](char c) { return c != '\t' && c != '\n' && c != '\r'; });
  return scratch;
}

// Schemes of URLs that name no place outside of the page or of the browser.
bool NamesNoPlace(std::string_view scheme) {
  constexpr std::string_view kSchemes[] = {"data", "javascript", "about", "blob"};
  return IsAmongLower(scheme, kSchemes);
}

// The schemes whose URLs need no slashes. "file" is another one, but no page on the web uses it.
bool IsWebScheme(std::string_view scheme) {
  constexpr std::string_view kSchemes[] = {"http", "https", "ftp", "ws", "wss"};
  return IsAmongLower(scheme, kSchemes);
}

bool BeginsWithHost(std::string_view target) {
  return target.size() >= 2 && IsSlash(target[0]) && IsSlash(target[1]);
}

// Whether the last byte is a lead byte; it would make a separator after it its trail byte.
bool EndsInHalfCharacter(std::string_view text) {
  if (!platform::HasLeadBytes()) return false;
  std::size_t i = 0;
  while (i < text.size()) {
    i += platform::IsDbcsLeadByte(static_cast<unsigned char>(text[i])) ? 2 : 1;
  }
  return i > text.size();
}

// Whether a file can bear a name that was decoded.
bool IsName(std::string_view name) {
  return !EndsInHalfCharacter(name) && name.find('\0') == kNpos &&
         FindMB(name, 0, IsSlash) == name.size();
}

// Appends the name that a segment stands for; false when no file can bear it.
bool AppendDecodedName(std::string_view segment, std::string& out) {
  const std::size_t begin = out.size();
  AppendPercentDecoded(segment, out);
  return IsName(std::string_view(out).substr(begin));
}

// Whether an external URL has no host although it needs one. Such a URL is not valid.
bool LacksHost(std::string_view url) {
  const std::string_view scheme = SchemeOf(url);
  if (!scheme.empty() && !IsWebScheme(scheme)) return false;
  url.remove_prefix(scheme.empty() ? 0 : scheme.size() + 1);
  const std::size_t host = url.find_first_not_of("/\\");
  return host == kNpos || url[host] == '?' || url[host] == '#';
}

bool AppendName(std::string_view segment, unsigned traits, std::string& out) {
  if ((traits & kPercent) != 0) return AppendDecodedName(segment, out);
  out.append(segment);
  return !EndsInHalfCharacter(segment) &&
         ((traits & kControlOrSpace) == 0 || segment.find('\0') == kNpos);
}

}  // namespace

bool IsTargetOfFolder(std::string_view target) {
  const auto beginsOwn = [](std::string_view text) {
    return text.empty() || static_cast<unsigned char>(text.front()) <= ' ' || text.front() == '#' ||
           text.front() == '?';
  };
  if (beginsOwn(target)) return false;
  const auto colon = target.find(':');  // may be that of a bare scheme
  return colon == kNpos || !beginsOwn(target.substr(colon + 1));
}

void TargetResolver::BeginPage(std::string_view siteRoot, std::string_view pagePath) {
  siteRoot_ = siteRoot;
  pagePath_ = pagePath;
  externalBase_.clear();
  if (rules_.resolvesAsBrowser && FolderOf(siteRoot_) != siteRoot_) {
    siteRoot_.push_back('\\');
  }
  rootClimb_.assign(1, siteRoot_.size());
  SetBaseFile(pagePath);
}

void TargetResolver::SetLiveUrl(std::string_view url, std::string_view siteFolder) {
  live_ = rules_.resolvesAsBrowser ? LiveAddress(url) : LiveAddress();
  liveFolder_ = siteFolder;
}

void TargetResolver::SetBaseFile(std::string_view path) {
  baseFile_ = path;
  const std::size_t folder = FolderOf(path).size();
  baseText_ = path.substr(0, folder);
  climb_.clear();
  if (!rules_.resolvesAsBrowser) return;
  // A page below the root climbs to the root; any other one to the top of its drive.
  const bool below = path.substr(0, siteRoot_.size()) == siteRoot_;
  std::size_t top = below ? siteRoot_.size() : 0;
  for (std::size_t i = top; i < folder; ++i) {
    i = FindMB(path, i, [](char c) { return c == '\\'; });
    climb_.push_back(i + 1);
  }
  if (below) climb_.insert(climb_.begin(), top);
  SetFolderUrl();
}

// Depends on the base text only.
void TargetResolver::SetFolderUrl() {
  folderUrl_.clear();
  const bool below = baseText_.starts_with(siteRoot_);
  if (!below || !live_.isBelowRoot() || siteRoot_ != liveFolder_) return;
  folderUrl_ = live_.url();
  AppendPathToUrl(std::string_view(baseText_).substr(siteRoot_.size()), folderUrl_);
}

void TargetResolver::SetBase(std::string_view baseHref) {
  if (!rules_.resolvesAsBrowser) return;
  std::string place;
  const TargetKind kind = ResolveWeb(baseHref, place);
  if (kind == TargetKind::kLocal) {
    SetBasePlace(place);
  } else if (kind == TargetKind::kExternal && !LacksHost(place)) {
    baseText_ = place;
    externalBase_ = std::move(place);
  }
}

// Sets the base to a place that was just resolved. The base text shows its empty segments.
void TargetResolver::SetBasePlace(std::string_view place) {
  baseFile_ = place;
  climb_ = folders_;
  baseText_.clear();
  for (std::size_t begin = 0; const std::size_t end : climb_) {
    baseText_.append(end > begin ? place.substr(begin, end - begin) : "\\");
    begin = end;
  }
  externalBase_.clear();
  SetFolderUrl();
}

TargetKind TargetResolver::Resolve(std::string_view target, std::string& out) {
  if (rules_.resolvesAsBrowser) return ResolveWeb(target, out);
  if (ClassicIsExternal(target)) {
    out = target;
    return TargetKind::kExternal;
  }
  return ClassicLocalPath(siteRoot_, pagePath_, target, out) == 0 ? TargetKind::kLocal
                                                                  : TargetKind::kUnresolvable;
}

TargetKind TargetResolver::ResolveWeb(std::string_view target, std::string& out) {
  const unsigned traits = TraitsOf(target);
  if ((traits & kControlOrSpace) != 0) target = Cleaned(target, clean_);
  const std::string_view scheme = (traits & kColon) != 0 ? SchemeOf(target) : std::string_view();
  if (!scheme.empty()) {
    if (NamesNoPlace(scheme)) return TargetKind::kNone;
    const std::string_view rest = target.substr(scheme.size() + 1);
    if (!IsSchemeOfBase(scheme) || BeginsWithHost(rest)) return ResolveUrl(target, out);
    target = rest;
  }
  if (!externalBase_.empty()) return ResolveJoined(externalBase_, target, out);
  if (BeginsWithHost(target)) {
    return ResolveUrl(target, out);
  }
  const std::string_view path =
      (traits & kQueryOrFragment) != 0 ? WithoutQueryAndFragment(target) : target;
  if (path.empty()) {
    out = baseFile_;
    folders_ = climb_;
    return TargetKind::kLocal;
  }
  // When the site is served from a folder, these lead out of it without a scheme.
  if (!folderUrl_.empty() &&
      (IsSlash(path.front()) || (traits & kPercent) != 0 || path.find("..") != kNpos)) {
    return ResolveJoined(folderUrl_, target, out);
  }
  return ResolveNames(path, traits, out);
}

// In URLs of the web, "http:x" is a relative reference when the base has the same scheme. If nobody
// has said which of the two schemes the site's pages have, both count as the same.
bool TargetResolver::IsSchemeOfBase(std::string_view scheme) const {
  std::string_view ofBase = SchemeOf(externalBase_);
  if (ofBase.empty() && live_.isSet()) ofBase = SchemeOf(live_.url());
  if (ofBase.empty()) return IsHttp(scheme);
  return IsWebScheme(scheme) && platform::EqualButForCase(scheme, ofBase);
}

// A target that is relative to `base`, a URL.
TargetKind TargetResolver::ResolveJoined(const std::string& base, std::string_view target,
                                         std::string& out) {
  std::string url;
  return JoinToUrl(base, target, url) ? ResolveUrl(url, out) : TargetKind::kUnresolvable;
}

// An absolute URL or "//host": a place elsewhere, unless the site is served there.
TargetKind TargetResolver::ResolveUrl(std::string_view url, std::string& out) {
  std::string path;
  if (live_.PathOf(url, path) && liveFolder_.starts_with(siteRoot_)) {
    std::string fromRoot = "/";
    AppendPathToUrl(std::string_view(liveFolder_).substr(siteRoot_.size()), fromRoot);
    fromRoot.append(path, 1);
    return ResolveNames(fromRoot, TraitsOf(fromRoot), out);
  }
  out = url;
  return TargetKind::kExternal;
}

// A path with a name that no file can have is given as written: no file has this path.
TargetKind TargetResolver::ResolveNames(std::string_view path, unsigned traits, std::string& out) {
  const TargetKind kind = ResolveWebPath(path, traits, out);
  if (kind != TargetKind::kUnresolvable || EndsInHalfCharacter(path)) return kind;
  const std::string_view folder = FolderOf(baseFile_);
  const bool isBelow = folder.starts_with(siteRoot_);
  const std::string_view top = isBelow || IsSlash(path.front()) ? siteRoot_ : folder;
  constexpr std::string_view kServer = "http://site";
  std::string base = std::string(kServer) + "/";
  if (isBelow) AppendPathToUrl(folder.substr(siteRoot_.size()), base);
  std::string url;
  if (top.empty() || !JoinToUrl(base, path, url)) return kind;
  ReplaceCharMB(url, '/', '\\');
  if (url.back() != '\\') url.push_back('\\');
  out.assign(top.substr(0, top.size() - 1)).append(url, kServer.size());
  return TargetKind::kUnservable;
}

// `traits` are those of the whole target. During the loop path_ is the folder that folders_ ends
// with.
TargetKind TargetResolver::ResolveWebPath(std::string_view path, unsigned traits,
                                          std::string& out) {
  const bool fromRoot = IsSlash(path.front());
  folders_ = fromRoot ? rootClimb_ : climb_;
  if (folders_.empty()) return TargetKind::kUnresolvable;  // a page without a folder
  path_.assign(fromRoot ? siteRoot_ : baseFile_, 0, folders_.back());
  unnamed_ = kNpos;
  for (std::size_t begin = fromRoot ? 1 : 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin, IsSlash);
    const std::string_view segment = path.substr(begin, end - begin);
    const int dots = DotsOf(segment);
    begin = end + 1;
    if (dots == 2) LeaveFolder();
    if (dots != 0) continue;
    const bool isNamed = AppendName(segment, traits, path_);
    if (end < path.size()) {
      EnterFolder(isNamed);
    } else if (!isNamed) {
      return TargetKind::kUnresolvable;
    }
  }
  if (unnamed_ != kNpos) return TargetKind::kUnresolvable;
  out.swap(path_);
  return TargetKind::kLocal;
}

// path_ has got one more name, which may be empty.
void TargetResolver::EnterFolder(bool isNamed) {
  if (!isNamed && unnamed_ == kNpos) unnamed_ = folders_.size();
  if (path_.size() > folders_.back()) path_.push_back('\\');
  folders_.push_back(path_.size());
}

void TargetResolver::LeaveFolder() {
  if (folders_.size() == 1) return;  // the root is above itself
  folders_.pop_back();
  path_.resize(folders_.back());
  if (folders_.size() <= unnamed_) unnamed_ = kNpos;
}

}  // namespace zvrsit
