#include "findings/ignores.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

namespace zvrsit {
namespace {

bool MatchesAny(const std::vector<std::string>& patterns, std::string_view name) {
  return std::ranges::any_of(
      patterns, [name](const std::string& pattern) { return MatchesGlob(pattern, name); });
}

// A name with the separators of patterns.
std::string WithSlashes(std::string name) {
  if constexpr (std::filesystem::path::preferred_separator != '/') {
    std::ranges::replace(name, '\\', '/');
  }
  return name;
}

}  // namespace

bool MatchesGlob(std::string_view pattern, std::string_view name) {
  std::string whole(pattern);
  if (pattern.find('/') == pattern.npos) {
    name = name.substr(name.rfind('/') + 1);
  } else if (pattern.ends_with('/')) {
    whole += "**";
  }
  // reached[i]: the first i characters of the pattern match what was read of the name.
  std::vector<char> reached(whole.size() + 1), next(whole.size() + 1);
  const auto isStar = [&](std::size_t i) { return i < whole.size() && whole[i] == '*'; };
  const auto passStars = [&](std::vector<char>& states) {
    for (std::size_t i = 0; i < whole.size(); ++i) states[i + 1] |= states[i] && isStar(i);
  };
  reached[0] = 1;
  passStars(reached);
  for (const char c : name) {
    std::ranges::fill(next, 0);
    for (std::size_t i = 0; i < whole.size(); ++i) {
      const bool isDouble = isStar(i) && (isStar(i + 1) || (i > 0 && isStar(i - 1)));
      if (isStar(i)) {
        next[i] |= reached[i] && (c != '/' || isDouble);
      } else if (whole[i] == c || (whole[i] == '?' && c != '/')) {
        next[i + 1] |= reached[i];
      }
    }
    passStars(next);
    reached.swap(next);
  }
  return reached[whole.size()] != 0;
}

bool Ignores::HaveFile(const std::string& file) const {
  return !files.empty() && MatchesAny(files, WithSlashes(file));
}

bool Ignores::HaveTarget(const std::string& target) const {
  return !targets.empty() && !target.empty() && MatchesAny(targets, WithSlashes(target));
}

void Ignores::TakeOut(FindingReport& report) const {
  if (files.empty() && targets.empty()) return;
  std::unordered_map<std::string, bool> known;
  const auto isIgnored = [&](const FindingPlace& place) {
    const auto [entry, isNew] = known.try_emplace(place.file);
    if (isNew) entry->second = HaveFile(place.file);
    return entry->second || (!place.reference.empty() && MatchesAny(targets, place.reference));
  };
  std::erase_if(report.findings, [&](Finding& finding) {
    if (HaveTarget(finding.target)) return true;
    std::erase_if(finding.places, isIgnored);
    return finding.places.empty();
  });
}

}  // namespace zvrsit
