#include "external/robots.h"

#include <algorithm>
#include <utility>

#include "util/ascii.h"

namespace zvrsit {
namespace {

std::string LowerWord(std::string_view text) {
  std::string lower(text);
  LowerAsciiLetters(lower);
  return lower;
}

std::string_view TrimmedLine(std::string_view text) {
  constexpr std::string_view kBlank = " \t\r";
  const std::size_t first = text.find_first_not_of(kBlank);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlank) + 1 - first);
}

// Whether the pattern matches the beginning of the path. Takes time in proportion to the product of
// both lengths at most.
bool MatchesRule(std::string_view pattern, std::string_view path) {
  const bool toEnd = pattern.ends_with('$');
  if (toEnd) pattern.remove_suffix(1);
  std::size_t at = 0, in = 0, star = pattern.npos, retry = 0;
  while (in < pattern.size() || (toEnd && at < path.size())) {
    if (in < pattern.size() && pattern[in] == '*') {
      star = in++;
      retry = at;
    } else if (in < pattern.size() && at < path.size() && pattern[in] == path[at]) {
      ++in;
      ++at;
    } else if (star != pattern.npos && retry < path.size()) {
      at = ++retry;
      in = star + 1;
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace

Robots::Robots(std::string_view text, std::string_view agent) {
  const std::string own = LowerWord(agent.substr(0, agent.find_first_of("/ ")));
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  std::vector<Line> forAll;
  bool isOwn = false, isForAll = false, inNames = false, hasOwn = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    line = line.substr(0, line.find('#'));
    const std::size_t colon = line.find(':');
    if (colon == line.npos) continue;
    const std::string key = LowerWord(TrimmedLine(line.substr(0, colon)));
    const std::string_view value = TrimmedLine(line.substr(colon + 1));
    if (key == "user-agent") {
      if (!inNames) isOwn = isForAll = false;
      inNames = true;
      isForAll = isForAll || value == "*";
      isOwn = isOwn || (!own.empty() && LowerWord(value) == own);
      hasOwn = hasOwn || isOwn;
    } else if (key == "allow" || key == "disallow") {
      inNames = false;
      if (value.empty()) continue;
      if (isOwn) lines_.push_back({std::string(value), key == "allow"});
      if (isForAll) forAll.push_back({std::string(value), key == "allow"});
    }
  }
  if (!hasOwn) lines_ = std::move(forAll);
}

bool Robots::Allows(std::string_view path) const {
  const Line* best = nullptr;
  for (const Line& line : lines_) {
    const bool isLonger =
        best == nullptr || line.pattern.size() > best->pattern.size() ||
        (line.pattern.size() == best->pattern.size() && line.allows && !best->allows);
    if (isLonger && MatchesRule(line.pattern, path)) best = &line;
  }
  return best == nullptr || best->allows;
}

}  // namespace zvrsit
