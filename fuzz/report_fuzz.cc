// Findings with any texts, in every format; the report of a site, read back; and what was no
// report.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "findings/compare.h"
#include "findings/output.h"
#include "fuzz/target.h"
#include "platform/code_page.h"
#include "support/temp_folder.h"
#include "web/report.h"

namespace zvrsit::fuzz {
namespace {

using nlohmann::json;

// Texts, ended by zeros.
class Texts {
 public:
  explicit Texts(std::string_view bytes) : rest_(bytes) {}
  bool atEnd() const { return rest_.empty(); }
  std::string Next() {
    const std::size_t end = std::min(rest_.find('\0'), rest_.size());
    std::string text(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return text;
  }
  int Number() { return static_cast<int>(Next().size()); }

 private:
  std::string_view rest_;
};

FindingReport ReportOf(Texts& texts) {
  FindingReport report;
  report.prefix = texts.Next();
  report.changed = {texts.Next()};
  while (!texts.atEnd() && report.findings.size() < 20) {
    Finding finding;
    const int kind = texts.Number();
    finding.rule = static_cast<Rule>(kind % static_cast<int>(kRuleCount));
    finding.severity = kind % 2 == 0 ? Severity::kError : Severity::kWarning;
    finding.target = texts.Next();
    finding.message = texts.Next();
    finding.suggestion = texts.Next();
    const std::string file = texts.Next();
    finding.places = {{"page.html", texts.Number(), texts.Number(), texts.Next()},
                      {file, 0, 0, ""}};
    // A report has one finding of a rule about a target.
    const auto isSame = [&](const Finding& other) {
      return other.rule == finding.rule && other.target == finding.target;
    };
    if (std::ranges::none_of(report.findings, isSame))
      report.findings.push_back(std::move(finding));
  }
  return report;
}

[[noreturn]] void Fail(std::string_view what, const std::string& text) {
  std::cerr << what << ":\n" << text << "\n";
  std::abort();
}

void NeedJson(const std::string& text) {
  if (!json::accept(text)) Fail("no JSON", text);
}

// No byte of it moves a cursor, changes a colour or begins another command.
void NeedPlain(const std::string& text) {
  const bool isPlain = std::ranges::all_of(
      text, [](char c) { return c == '\n' || c == '\t' || (c & 0xE0) != 0 || c < 0; });
  if (!isPlain || text.find('\x7F') != text.npos) Fail("a control character", text);
}

// Every line feed of a text in commands ends a command.
void NeedCommands(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    if (text.compare(at, 2, "::") != 0) Fail("no command", text.substr(at));
    if (text.find('\n', at) == text.npos) return;
  }
}

// Elements are closed, and no text opens one.
void NeedMarkup(const std::string& text) {
  int depth = 0;
  for (std::size_t at = 0; (at = text.find('<', at)) != text.npos; ++at) {
    const std::size_t end = text.find('>', at);
    if (end == text.npos || text.find('<', at + 1) < end) Fail("no markup", text.substr(at));
    if (text[at + 1] == '?' || text[end - 1] == '/') continue;
    depth += text[at + 1] == '/' ? -1 : 1;
    if (depth < 0) Fail("closed twice", text);
  }
  if (depth != 0) Fail("not closed", text);
}

void WriteAll(const FindingReport& report) {
  NeedJson(FormatFindings(report, FindingFormat::kJson));
  NeedJson(FormatFindings(report, FindingFormat::kSarif));
  std::string lines = FormatFindings(report, FindingFormat::kJsonl);
  for (std::size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1) {
    NeedJson(lines.substr(at, lines.find('\n', at) - at));
  }
  TextStyle all;
  all.all = true;
  NeedPlain(FormatFindings(report, FindingFormat::kText));
  NeedPlain(FormatFindings(report, FindingFormat::kText, all));
  NeedPlain(FormatFindings(report, FindingFormat::kMarkdown));
  NeedCommands(FormatFindings(report, FindingFormat::kGithub));
  NeedMarkup(FormatFindings(report, FindingFormat::kJunit));
  (void)FormatFindings(report, FindingFormat::kCsv);
}

std::size_t CountOf(std::string_view part, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++count;
  return count;
}

// The report of a site with one page, which is the rest of the input.
void WritePage(const FindingReport& report, const std::string& folder) {
  SiteView view;
  view.site.folder = folder;
  view.site.name = report.prefix;
  view.report = report;
  for (const RuleTraits& rule : kRules) view.site.rules.emplace_back(rule.name);
  view.mending = {"zvrsit", "demo", folder, {}};
  NeedJson(SiteViewJson(view));
  const std::string page = ReportPage(view);
  SiteView empty;
  empty.site.folder = folder;
  const std::string bare = ReportPage(empty);
  for (const std::string_view part : {"<script", "</script", "<style", "<!--"}) {
    if (CountOf(part, page) != CountOf(part, bare)) Fail("other elements", std::string(part));
  }
  const std::optional<EarlierReport> read = ReadReport(page);
  if (!IsReport(page) || !read || read->findings.size() != report.findings.size()) {
    Fail("not read back", page.substr(0, 2000));
  }
  const SinceThen since = Compare(*read, view.site, report);
  if (!since.added.empty() || !since.mended.empty()) Fail("something has changed", "");
  view.earlier = read;
  NeedJson(SiteViewJson(view));
}

void ReadFindings(std::string_view text) {
  static const test::TempFolder folder;
  Texts texts(text);
  FindingReport report = ReportOf(texts);
  report.folder = folder.native() + "/";
  folder.write("page.html", text);
  WriteAll(report);
  WritePage(report, report.folder);
  std::vector<Finding> before = report.findings;
  std::vector<Finding> after = report.findings;
  TakeOutShared(before, after);
  if (!before.empty() || !after.empty()) Fail("not the same", "");
}

void ReadEarlier(std::string_view page) {
  const std::optional<EarlierReport> earlier = ReadReport(page);
  if (!earlier) return;
  SiteView view;
  view.site.folder = "/";
  for (const RuleTraits& rule : kRules) view.site.rules.emplace_back(rule.name);
  view.earlier = earlier;
  NeedJson(SiteViewJson(view));
}

// The first byte chooses the code page and what the rest is.
void ReadReportInput(std::string_view input) {
  if (input.empty()) return;
  platform::SetCodePage((input[0] & 2) == 0 ? platform::kUtf8 : 932);
  if ((input[0] & 1) == 0) {
    ReadFindings(input.substr(1));
  } else {
    ReadEarlier(input.substr(1));
  }
}

std::vector<std::string> ReportSeeds() {
  using namespace std::string_literals;
  const std::string head(kSummaryBegin);
  return {
      "0../\0a.html\0\0img/x.gif\0img/x.gif is not there\0img/X.gif\0b.html\0ab\0abc\0x.gif\0"s
      "aaa\0http://u:p@h/\0answers 404\0\0c.html\0\0\0\0"s,
      "0\0\0a\0<script>&\"'\xE9\x1B[31m\n::error::x%0A|`]]>\0=1+1\0\0--><!--\0a\0\0\xE2\x80\xAE\0"s,
      "2\0\0aa\0\x83\x5C\x83\0\x81\0\0\xFF\0a\0a\0\x83\x5C\0"s,
      "1" + head +
          "{\"version\":1,\"made\":\"x\",\"site\":{\"folder\":\"/a/\"},\"totals\":{\"files\":1},"
          "\"rules\":[\"missing-file\"],\"findings\":[{\"id\":\"1\",\"rule\":\"missing-file\","
          "\"severity\":\"error\",\"target\":\"a\",\"message\":\"b\"}]}</script>",
      "1" + head +
          "{\"version\":1,\"totals\":{\"a\":1e9,\"b\":18446744073709551615},\"findings\":[1]}"};
}

}  // namespace

const Target kReportTarget = {"report", &ReadReportInput, &ReportSeeds};

}  // namespace zvrsit::fuzz
