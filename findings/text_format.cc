// Findings for people: a line each, as compilers write them, and its other places below it.
#include <fmt/core.h>

#include <algorithm>

#include "findings/escapes.h"
#include "findings/formats.h"

namespace zvrsit {
namespace {

// How many of its places are named with a finding.
constexpr std::size_t kNamedPlaces = 4;

class TextFormat {
 public:
  TextFormat(const FindingReport& report, const TextStyle& style, std::string& out)
      : report_(report), style_(style), out_(out) {}

  void Append(const Finding& finding) {
    if (style_.all) {
      for (const FindingPlace& place : finding.places) AppendHead(finding, place);
      return;
    }
    AppendHead(finding, finding.places.front());
    AppendOthers(finding);
  }

  void AppendTotals() {
    const SiteTotals& totals = report_.totals;
    const auto counted = [](int count, const char* one) {
      return Counted(static_cast<std::size_t>(count), one);
    };
    out_ += fmt::format("{}; {}, {} and {} looked at in {:.2f} s\n", CountedFindings(report_),
                        counted(totals.pages, "page"), counted(totals.sheets, "style sheet"),
                        counted(totals.links, "link"), report_.seconds);
  }

 private:
  void AppendHead(const Finding& finding, const FindingPlace& place) {
    AppendPlace(place, "1");
    out_ += ": ";
    AppendSeverity(finding.severity);
    out_ += " " + LineText(finding.message);
    if (!place.reference.empty() && place.reference != finding.target) {
      out_ += " (" + LineText(place.reference) + ")";
    }
    out_ += " ";
    AppendColored("[" + std::string(TraitsOf(finding.rule).name) + "]", "2");
    out_ += '\n';
    const std::string suggestion = style_.mended ? "" : UntoldSuggestion(finding);
    if (!suggestion.empty()) out_ += "    did you mean " + LineText(suggestion) + "?\n";
  }

  void AppendSeverity(Severity severity) {
    if (style_.mended) return AppendColored("mended:", "1;32");
    const bool isError = severity == Severity::kError;
    AppendColored(std::string(SeverityName(severity)) + ":", isError ? "1;31" : "1;35");
  }

  void AppendOthers(const Finding& finding) {
    const std::size_t count = finding.places.size();
    if (count < 2) return;
    out_ += "    also ";
    const std::size_t named = std::min(count, kNamedPlaces);
    for (std::size_t i = 1; i < named; ++i) {
      if (i > 1) out_ += ", ";
      AppendPlace(finding.places[i], "");
    }
    if (count > named) {
      out_ +=
          fmt::format(" and {} more {}", count - named, count - named == 1 ? "place" : "places");
    }
    out_ += '\n';
  }

  void AppendPlace(const FindingPlace& place, const char* color) {
    if (style_.hyperlinks) {
      out_ += "\x1b]8;;file://" + UrlOfPath(report_.folder + place.file) + "\x1b\\";
    }
    AppendColored(LineText(PlaceText(report_, place)), color);
    if (style_.hyperlinks) out_ += "\x1b]8;;\x1b\\";
  }

  void AppendColored(const std::string& text, std::string_view color) {
    if (!style_.colors || color.empty()) {
      out_ += text;
    } else {
      out_ += fmt::format("\x1b[{}m{}\x1b[0m", color, text);
    }
  }

  const FindingReport& report_;
  const TextStyle& style_;
  std::string& out_;
};

}  // namespace

void AppendText(const FindingReport& report, const TextStyle& style, std::string& out) {
  TextFormat text(report, style, out);
  for (const Finding& finding : report.findings) text.Append(finding);
  if (style.totals) text.AppendTotals();
}

}  // namespace zvrsit
