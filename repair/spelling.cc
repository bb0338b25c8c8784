#include "repair/spelling.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "links/json_references.h"
#include "links/link_type.h"
#include "links/url_text.h"
#include "platform/code_page.h"
#include "util/ascii.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

// ASCII characters that are encoded in a URL, unless the old text has them as they are.
constexpr std::string_view kEncoded = " \"<>`{}|^[]";

bool IsPadding(char c) {
  return static_cast<unsigned char>(c) <= ' ';
}

std::vector<std::string_view> NamesOf(std::string_view path) {
  std::vector<std::string_view> names;
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = FindMB(path, begin, IsSlash);
    names.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

// The end of "//host" and what is before it; 0 when there is none.
std::size_t HostEnd(std::string_view target) {
  const std::string_view scheme = SchemeOf(target);
  std::size_t at = scheme.empty() ? 0 : scheme.size() + 1;
  const std::size_t slashes = at;
  while (at < target.size() && IsSlash(target[at])) ++at;
  if (at - slashes < 2) return 0;
  const std::string_view place = WithoutQueryAndFragment(target);
  return std::min(FindMB(place, at, IsSlash), place.size());
}

void AppendHex(std::string& out, std::string_view bytes, bool lower) {
  const std::string_view digits = lower ? "0123456789abcdef" : "0123456789ABCDEF";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out.append({'%', digits[byte >> 4], digits[byte & 15]});
  }
}

}  // namespace

TargetParts PartsOf(std::string_view target, const RuleFlags& rules) {
  TargetParts parts;
  std::size_t begin = 0;
  std::size_t end = target.size();
  if (rules.resolvesAsBrowser) {
    while (begin < end && IsPadding(target[begin])) ++begin;
    while (end > begin && IsPadding(target[end - 1])) --end;
    const std::string_view inner = target.substr(begin, end - begin);
    const std::size_t host = HostEnd(inner);
    parts.hasHost = host > 0;
    const std::size_t scheme = SchemeOf(inner).size();
    begin += host > 0 ? host : scheme > 0 ? scheme + 1 : 0;
  }
  const std::string_view rest = target.substr(begin, end - begin);
  parts.before = target.substr(0, begin);
  parts.path = rest.substr(0, std::min(rest.find_first_of("?#"), rest.size()));
  parts.after = target.substr(begin + parts.path.size());
  return parts;
}

std::string TopOf(std::string_view path, std::string folder, const std::string& direct) {
  std::string child;
  while (!path.empty()) {
    const std::size_t end = FindMB(path, 0, IsSlash);
    const int dots = DotsOf(path.substr(0, end));
    if (dots == 0 || folder.empty()) break;
    if (dots == 2) {
      child = folder;
      folder.pop_back();
      folder.resize(FolderOf(folder).size());
    }
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  const bool goesBack = !child.empty() && !folder.empty() && direct.starts_with(child);
  return goesBack ? folder : std::string();
}

Spelling::Spelling(const FoundReference& old, SiteWorld& world, std::string top)
    : old_(old), world_(world), top_(std::move(top)), parts_(PartsOf(old.target, world.rules())) {
  const std::string_view path = parts_.path;
  const bool hasSlash = FindMB(path, 0, [](char c) { return c == '/'; }) < path.size();
  const bool hasOther = FindMB(path, 0, [](char c) { return c == '\\'; }) < path.size();
  if (hasOther && !hasSlash) slash_ = '\\';
  for (const std::string_view name : NamesOf(path)) {
    std::string decoded;
    if (!world.rules().resolvesAsBrowser) decoded = name;
    if (decoded.empty()) static_cast<void>(AppendPercentDecoded(name, decoded));
    spelled_.emplace_back(std::move(decoded), name);
  }
  bool hasUpperHex = false;
  for (std::size_t at = 0; at < path.size(); ++at) {
    hasRawBytes_ |= static_cast<unsigned char>(path[at]) >= 0x80;
    if (path[at] != '%' || path.size() - at < 3) continue;
    for (const char c : path.substr(at + 1, 2)) {
      lowerHex_ |= c >= 'a' && c <= 'f';
      hasUpperHex |= c >= 'A' && c <= 'F';
    }
  }
  lowerHex_ = lowerHex_ && !hasUpperHex;
}

bool Spelling::StaysRaw(char c, bool encodesAll) const {
  const auto byte = static_cast<unsigned char>(c);
  if (byte >= 0x80) return hasRawBytes_ && !encodesAll;
  if (byte < ' ' || byte == 0x7F || c == '%' || c == '#' || c == '?' || c == '\\') return false;
  switch (old_.surroundings) {
    case Surroundings::kRedirect:
      if (c == ':' || c == '*') return false;
      [[fallthrough]];
    case Surroundings::kLine:
    case Surroundings::kList:
      if (c == ' ' || c == ',') return false;
      break;
    case Surroundings::kRefresh:
      if (c == '"' || c == '\'' || c == ';' || c == ',') return false;
      break;
    case Surroundings::kNone:
    case Surroundings::kJson:
      break;
  }
  return kEncoded.find(c) == std::string_view::npos ||
         (!encodesAll && parts_.path.find(c) != std::string_view::npos);
}

std::string Spelling::Encoded(std::string_view name, bool encodesAll) const {
  std::string out;
  ForEachCharacter(name, [&](std::string_view character) {
    if (StaysRaw(character.front(), encodesAll)) {
      out += character;
    } else {
      AppendHex(out, platform::ToUtf8(character), lowerHex_);
    }
  });
  return out;
}

// As the old text has it, if it has this name.
std::string Spelling::Spelled(std::string_view name, bool encodesAll) const {
  if (!world_.rules().resolvesAsBrowser) return std::string(name);
  for (const auto& [decoded, written] : spelled_) {
    if (decoded == name && !encodesAll) return std::string(written);
  }
  return Encoded(name, encodesAll);
}

std::string Spelling::Joined(const Names& names, bool isFolder, bool encodesAll) const {
  std::string path;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) path += slash_;
    path += names[i] == ".." ? ".." : Spelled(names[i], encodesAll);
  }
  const bool endedInSlash = !parts_.path.empty() && IsSlash(parts_.path.back());
  const bool isDots = !names.empty() && names.back() == "..";
  if (isFolder && !names.empty() && (!isDots || endedInSlash)) path += slash_;
  return path;
}

// Empty when there is no relative way.
std::string Spelling::Relative(std::string_view path, bool encodesAll) const {
  const std::string folder = world_.BaseFolder();
  const bool isFolder = path.ends_with('\\') && FolderOf(path) == path;
  const Names from = NamesOf(folder);
  Names to = NamesOf(path);
  if (folder.empty() || from.empty() || to.empty()) return {};
  const std::size_t most = std::min(from.size(), isFolder ? to.size() : to.size() - 1);
  std::size_t common = 0;
  while (common < most && from[common] == to[common]) ++common;
  if (common == 0) return {};
  if (!top_.empty() && path.starts_with(top_) && folder.starts_with(top_)) {
    common = std::min(common, NamesOf(top_).size());
  }
  Names names(from.size() - common, "..");
  names.insert(names.end(), to.begin() + static_cast<std::ptrdiff_t>(common), to.end());
  std::string text = Joined(names, isFolder, encodesAll);
  const std::string_view old = parts_.path;
  if (text.empty()) return !old.empty() && IsSlash(old.back()) ? "./" : ".";
  const bool looksLikeScheme = text.find(':') < text.find_first_of("/\\");
  if (looksLikeScheme || WantsDot(text)) text.insert(0, {'.', slash_});
  return text;
}

// Whether "./" stands before a relative path: where it stood before, and where without it the path
// would be taken for something else.
bool Spelling::WantsDot(const std::string& path) const {
  const std::string_view old = parts_.path;
  const bool climbs = path.starts_with("..");
  if (old.size() > 1 && old[0] == '.' && IsSlash(old[1])) {
    return !climbs || old.substr(2).starts_with("..");
  }
  if (climbs || old_.surroundings != Surroundings::kJson) return false;
  if (old_.type == LT_IMPORT_MAP) return true;
  if (old_.type != LT_LINKED_DATA || path.find_first_of("\"\\") != std::string_view::npos)
    return false;
  const std::string alone = "{\"url\":\"" + path + "\"}";
  return ReadJsonReferences(JsonKind::kLinkedData, alone).empty();
}

// The path of the address of the site: "/docs/"; "/" when it has none.
std::string Spelling::LivePath() const {
  const std::string& url = world_.site().liveUrl;
  const std::size_t host = HostEnd(url);
  std::string path = host > 0 ? url.substr(host) : std::string();
  if (path.empty() || path.back() != '/') path += '/';
  return path;
}

void Spelling::AddFromRoot(std::string_view path, bool encodesAll,
                           std::vector<std::string>& out) const {
  const bool isFolder = FolderOf(path) == path;
  std::string root = world_.site().root;
  if (FolderOf(root) != root) root += '\\';
  const std::string& folder = world_.site().folder;
  if (LivePath() != "/" && world_.rules().resolvesAsBrowser && path.starts_with(folder)) {
    out.push_back(LivePath() + Joined(NamesOf(path.substr(folder.size())), isFolder, encodesAll));
  }
  if (path.starts_with(root)) {
    out.push_back(slash_ + Joined(NamesOf(path.substr(root.size())), isFolder, encodesAll));
  }
}

void Spelling::AddWithHost(std::string_view path, bool encodesAll,
                           std::vector<std::string>& out) const {
  const std::string& folder = world_.site().folder;
  if (!path.starts_with(folder)) return;
  const bool isFolder = FolderOf(path) == path;
  const std::string names = Joined(NamesOf(path.substr(folder.size())), isFolder, encodesAll);
  // The folders of the address, as the old text has them.
  const std::string livePath = LivePath();
  const Names live = NamesOf(std::string_view(livePath).substr(1));
  std::size_t end = 0;
  for (std::size_t i = 0; i <= live.size() && end < parts_.path.size(); ++i) {
    end = FindMB(parts_.path, end, IsSlash) + 1;
  }
  const std::string_view kept = parts_.path.substr(0, std::min(end, parts_.path.size()));
  if (!kept.empty() && IsSlash(kept.back())) out.push_back(std::string(kept) + names);
  out.push_back(livePath + names);
}

std::vector<std::string> Spelling::ListFor(const std::string& path, bool ofOtherKind,
                                           bool encodesAll) const {
  std::vector<std::string> paths;
  const bool isFromRoot = !parts_.path.empty() && IsSlash(parts_.path.front());
  const bool isRelative = !parts_.hasHost && !isFromRoot;
  if (isRelative != ofOtherKind) {
    std::string relative = Relative(path, encodesAll);
    if (!relative.empty()) paths.push_back(std::move(relative));
  } else if (parts_.hasHost) {
    AddWithHost(path, encodesAll, paths);
  } else {
    AddFromRoot(path, encodesAll, paths);
  }
  const bool dropsHost = parts_.hasHost && ofOtherKind;
  for (std::string& one : paths) {
    one.insert(0, dropsHost ? std::string_view() : parts_.before).append(parts_.after);
  }
  return paths;
}

std::vector<std::string> Spelling::ListForUrl(const std::string& url) const {
  const std::size_t host = HostEnd(url);
  if (host == 0) return {};
  const std::string path = url.substr(host, std::min(url.find_first_of("?#"), url.size()) - host);
  return {std::string(parts_.before).append(path).append(parts_.after), url};
}

}  // namespace zvrsit
