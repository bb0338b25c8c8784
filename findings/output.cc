#include "findings/output.h"

#include <fmt/core.h>

#include <array>

#include "findings/formats.h"

namespace zvrsit {
namespace {

struct Format {
  std::string_view name;
  void (*append)(const FindingReport& report, std::string& out);
};
// In the order of FindingFormat. The text alone has a style, and stands first.
constexpr std::array<Format, 8> kFormats{{{"text", nullptr},
                                          {"json", AppendJson},
                                          {"jsonl", AppendJsonl},
                                          {"csv", AppendCsv},
                                          {"junit", AppendJunit},
                                          {"sarif", AppendSarif},
                                          {"github", AppendGithub},
                                          {"markdown", AppendMarkdown}}};

}  // namespace

std::string Counted(std::size_t count, const char* one) {
  return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::optional<FindingFormat> FormatOfName(std::string_view name) {
  for (std::size_t i = 0; i < kFormats.size(); ++i) {
    if (kFormats[i].name == name) return static_cast<FindingFormat>(i);
  }
  return std::nullopt;
}

std::string FormatFindings(const FindingReport& report, FindingFormat format,
                           const TextStyle& style) {
  std::string out;
  if (format == FindingFormat::kText) {
    AppendText(report, style, out);
  } else {
    kFormats[static_cast<std::size_t>(format)].append(report, out);
  }
  return out;
}

std::string PlaceText(const FindingReport& report, const FindingPlace& place) {
  const std::string file = report.prefix + place.file;
  return place.line > 0 ? fmt::format("{}:{}:{}", file, place.line, place.column) : file;
}

std::string CountedFindings(const FindingReport& report) {
  const std::size_t errors = report.Count(Severity::kError);
  const std::size_t warnings = report.Count(Severity::kWarning);
  if (errors + warnings == 0) return "nothing found";
  std::string text = errors > 0 ? Counted(errors, "error") : "";
  if (warnings > 0) text += (errors > 0 ? " and " : "") + Counted(warnings, "warning");
  return text + " in " + Counted(report.CountPlaces(), "place");
}

std::string UntoldSuggestion(const Finding& finding) {
  const bool isTold = finding.rule == Rule::kWrongCase || finding.rule == Rule::kExternalMoved;
  return isTold ? "" : finding.suggestion;
}

std::string FullMessage(const Finding& finding) {
  const std::string suggestion = UntoldSuggestion(finding);
  return suggestion.empty() ? finding.message
                            : finding.message + "; did you mean " + suggestion + "?";
}

}  // namespace zvrsit
