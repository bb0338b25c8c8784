// Findings as text for people, and in the formats of other programs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "findings/finding.h"

namespace zvrsit {

enum class FindingFormat {
  kText,
  kJson,      // docs/findings.schema.json
  kJsonl,     // an object a line: each finding as in kJson
  kCsv,       // RFC 4180, a row a place
  kJunit,     // a test suite a rule, a test case a finding
  kSarif,     // 2.1.0, a result a place
  kGithub,    // workflow commands, one a finding
  kMarkdown,  // a table
};

// "text", "json" and so on; nothing for any other name.
std::optional<FindingFormat> FormatOfName(std::string_view name);

// How kText looks.
struct TextStyle {
  bool colors = false;
  bool hyperlinks = false;  // of terminals (OSC 8)
  bool totals = true;       // a last line of them
  bool all = false;         // every place of a finding, not only the first ones
  bool mended = false;      // the findings are no longer there
};

// The whole report in that format. Order and bytes depend on the report alone.
std::string FormatFindings(const FindingReport& report, FindingFormat format,
                           const TextStyle& style = {});

}  // namespace zvrsit
