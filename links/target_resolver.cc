// Under the web rules targets are resolved as a browser does, after the URL Standard
// (url.spec.whatwg.org), with the site in place of a host: "/" is the site root, and a path is a
// file name once its percent-encoding has been decoded.
#include "links/target_resolver.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "links/ascii.h"
#include "links/site_url.h"
#include "platform/code_page.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr auto kNpos = std::string_view::npos;

// Bytes that ask for a step of their own. Most targets have few of these, and a text without such a
// byte, be it as the trail of another, needs no step for it.
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

// The scheme of an absolute URL, without its ":"; empty when the target is relative.
std::string_view SchemeOf(std::string_view target) {
  if (target.empty() || !IsAsciiAlpha(target.front())) return {};
  for (std::size_t i = 1; i < target.size(); ++i) {
    const char c = target[i];
    if (c == ':') return target.substr(0, i);
    if (!IsAsciiAlpha(c) && !IsAsciiDigit(c) && c != '+' && c != '-' && c != '.') return {};
  }
  return {};
}

// Schemes whose URLs name no place outside of the page or the browser itself.
bool NamesNoPlace(std::string_view scheme) {
  constexpr std::string_view kSchemes[] = {"data", "javascript", "about", "blob"};
  return std::any_of(std::begin(kSchemes), std::end(kSchemes),
                     [scheme](std::string_view known) { return EqualsLower(scheme, known); });
}

bool IsSlash(char c) {
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

std::string_view WithoutQueryAndFragment(std::string_view target) {
  return target.substr(0, FindMB(target, 0, [](char c) { return c == '#' || c == '?'; }));
}

int HexValue(char c) {
  if (IsAsciiDigit(c)) return c - '0';
  const char lower = AsciiLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// How many dots a segment stands for: "." is 1, ".." is 2, each also written as "%2e"; else 0.
int DotsOf(std::string_view segment) {
  int dots = 0;
  while (!segment.empty()) {
    const bool encoded = segment.size() >= 3 && segment[0] == '%' && segment[1] == '2' &&
                         AsciiLower(segment[2]) == 'e';
    if (!encoded && segment.front() != '.') return 0;
    segment.remove_prefix(encoded ? 3 : 1);
    if (++dots > 2) return 0;
  }
  return dots;
}

bool IsValidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size() - i) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80) return false;
    }
    i += length;
  }
  return true;
}

// Whether a lead byte stands at the end, where it would take the separator after it as its trail.
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
  bool decodedHigh = false;
  for (std::size_t i = 0; i < segment.size(); ++i) {
    const int high = segment[i] == '%' && segment.size() - i > 2 ? HexValue(segment[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(segment[i + 2]) : -1;
    if (low < 0) {
      out.push_back(segment[i]);
      continue;
    }
    out.push_back(static_cast<char>(high * 16 + low));
    decodedHigh |= high >= 8;
    i += 2;
  }
  std::string converted;
  const std::string_view decoded = std::string_view(out).substr(begin);
  // Browsers write names outside of ASCII as percent-encoded UTF-8, whatever the page's charset.
  if (decodedHigh && platform::CodePage() != platform::kUtf8 && IsValidUtf8(decoded) &&
      platform::ConvertToCodePage(decoded, "utf-8", converted)) {
    out.replace(begin, std::string::npos, converted);
  }
  return IsName(std::string_view(out).substr(begin));
}

bool AppendName(std::string_view segment, unsigned traits, std::string& out) {
  if ((traits & kPercent) != 0) return AppendDecodedName(segment, out);
  out.append(segment);
  return !EndsInHalfCharacter(segment) &&
         ((traits & kControlOrSpace) == 0 || segment.find('\0') == kNpos);
}

// Takes "." and ".." out of the path of a URL, which begins with "/".
std::string RemoveDotSegments(std::string_view path) {
  std::string out;
  std::vector<std::size_t> cuts;  // where each segment of `out` begins, at its "/"
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin + 1, IsSlash);
    const std::string_view segment = path.substr(begin + 1, end - begin - 1);
    const int dots = DotsOf(segment);
    if (dots == 2 && !cuts.empty()) {
      out.resize(cuts.back());
      cuts.pop_back();
    }
    if (dots == 0) {
      cuts.push_back(out.size());
      out.append("/").append(segment);
    } else if (end == path.size()) {
      out.append("/");
    }
    begin = end;
  }
  return out;
}

// A relative target joined to the absolute URL (or "//host" URL) `base`; false when that has no
// path to join to.
bool JoinToUrl(std::string_view base, std::string_view target, std::string& out) {
  const std::size_t colon = SchemeOf(base).size();
  const std::size_t start = colon == 0 ? 0 : colon + 1;
  if (base.size() < start + 2 || !IsSlash(base[start]) || !IsSlash(base[start + 1])) return false;
  if (target.size() >= 2 && IsSlash(target[0]) && IsSlash(target[1])) {
    out = std::string(base.substr(0, start)).append(target);
    return true;
  }
  const std::string_view place = WithoutQueryAndFragment(base);
  const std::size_t pathStart = FindMB(place, start + 2, IsSlash);
  std::string_view basePath = place.substr(pathStart);
  if (basePath.empty()) basePath = "/";
  std::string joined(place.substr(0, pathStart));
  const std::string_view targetPath = WithoutQueryAndFragment(target);
  const std::string_view rest = target.substr(targetPath.size());
  if (targetPath.empty()) {
    joined.append(basePath);
    if (rest.empty() || rest.front() == '#') {
      const std::string_view baseRest = base.substr(place.size());
      joined.append(baseRest.substr(0, baseRest.find('#')));
    }
  } else if (IsSlash(targetPath.front())) {
    joined.append(RemoveDotSegments(targetPath));
  } else {
    std::string path(basePath);
    ReplaceCharMB(path, '\\', '/');
    path.resize(FindLastCharMB(path, '/') + 1);
    joined.append(RemoveDotSegments(path.append(targetPath)));
  }
  out = joined.append(rest);
  return true;
}

}  // namespace

void TargetResolver::BeginPage(std::string_view siteRoot, std::string_view pagePath) {
  siteRoot_ = siteRoot;
  pagePath_ = pagePath;
  externalBase_.clear();
  if (rules_ == LinkRules::Web &&
      FindLastBackslashMB(siteRoot_) + 1 != siteRoot_.size()) {  // npos + 1 is 0
    siteRoot_.push_back('\\');
  }
  rootClimb_.assign(1, siteRoot_.size());
  SetBaseFile(pagePath);
}

void TargetResolver::SetBaseFile(std::string_view path) {
  baseFile_ = path;
  const auto last = FindLastBackslashMB(path);
  const std::size_t folder = last == std::string::npos ? 0 : last + 1;
  baseText_ = path.substr(0, folder);
  climb_.clear();
  if (rules_ == LinkRules::Classic) return;
  // A page below the root climbs to the root; any other one to the top of its drive.
  const bool below = path.substr(0, siteRoot_.size()) == siteRoot_;
  std::size_t top = below ? siteRoot_.size() : 0;
  for (std::size_t i = top; i < folder; ++i) {
    i = FindMB(path, i, [](char c) { return c == '\\'; });
    climb_.push_back(i + 1);
  }
  if (below) climb_.insert(climb_.begin(), top);
}

void TargetResolver::SetBase(std::string_view baseHref) {
  if (rules_ == LinkRules::Classic) return;
  std::string place;
  const TargetKind kind = ResolveWeb(baseHref, place);
  if (kind == TargetKind::kLocal) {
    SetBaseFile(place);
  } else if (kind == TargetKind::kExternal) {
    baseText_ = place;
    externalBase_ = std::move(place);
  }
}

TargetKind TargetResolver::Resolve(std::string_view target, std::string& out) {
  if (rules_ == LinkRules::Web) return ResolveWeb(target, out);
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
    out = target;
    return TargetKind::kExternal;
  }
  if (!externalBase_.empty()) {
    return JoinToUrl(externalBase_, target, out) ? TargetKind::kExternal
                                                 : TargetKind::kUnresolvable;
  }
  if (target.size() >= 2 && IsSlash(target[0]) && IsSlash(target[1])) {
    out = target;
    return TargetKind::kExternal;
  }
  const std::string_view path =
      (traits & kQueryOrFragment) != 0 ? WithoutQueryAndFragment(target) : target;
  if (path.empty()) {
    out = baseFile_;
    return TargetKind::kLocal;
  }
  return ResolveWebPath(path, traits, out);
}

// `traits` are those of the target that the path is of.
TargetKind TargetResolver::ResolveWebPath(std::string_view path, unsigned traits,
                                          std::string& out) {
  const std::vector<std::size_t>& climb = IsSlash(path.front()) ? rootClimb_ : climb_;
  if (climb.empty()) return TargetKind::kUnresolvable;  // a page without a folder
  std::size_t depth = climb.size() - 1;
  path_.assign(IsSlash(path.front()) ? siteRoot_ : baseFile_, 0, climb[depth]);
  cuts_.clear();
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin, IsSlash);
    const std::string_view segment = path.substr(begin, end - begin);
    const int dots = DotsOf(segment);
    begin = end + 1;
    if (segment.empty() || dots == 1) continue;
    if (dots == 2 && !cuts_.empty()) {
      path_.resize(cuts_.back());
      cuts_.pop_back();
    } else if (dots == 2) {
      if (depth > 0) path_.resize(climb[--depth]);
    } else {
      cuts_.push_back(path_.size());
      if (!AppendName(segment, traits, path_)) return TargetKind::kUnresolvable;
      if (end < path.size()) path_.push_back('\\');
    }
  }
  out.swap(path_);
  return TargetKind::kLocal;
}

}  // namespace zvrsit
