#include "findings/compare.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

namespace zvrsit {
namespace {

using Key = std::pair<std::string_view, std::string_view>;  // file and reference

// The places of one finding, as they are to be matched.
std::map<Key, std::vector<FindingPlace*>> Grouped(Finding& finding) {
  std::map<Key, std::vector<FindingPlace*>> groups;
  for (FindingPlace& place : finding.places) {
    groups[{place.file, place.reference}].push_back(&place);
  }
  return groups;
}

bool StandsBefore(const FindingPlace* a, const FindingPlace* b) {
  return std::tie(a->line, a->column) < std::tie(b->line, b->column);
}

// Appends as many places of each of two lists as the shorter one has. Both are in the order of
// lines.
void Match(const std::vector<FindingPlace*>& before, const std::vector<FindingPlace*>& after,
           std::vector<const FindingPlace*>& shared) {
  std::vector<const FindingPlace*> left;
  std::vector<const FindingPlace*> right;
  std::ranges::set_difference(before, after, std::back_inserter(left), &StandsBefore);
  std::ranges::set_difference(after, before, std::back_inserter(right), &StandsBefore);
  std::ranges::set_intersection(before, after, std::back_inserter(shared), &StandsBefore);
  std::ranges::set_intersection(after, before, std::back_inserter(shared), &StandsBefore);
  const auto count = static_cast<std::ptrdiff_t>(std::min(left.size(), right.size()));
  shared.insert(shared.end(), left.begin(), left.begin() + count);
  shared.insert(shared.end(), right.begin(), right.begin() + count);
}

void TakeOut(std::vector<const FindingPlace*>& shared, std::vector<Finding>& findings) {
  std::ranges::sort(shared);
  for (Finding& finding : findings) {
    std::vector<FindingPlace> rest;
    for (FindingPlace& place : finding.places) {
      if (!std::ranges::binary_search(shared, &place)) rest.push_back(std::move(place));
    }
    finding.places = std::move(rest);
  }
  std::erase_if(findings, [](const Finding& finding) { return finding.places.empty(); });
}

}  // namespace

void TakeOutShared(std::vector<Finding>& before, std::vector<Finding>& after) {
  std::map<std::tuple<Rule, Severity, std::string_view>, Finding*> known;
  for (Finding& finding : before) {
    known[{finding.rule, finding.severity, finding.target}] = &finding;
  }
  std::vector<const FindingPlace*> shared;
  for (Finding& finding : after) {
    const auto same = known.find({finding.rule, finding.severity, finding.target});
    if (same == known.end()) continue;
    auto groups = Grouped(*same->second);
    for (auto& [key, places] : Grouped(finding)) {
      const auto others = groups.find(key);
      if (others != groups.end()) Match(others->second, places, shared);
    }
  }
  TakeOut(shared, before);
  TakeOut(shared, after);
}

}  // namespace zvrsit
