#include "web/earlier_report.h"

#include <algorithm>

#include <nlohmann/json.hpp>
#include <unordered_set>

#include "platform/version.h"
#include "web/finding_id.h"
#include "web/json_text.h"
#include "web/site_view.h"

namespace zvrsit {
namespace {

using Json = nlohmann::json;

constexpr int kVersion = 1;  // raised when a field changes its meaning or goes

std::string TextOf(const Json& object, const char* key) {
  const auto found = object.find(key);
  return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

// The array of that name; an empty one for none.
const Json& ListOf(const Json& object, const char* key) {
  static const Json kNone = Json::array();
  const auto found = object.find(key);
  return found != object.end() && found->is_array() ? *found : kNone;
}
const Json& ObjectOf(const Json& object, const char* key) {
  static const Json kNone = Json::object();
  const auto found = object.find(key);
  return found != object.end() && found->is_object() ? *found : kNone;
}

// Empty for none.
std::string_view SummaryIn(std::string_view page) {
  const std::size_t at = page.find(kSummaryBegin);
  if (at == page.npos) return {};
  page.remove_prefix(at + kSummaryBegin.size());
  return page.substr(0, page.find(kScriptEnd));
}

}  // namespace

std::string SummaryJson(const ViewedSite& site, const FindingReport& report) {
  std::string out = "{\"version\":" + std::to_string(kVersion) + ",";
  AppendField(out, "program", Version());
  AppendField(out += ',', "made", site.made);
  AppendField(out += ",\"site\":{", "name", site.name);
  AppendField(out += ',', "folder", site.folder);
  out += "},\n\"totals\":" + TotalsJson(report) + ",\n";
  AppendArray(out, "rules", site.rules,
              [&](const std::string& rule) { AppendJsonString(out, rule); });
  out += ",\n";
  AppendArray(out, "findings", report.findings, [&](const Finding& finding) {
    AppendField(out += "\n{", "id", IdOf(finding));
    AppendField(out += ',', "rule", TraitsOf(finding.rule).name);
    AppendField(out += ',', "severity", SeverityName(finding.severity));
    AppendField(out += ',', "target", finding.target);
    AppendField(out += ',', "message", finding.message);
    out += ",\"places\":";
    AppendNumber(out, static_cast<std::int64_t>(finding.places.size()));
    out += '}';
  });
  return out + "}";
}

bool IsReport(std::string_view page) {
  return !SummaryIn(page).empty();
}

std::optional<EarlierReport> ReadReport(std::string_view page) {
  const Json json = Json::parse(SummaryIn(page), nullptr, false);
  if (!json.is_object()) return std::nullopt;
  const auto version = json.find("version");
  if (version == json.end() || *version != kVersion) return std::nullopt;
  EarlierReport report;
  report.made = TextOf(json, "made");
  report.folder = TextOf(ObjectOf(json, "site"), "folder");
  for (const auto& [name, value] : ObjectOf(json, "totals").items()) {
    if (value.is_number_integer()) report.totals[name] = value.get<std::int64_t>();
  }
  for (const Json& rule : ListOf(json, "rules")) {
    if (rule.is_string()) report.rules.push_back(rule.get<std::string>());
  }
  for (const Json& finding : ListOf(json, "findings")) {
    if (!finding.is_object()) continue;
    report.findings.push_back({TextOf(finding, "id"), TextOf(finding, "rule"),
                               TextOf(finding, "severity"), TextOf(finding, "target"),
                               TextOf(finding, "message")});
  }
  return report;
}

SinceThen Compare(const EarlierReport& earlier, const ViewedSite& site,
                  const FindingReport& report) {
  const auto holds = [](const std::vector<std::string>& rules, std::string_view rule) {
    return std::ranges::find(rules, rule) != rules.end();
  };
  std::unordered_set<std::string> before;
  for (const EarlierFinding& finding : earlier.findings) before.insert(finding.id);
  std::unordered_set<std::string> now;
  SinceThen since;
  for (std::size_t i = 0; i < report.findings.size(); ++i) {
    const std::string id = IdOf(report.findings[i]);
    now.insert(id);
    const std::string_view rule = TraitsOf(report.findings[i].rule).name;
    if (!before.contains(id) && holds(earlier.rules, rule)) since.added.push_back(i);
  }
  for (const EarlierFinding& finding : earlier.findings) {
    if (!now.contains(finding.id) && holds(site.rules, finding.rule)) {
      since.mended.push_back(finding);
    }
  }
  return since;
}

}  // namespace zvrsit
