#include "web/site_view.h"

#include <fmt/format.h>

#include <string_view>
#include <unordered_map>

#include "findings/dump_json.h"
#include "findings/known_files.h"
#include "platform/version.h"
#include "web/finding_id.h"
#include "web/json_text.h"

namespace zvrsit {
namespace {

// `"key":"text"`.
void AppendText(std::string& out, std::string_view key, std::string_view text) {
  out += '"';
  out += key;
  out += "\":";
  AppendJsonString(out, text);
}

void AppendNames(std::string& out, std::string_view key, const std::vector<std::string>& names) {
  AppendArray(out, key, names, [&](const std::string& name) { AppendJsonString(out, name); });
}

class ViewWriter {
 public:
  ViewWriter(const ViewedSite& site, const SiteContent& content, const FindingReport& report)
      : site_(site), content_(content), report_(report) {
    for (std::size_t i = 0; i < content.files.size(); ++i) {
      targets_.emplace(content.files[i].path, static_cast<std::int64_t>(i));
    }
    for (std::size_t i = 0; i < content.urls.size(); ++i) {
      targets_.emplace(content.urls[i].text, static_cast<std::int64_t>(content.files.size() + i));
    }
  }

  std::string Write() {
    out_.reserve(content_.links.size() * 8 + content_.files.size() * 100);
    AppendHead();
    AppendFolders();
    AppendFiles();
    AppendUrls();
    AppendLinks();
    AppendFindings();
    AppendArray(out_, "unused", content_.unused, [this](auto file) { AppendNumber(out_, file); });
    out_ += ",\"since\":null}";
    return std::move(out_);
  }

 private:
  void AppendHead() {
    out_ += "{\"version\":1,";
    AppendText(out_, "program", Version());
    out_ += ',';
    AppendText(out_, "made", site_.made);
    out_ += ",\"live\":false,\"site\":{";
    AppendText(out_, "name", site_.name);
    out_ += ',';
    AppendText(out_, "folder", site_.folder);
    out_ += ',';
    AppendText(out_, "rules", site_.isClassic ? "classic" : "web");
    out_ += ',';
    AppendText(out_, "baseUrl", site_.baseUrl);
    out_ += ",\"home\":";
    AppendNumber(out_, content_.home);
    out_ += "},\"totals\":" + TotalsJson(report_) + ",\"stale\":{";
    AppendNames(out_, "changed", report_.changed);
    out_ += ',';
    AppendNames(out_, "gone", report_.gone);
    out_ += ',';
    AppendNames(out_, "new", report_.added);
    out_ += ',';
    AppendNames(out_, "unread", report_.unread);
    out_ += "},";
    AppendArray(out_, "fileKinds", kFileKindNames,
                [this](const char* name) { AppendJsonString(out_, name); });
    out_ += ',';
    AppendArray(out_, "linkKinds", kLinkKindNames,
                [this](const char* name) { AppendJsonString(out_, name); });
    out_ += ',';
  }

  template <class Rows, class Value>
  void AppendNumbers(std::string_view key, const Rows& rows, Value value) {
    AppendArray(out_, key, rows, [&](const auto& row) {
      AppendNumber(out_, static_cast<std::int64_t>(value(row)));
    });
  }
  template <class Rows, class Value>
  void AppendTexts(std::string_view key, const Rows& rows, Value value) {
    AppendArray(out_, key, rows, [&](const auto& row) { AppendJsonString(out_, value(row)); });
  }

  void AppendFolders() {
    out_ += "\"folders\":{";
    AppendTexts(
        "name", content_.folders, [](const auto& row) -> auto& { return row.name; });
    out_ += ',';
    AppendNumbers("parent", content_.folders, [](const auto& row) { return row.parent; });
    out_ += "},";
  }

  void AppendFiles() {
    const auto& files = content_.files;
    out_ += "\"files\":{";
    AppendTexts("name", files, [](const ContentFile& file) {
      return file.folder < 0 ? std::string_view(file.path) : KnownFiles::LastNameOf(file.path);
    });
    out_ += ',';
    AppendTexts(
        "title", files, [](const ContentFile& file) -> auto& { return file.title; });
    const auto numbers = [&](std::string_view key, auto value) {
      out_ += ',';
      AppendNumbers(key, files, value);
    };
    numbers("folder", [](const ContentFile& file) { return file.folder; });
    numbers("kind", [](const ContentFile& file) { return file.kind; });
    numbers("size", [](const ContentFile& file) { return file.size; });
    numbers("time", [](const ContentFile& file) { return file.time; });
    numbers("family", [](const ContentFile& file) { return file.isFamily; });
    numbers("weight", [](const ContentFile& file) { return file.weight; });
    numbers("requests", [](const ContentFile& file) { return file.requests; });
    out_ += "},";
  }

  void AppendUrls() {
    AppendNames(out_, "hosts", content_.hosts);
    out_ += ",\"urls\":{";
    AppendTexts(
        "text", content_.urls, [](const ContentUrl& url) -> auto& { return url.text; });
    out_ += ',';
    AppendNumbers("host", content_.urls, [](const ContentUrl& url) { return url.host; });
    out_ += ',';
    AppendTexts(
        "result", content_.urls, [](const ContentUrl& url) -> auto& { return url.result; });
    out_ += "},";
  }

  void AppendLinks() {
    const auto& links = content_.links;
    out_ += "\"links\":{";
    std::vector<std::size_t> counts;
    std::vector<std::uint32_t> steps;
    steps.reserve(links.size());
    for (std::size_t file = 0; file + 1 < content_.firstLink.size(); ++file) {
      const std::size_t end = content_.firstLink[file + 1];
      counts.push_back(end - content_.firstLink[file]);
      std::uint32_t before = 0;
      for (std::size_t i = content_.firstLink[file]; i < end; ++i) {
        steps.push_back(links[i].target - before);
        before = links[i].target;
      }
    }
    AppendNumbers("count", counts, [](std::size_t count) { return count; });
    out_ += ',';
    AppendNumbers("target", steps, [](std::uint32_t step) { return step; });
    out_ += ',';
    AppendNumbers("kind", links, [](const ContentLink& link) { return link.kind; });
    out_ += ',';
    AppendNumbers("times", links, [](const ContentLink& link) { return link.times; });
    out_ += "},";
  }

  void AppendFindings() {
    AppendArray(out_, "findings", report_.findings,
                [this](const Finding& finding) { AppendFinding(finding); });
    out_ += ",\"excerpts\":[],";
  }

  void AppendFinding(const Finding& finding) {
    out_ += '{';
    AppendText(out_, "id", IdOf(finding));
    out_ += ',';
    AppendText(out_, "rule", TraitsOf(finding.rule).name);
    out_ += ',';
    AppendText(out_, "severity", SeverityName(finding.severity));
    out_ += ',';
    AppendText(out_, "target", finding.target);
    out_ += ",\"targetFile\":";
    AppendNumber(out_, TargetOf(finding));
    out_ += ',';
    AppendText(out_, "message", finding.message);
    out_ += ',';
    AppendText(out_, "suggestion", finding.suggestion);
    out_ += ",\"command\":\"\",";
    AppendArray(out_, "places", finding.places, [this](const FindingPlace& place) {
      out_ += '[';
      AppendNumber(out_, NumberOf(place.file));
      out_ += ',';
      AppendNumber(out_, place.line);
      out_ += ',';
      AppendNumber(out_, place.column);
      out_ += ',';
      AppendJsonString(out_, place.reference);
      out_ += ",-1]";
    });
    out_ += '}';
  }

  // Of a file or a URL; -1 for none.
  std::int64_t NumberOf(std::string_view name) const {
    const auto found = targets_.find(name);
    return found == targets_.end() ? -1 : found->second;
  }
  std::int64_t TargetOf(const Finding& finding) const {
    const std::int64_t number = NumberOf(finding.target);
    if (number >= 0 || finding.rule != Rule::kMissingFragment) return number;
    // A fragment may hold "#" too, and so may the name of a file.
    const std::string_view target = finding.target;
    for (std::size_t at = target.rfind('#'); at != target.npos && at > 0;
         at = target.rfind('#', at - 1)) {
      const std::int64_t file = NumberOf(target.substr(0, at));
      if (file >= 0) return file;
    }
    return -1;
  }

  const ViewedSite& site_;
  const SiteContent& content_;
  const FindingReport& report_;
  std::unordered_map<std::string_view, std::int64_t> targets_;
  std::string out_;
};

}  // namespace

std::string TotalsJson(const FindingReport& report) {
  const SiteTotals& totals = report.totals;
  return fmt::format(
      "{{\"files\":{},\"pages\":{},\"sheets\":{},\"links\":{},\"urls\":{},\"errors\":{},"
      "\"warnings\":{},\"places\":{}}}",
      totals.files, totals.pages, totals.sheets, totals.links, totals.urls,
      report.Count(Severity::kError), report.Count(Severity::kWarning), report.CountPlaces());
}

std::string SiteViewJson(const ViewedSite& site, const SiteContent& content,
                         const FindingReport& report) {
  return ViewWriter(site, content, report).Write();
}

}  // namespace zvrsit
