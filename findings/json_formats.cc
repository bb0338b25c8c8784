// Findings as JSON, JSON Lines and SARIF.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "findings/escapes.h"
#include "findings/formats.h"
#include "platform/version.h"

namespace zvrsit {
namespace {

using Json = nlohmann::ordered_json;

// Raised when a field changes its meaning or goes; not for new ones.
constexpr int kJsonVersion = 1;

std::string Dump(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json NumberOrNull(int number) {
  return number > 0 ? Json(number) : Json();
}

Json AsJson(const std::vector<std::string>& names) {
  Json array = Json::array();
  for (const std::string& name : names) array.push_back(JsonText(name));
  return array;
}

Json AsJson(const Finding& finding) {
  Json places = Json::array();
  for (const FindingPlace& place : finding.places) {
    places.push_back({{"file", JsonText(place.file)},
                      {"line", NumberOrNull(place.line)},
                      {"column", NumberOrNull(place.column)},
                      {"reference", JsonText(place.reference)}});
  }
  return {{"rule", TraitsOf(finding.rule).name},
          {"severity", SeverityName(finding.severity)},
          {"message", JsonText(finding.message)},
          {"target", JsonText(finding.target)},
          {"suggestion", finding.suggestion.empty() ? Json() : Json(JsonText(finding.suggestion))},
          {"count", finding.places.size()},
          {"places", std::move(places)}};
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

Json SarifLocation(const FindingPlace& place) {
  Json physical = {{"artifactLocation", {{"uri", UrlOfPath(place.file)}, {"uriBaseId", "SITE"}}}};
  if (place.line > 0) {
    physical["region"] = {{"startLine", place.line}, {"startColumn", place.column}};
  }
  return {{"physicalLocation", std::move(physical)}};
}

}  // namespace

// The findings are written one by one, as there may be many.
void AppendJson(const FindingReport& report, std::string& out) {
  const SiteTotals& totals = report.totals;
  std::string head = Dump({{"version", kJsonVersion},
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
    out += separator + Dump(AsJson(finding));
    separator = ",\n";
  }
  out += report.findings.empty() ? "]}\n" : "\n]}\n";
}

void AppendJsonl(const FindingReport& report, std::string& out) {
  for (const Finding& finding : report.findings) out += Dump(AsJson(finding)) + "\n";
}

void AppendSarif(const FindingReport& report, std::string& out) {
  const Json driver = {{"name", "zvrsit"}, {"version", Version()}, {"rules", SarifRules()}};
  out +=
      "{\"$schema\": \"https://json.schemastore.org/sarif-2.1.0.json\", \"version\": \"2.1.0\", ";
  out += "\"runs\": [{\"tool\": {\"driver\": " + Dump(driver) + "},\n";
  out += "\"columnKind\": \"unicodeCodePoints\", \"originalUriBaseIds\": {\"SITE\": {\"uri\": " +
         Dump("file://" + UrlOfPath(report.folder)) + "}},\n\"results\": [";
  const char* separator = "\n";
  for (const Finding& finding : report.findings) {
    for (const FindingPlace& place : finding.places) {
      out += separator + Dump({{"ruleId", TraitsOf(finding.rule).name},
                               {"ruleIndex", static_cast<int>(finding.rule)},
                               {"level", SeverityName(finding.severity)},
                               {"message", {{"text", JsonText(FullMessage(finding))}}},
                               {"locations", Json::array({SarifLocation(place)})}});
      separator = ",\n";
    }
  }
  out += "\n]}]}\n";
}

}  // namespace zvrsit
