#include "findings/rules.h"

#include <algorithm>

namespace zvrsit {
namespace {

constexpr std::array<std::string_view, 3> kSeverityNames{"off", "warning", "error"};

}  // namespace

std::vector<std::string> RuleNames() {
  std::vector<std::string> names(kRules.size());
  std::ranges::transform(kRules, names.begin(), &RuleTraits::name);
  return names;
}

std::optional<Rule> RuleOfName(std::string_view name) {
  const auto found = std::ranges::find(kRules, name, &RuleTraits::name);
  if (found == kRules.end()) return std::nullopt;
  return static_cast<Rule>(found - kRules.begin());
}

std::string_view SeverityName(Severity severity) {
  return kSeverityNames[static_cast<std::size_t>(severity)];
}

std::optional<Severity> SeverityOfName(std::string_view name) {
  const auto found = std::ranges::find(kSeverityNames, name);
  if (found == kSeverityNames.end()) return std::nullopt;
  return static_cast<Severity>(found - kSeverityNames.begin());
}

Severities::Severities() {
  std::ranges::transform(kRules, severities_.begin(), &RuleTraits::severity);
}

void Severities::KeepLinks() {
  for (const Rule rule : {Rule::kOrphanPage, Rule::kUnusedFile, Rule::kDuplicateId}) {
    Set(rule, Severity::kOff);
  }
}

}  // namespace zvrsit
