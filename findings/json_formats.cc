// Findings as JSON, JSON Lines and SARIF.
#include <fmt/core.h>
#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "findings/dump_json.h"
#include "findings/escapes.h"
#include "findings/formats.h"
#include "platform/version.h"

namespace zvrsit {
namespace {

using Json = nlohmann::ordered_json;

// Raised when a field changes its meaning or goes; not for new ones.
constexpr int kJsonVersion = 1;

Json AsJson(const std::vector<std::string>& names) {
  Json array = Json::array();
  for (const std::string& name : names) array.push_back(JsonText(name));
  return array;
}

void AppendField(std::string& out, std::string_view key, std::string_view text) {
  out += key;
  AppendJsonString(out, text);
}

void AppendField(std::string& out, std::string_view key, int number) {
  out += key;
  out += number > 0 ? fmt::format_int(number).str() : "null";
}

void AppendFinding(const Finding& finding, std::string& out) {
  AppendField(out, "{\"rule\":", TraitsOf(finding.rule).name);
  AppendField(out, ",\"severity\":", SeverityName(finding.severity));
  AppendField(out, ",\"message\":", finding.message);
  AppendField(out, ",\"target\":", finding.target);
  if (finding.suggestion.empty()) {
    out += ",\"suggestion\":null";
  } else {
    AppendField(out, ",\"suggestion\":", finding.suggestion);
  }
  AppendField(out, ",\"count\":", static_cast<int>(finding.places.size()));
  out += ",\"places\":";
  char separator = '[';
  for (const FindingPlace& place : finding.places) {
    out += separator;
    AppendField(out, "{\"file\":", place.file);
    AppendField(out, ",\"line\":", place.line);
    AppendField(out, ",\"column\":", place.column);
    AppendField(out, ",\"reference\":", place.reference);
    out += '}';
    separator = ',';
  }
  out += "]}";
}

Json SarifRules() {
  Json rules = Json::array();
  for (const RuleTraits& rule : kRules) {
    const bool isOff = rule.severity == Severity::kOff;
    rules.push_back(
        {{"id", rule.name},
         {"shortDescription", {{"text", rule.summary}}},
         {"defaultConfiguration",
          {{"enabled", !isOff}, {"level", isOff ? "none" : SeverityName(rule.severity)}}}});
  }
  return rules;
}

void AppendSarifResult(const Finding& finding, const FindingPlace& place, std::string& out) {
  AppendField(out, "{\"ruleId\":", TraitsOf(finding.rule).name);
  out += fmt::format(",\"ruleIndex\":{}", static_cast<int>(finding.rule));
  AppendField(out, ",\"level\":", SeverityName(finding.severity));
  AppendField(out, ",\"message\":{\"text\":", FullMessage(finding));
  AppendField(out, "},\"locations\":[{\"physicalLocation\":{\"artifactLocation\":{\"uri\":",
              UrlOfPath(place.file));
  out += ",\"uriBaseId\":\"SITE\"}";
  if (place.line > 0) {
    out += fmt::format(",\"region\":{{\"startLine\":{},\"startColumn\":{}}}", place.line,
                       place.column);
  }
  out += "}}]}";
}

}  // namespace

// The findings are written one by one, as there may be many.
void AppendJson(const FindingReport& report, std::string& out) {
  const SiteTotals& totals = report.totals;
  std::string head = DumpJson({{"version", kJsonVersion},
                               {"folder", JsonText(report.folder)},
                               {"files", totals.files},
                               {"pages", totals.pages},
                               {"sheets", totals.sheets},
                               {"links", totals.links},
                               {"urls", totals.urls},
                               {"seconds", report.seconds},
                               {"errors", report.Count(Severity::kError)},
                               {"warnings", report.Count(Severity::kWarning)},
                               {"places", report.CountPlaces()},
                               {"changed", AsJson(report.changed)},
                               {"gone", AsJson(report.gone)},
                               {"new", AsJson(report.added)},
                               {"unread", AsJson(report.unread)}});
  head.pop_back();
  out += head + ",\n\"findings\": [";
  const char* separator = "\n";
  for (const Finding& finding : report.findings) {
    out += separator;
    AppendFinding(finding, out);
    separator = ",\n";
  }
  out += report.findings.empty() ? "]}\n" : "\n]}\n";
}

void AppendJsonl(const FindingReport& report, std::string& out) {
  for (const Finding& finding : report.findings) {
    AppendFinding(finding, out);
    out += '\n';
  }
}

void AppendSarif(const FindingReport& report, std::string& out) {
  const Json driver = {{"name", "zvrsit"}, {"version", Version()}, {"rules", SarifRules()}};
  out +=
      "{\"$schema\": \"https://json.schemastore.org/sarif-2.1.0.json\", \"version\": \"2.1.0\", ";
  out += "\"runs\": [{\"tool\": {\"driver\": " + DumpJson(driver) + "},\n";
  out += "\"columnKind\": \"unicodeCodePoints\", \"originalUriBaseIds\": {\"SITE\": {\"uri\": " +
         DumpJson("file://" + UrlOfPath(report.folder)) + "}},\n\"results\": [";
  const char* separator = "\n";
  for (const Finding& finding : report.findings) {
    for (const FindingPlace& place : finding.places) {
      out += separator;
      AppendSarifResult(finding, place, out);
      separator = ",\n";
    }
  }
  out += "\n]}]}\n";
}

}  // namespace zvrsit
