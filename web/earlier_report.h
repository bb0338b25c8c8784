// What has changed since a report that was written before. For this each report holds, in its
// element `summary`, a JSON object that other programs may read as well (docs/report.md):
//
// { "version": 1, "program": "0.2.0", "made": "2026-11-22T20:15:00Z",
//   "site": {"name", "folder"}, "totals": as in web/site_view.h,
//   "rules": ["missing-file", ...],    // those that the site was held against
//   "findings": [{"id", "rule", "severity", "target", "message", "places": how many}...] }
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"

namespace zvrsit {

struct ViewedSite;

std::string SummaryJson(const ViewedSite& site, const FindingReport& report);

// Texts are as they stand in the JSON, decoded.
struct EarlierFinding {
  std::string id;
  std::string rule;
  std::string severity;
  std::string target;
  std::string message;
};
struct EarlierReport {
  std::string made;
  std::string folder;
  std::map<std::string, std::int64_t> totals;
  std::vector<std::string> rules;
  std::vector<EarlierFinding> findings;
};
// What stands before the summary in a page.
inline constexpr std::string_view kSummaryBegin =
    "<script type=\"application/json\" id=\"summary\">";
inline constexpr std::string_view kScriptEnd = "</script>";
// Whether a file is a report.
bool IsReport(std::string_view page);
// Reads the summary of a page; nothing for what is no report, or one of a later program.
std::optional<EarlierReport> ReadReport(std::string_view page);

// What is new, and what is no longer there. What a rule tells that only one of the reports has held
// the site against is neither.
struct SinceThen {
  std::vector<std::size_t> added;  // indexes of findings, ascending
  std::vector<EarlierFinding> mended;
};
SinceThen Compare(const EarlierReport& earlier, const ViewedSite& site,
                  const FindingReport& report);

}  // namespace zvrsit
