#include "links/redirect_rules.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "links/url_text.h"
#include "util/ascii.h"

namespace zvrsit {

// The parts of an address that the placeholders of a rule stand for.
struct RedirectRules::Captures {
  std::vector<std::pair<std::string_view, std::string_view>> named;
  std::string_view splat;

  const std::string_view* Find(std::string_view name) const {
    if (name == "splat") return &splat;
    const auto found =
        std::ranges::find(named, name, &std::pair<std::string_view, std::string_view>::first);
    return found != named.end() ? &found->second : nullptr;
  }
};

namespace {

constexpr auto kNone = std::string_view::npos;

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r';
}

// The words of a line up to a comment.
std::vector<std::string_view> WordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t i = 0; i < line.size();) {
    if (IsBlank(line[i])) {
      ++i;
      continue;
    }
    if (line[i] == '#') break;
    const std::size_t begin = i;
    while (i < line.size() && !IsBlank(line[i])) ++i;
    words.push_back(line.substr(begin, i - begin));
  }
  return words;
}

bool IsAddress(std::string_view word) {
  return word.starts_with('/') || IsHttp(SchemeOf(word));
}

// Takes "200" or "301!"; false for a word of another kind.
bool ReadStatus(std::string_view word, RedirectRule& rule) {
  int status = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), status);
  const std::string_view rest(end, static_cast<std::size_t>(word.data() + word.size() - end));
  if (error != std::errc() || (!rest.empty() && rest != "!")) return false;
  rule.status = status;
  rule.isForced = !rest.empty();
  return true;
}

// False for a line that is no rule.
bool ReadRule(std::string_view line, std::size_t offset, RedirectRule& rule) {
  const std::vector<std::string_view> words = WordsOf(line);
  if (words.size() < 2 || !IsAddress(words[0])) return false;
  rule.from = words[0];
  std::size_t next = 1;
  for (; next < words.size() && !IsAddress(words[next]); ++next) {
    const std::size_t sign = words[next].find('=');
    if (sign == kNone) return false;
    rule.query.emplace_back(words[next].substr(0, sign), words[next].substr(sign + 1));
  }
  if (next == words.size()) return false;
  rule.to = words[next];
  rule.toOffset = offset + static_cast<std::size_t>(rule.to.data() - line.data());
  ++next;
  if (next < words.size() && ReadStatus(words[next], rule)) ++next;
  rule.hasConditions = next < words.size();
  return true;
}

// The length of the placeholder (":name") that `text` begins with; 0 for none.
std::size_t PlaceholderAt(std::string_view text) {
  if (text.size() < 2 || text[0] != ':' || !IsAsciiLetter(text[1])) return 0;
  std::size_t end = 2;
  while (end < text.size() &&
         (IsAsciiLetter(text[end]) || IsAsciiDigit(text[end]) || text[end] == '_')) {
    ++end;
  }
  return end;
}

std::string_view WithoutEnd(std::string_view path) {
  while (path.ends_with('\\')) path.remove_suffix(1);
  return path;
}

bool IsPattern(std::string_view from) {
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (from[i] == '*' || (from[i] == ':' && PlaceholderAt(from.substr(i)) > 0)) return true;
  }
  return false;
}

}  // namespace

bool RedirectRule::hasPlaceholders() const {
  return IsPattern(to);
}

std::vector<RedirectRule> ReadRedirectRules(std::string_view text) {
  std::vector<RedirectRule> rules;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    RedirectRule rule;
    if (ReadRule(text.substr(begin, end - begin), begin, rule)) rules.push_back(std::move(rule));
    begin = end + 1;
  }
  return rules;
}

RedirectRules::RedirectRules(std::string_view text, TargetResolver& resolver) {
  std::string path;
  for (RedirectRule& rule : ReadRedirectRules(text)) {
    if (resolver.Resolve(rule.from, path) != TargetKind::kLocal) continue;
    froms_.emplace_back(WithoutEnd(path));
    hasForced_ |= rule.isForced;
    rules_.push_back(std::move(rule));
  }
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    if (IsPattern(froms_[i])) {
      patterns_.push_back(i);
    } else {
      exact_[froms_[i]].push_back(i);
    }
  }
}

namespace {

// Whether `pattern` fits `path`; both are paths without a separator at the end. Only one splat
// counts as one.
template <class Captures>
bool FitsPath(std::string_view pattern, std::string_view path, bool maySplat, Captures& captures) {
  bool atSegment = false;
  while (!pattern.empty()) {
    const char c = pattern.front();
    if (c == '*' && maySplat) {
      const std::string_view rest = pattern.substr(1);
      for (std::size_t length = path.size() + 1; length-- > 0;) {
        captures.splat = path.substr(0, length);
        if (FitsPath(rest, path.substr(length), false, captures)) return true;
      }
      return false;
    }
    const std::size_t name = atSegment ? PlaceholderAt(pattern) : 0;
    const std::size_t value = name > 0 ? std::min(path.find('\\'), path.size()) : 1;
    if (name > 0 && value > 0) {
      captures.named.emplace_back(pattern.substr(1, name - 1), path.substr(0, value));
    } else if (name > 0 || path.empty() || path.front() != c) {
      // "/news/*" fits "/news" too.
      return path.empty() && maySplat && pattern == "\\*";
    }
    atSegment = c == '\\';
    pattern.remove_prefix(std::max<std::size_t>(name, 1));
    path.remove_prefix(value);
  }
  return path.empty();
}

// The value of a name in a query; null when it is not there.
std::string_view ValueInQuery(std::string_view query, std::string_view name, bool& isThere) {
  isThere = false;
  while (!query.empty()) {
    const std::size_t end = std::min(query.find('&'), query.size());
    const std::string_view pair = query.substr(0, end);
    const std::size_t sign = std::min(pair.find('='), pair.size());
    isThere = pair.substr(0, sign) == name;
    if (isThere) return pair.substr(std::min(sign + 1, pair.size()));
    query.remove_prefix(std::min(end + 1, query.size()));
  }
  return {};
}

// Puts the values of the placeholders into a target.
template <class Captures>
std::string Filled(std::string_view to, const Captures& captures) {
  std::string filled;
  while (!to.empty()) {
    const std::size_t length = PlaceholderAt(to);
    const std::string_view* const value =
        length > 0 ? captures.Find(to.substr(1, length - 1)) : nullptr;
    if (value == nullptr) {
      filled.push_back(to.front());
      to.remove_prefix(1);
    } else {
      AppendPathToUrl(*value, filled);
      to.remove_prefix(length);
    }
  }
  return filled;
}

}  // namespace

bool RedirectRules::Fits(std::size_t rule, std::string_view path, std::string_view query,
                         Captures& captures) const {
  if (!FitsPath(std::string_view(froms_[rule]), path, true, captures)) return false;
  return std::ranges::all_of(rules_[rule].query, [&](const auto& wanted) {
    bool isThere = false;
    const std::string_view value = ValueInQuery(query, wanted.first, isThere);
    if (!isThere) return false;
    if (PlaceholderAt(wanted.second) != wanted.second.size()) return value == wanted.second;
    captures.named.emplace_back(wanted.second.substr(1), value);
    return true;
  });
}

const RedirectRule* RedirectRules::Match(std::string_view path, std::string_view query,
                                         bool isThere, std::string& to) const {
  path = WithoutEnd(path);
  std::vector<std::size_t> candidates = patterns_;
  if (const auto exact = exact_.find(path); exact != exact_.end()) {
    const auto middle = static_cast<std::ptrdiff_t>(candidates.size());
    candidates.insert(candidates.end(), exact->second.begin(), exact->second.end());
    std::inplace_merge(candidates.begin(), candidates.begin() + middle, candidates.end());
  }
  const RedirectRule* lastResort = nullptr;
  for (const std::size_t number : candidates) {
    const RedirectRule& rule = rules_[number];
    Captures captures;
    if ((isThere && !rule.isForced) || !Fits(number, path, query, captures)) continue;
    if (rule.hasConditions && lastResort != nullptr) continue;
    to = Filled(rule.to, captures);
    if (!rule.hasConditions) return &rule;
    lastResort = &rule;
  }
  return lastResort;
}

}  // namespace zvrsit
