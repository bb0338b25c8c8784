// Findings as CSV, JUnit XML, workflow commands and Markdown.
#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <vector>

#include "findings/escapes.h"
#include "findings/formats.h"
#include "platform/code_page.h"
#include "platform/native_path.h"

namespace zvrsit {
namespace {

std::string CommandText(std::string_view text) {
  static constexpr Replacements kEscapes{{'%', "%25"}, {'\r', "%0D"}, {'\n', "%0A"}};
  return WithoutControls(kEscapes.In(platform::ToUtf8(text)));
}

// The same for a property, which "," or ":" would end.
std::string CommandProperty(std::string_view text) {
  static constexpr Replacements kEscapes{{',', "%2C"}, {':', "%3A"}};
  return kEscapes.In(CommandText(text));
}

std::string MarkdownText(std::string_view text) {
  static constexpr Replacements kMarks{{'\\', "\\\\"}, {'|', "\\|"}, {'`', "\\`"}, {'*', "\\*"},
                                       {'_', "\\_"},   {'[', "\\["}, {']', "\\]"}, {'<', "&lt;"},
                                       {'&', "&amp;"}, {'~', "\\~"}};
  return kMarks.In(platform::ToUtf8(LineText(text)));
}

std::string NumberText(int number) {
  return number > 0 ? std::to_string(number) : "";
}

}  // namespace

void AppendCsv(const FindingReport& report, std::string& out) {
  out += "rule,severity,file,line,column,reference,target,message,suggestion\r\n";
  for (const Finding& finding : report.findings) {
    const std::string_view rule = TraitsOf(finding.rule).name;
    for (const FindingPlace& place : finding.places) {
      out += fmt::format("{},{},{},{},{},{},{},{},{}\r\n", rule, SeverityName(finding.severity),
                         CsvField(JsonText(place.file)), NumberText(place.line),
                         NumberText(place.column), CsvField(JsonText(place.reference)),
                         CsvField(JsonText(finding.target)), CsvField(JsonText(finding.message)),
                         CsvField(JsonText(finding.suggestion)));
    }
  }
}

namespace {

void AppendTestCase(const FindingReport& report, const Finding& finding, std::string& out) {
  const std::string_view rule = TraitsOf(finding.rule).name;
  const bool isError = finding.severity == Severity::kError;
  const std::string message = XmlText(FullMessage(finding));
  out += fmt::format("<testcase classname=\"{}\" name=\"{}\">", rule, XmlText(finding.target));
  out += isError ? fmt::format("<failure message=\"{}\" type=\"{}\">", message, rule)
                 : "<system-out>" + message + "\n";
  for (const FindingPlace& place : finding.places) {
    out += XmlText(PlaceText(report, place)) + "\n";
  }
  out += isError ? "</failure></testcase>\n" : "</system-out></testcase>\n";
}

}  // namespace

// A rule without a finding is a test that passed. A warning passes too, and is shown.
void AppendJunit(const FindingReport& report, std::string& out) {
  std::array<std::vector<const Finding*>, kRuleCount> byRule;
  for (const Finding& finding : report.findings) {
    byRule[static_cast<std::size_t>(finding.rule)].push_back(&finding);
  }
  out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"zvrsit\">\n";
  for (std::size_t i = 0; i < kRuleCount; ++i) {
    const auto failures = std::ranges::count(byRule[i], Severity::kError, &Finding::severity);
    out += fmt::format(
        "<testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\" skipped=\"0\">\n",
        kRules[i].name, std::max<std::size_t>(byRule[i].size(), 1), failures);
    if (byRule[i].empty()) {
      out += fmt::format("<testcase classname=\"{0}\" name=\"{0}\"/>\n", kRules[i].name);
    }
    for (const Finding* finding : byRule[i]) AppendTestCase(report, *finding, out);
    out += "</testsuite>\n";
  }
  out += "</testsuites>\n";
}

void AppendGithub(const FindingReport& report, std::string& out) {
  for (const Finding& finding : report.findings) {
    const FindingPlace& place = finding.places.front();
    out += fmt::format("::{} file={}", SeverityName(finding.severity),
                       CommandProperty(report.prefix + place.file));
    if (place.line > 0) out += fmt::format(",line={},col={}", place.line, place.column);
    out += fmt::format(",title={}::{}", TraitsOf(finding.rule).name,
                       CommandText(FullMessage(finding)));
    if (finding.places.size() > 1) out += fmt::format(" (in {} places)", finding.places.size());
    out += '\n';
  }
}

void AppendMarkdown(const FindingReport& report, std::string& out) {
  out += CountedFindings(report) + "\n";
  if (report.findings.empty()) return;
  out += "\n| | place | what | rule |\n|---|---|---|---|\n";
  for (const Finding& finding : report.findings) {
    const std::size_t others = finding.places.size() - 1;
    out += fmt::format("| {} | {}{} | {} | {} |\n", SeverityName(finding.severity),
                       MarkdownText(PlaceText(report, finding.places.front())),
                       others > 0 ? fmt::format(" and {} more", others) : "",
                       MarkdownText(FullMessage(finding)), TraitsOf(finding.rule).name);
  }
}

std::string UrlOfPath(std::string_view native) {
  constexpr std::string_view kPlain = "-._~/!$&'()*+,;=@";
  std::string url;
  for (const char c : platform::ToUtf8(native)) {
    const bool isLetter =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (isLetter || kPlain.find(c) != kPlain.npos) {
      url += c;
    } else if (c == '\\' && platform::kNamesIgnoreCase) {
      url += '/';
    } else {
      url += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return url;
}

}  // namespace zvrsit
