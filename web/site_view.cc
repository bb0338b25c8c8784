#include "web/site_view.h"

#include <fmt/format.h>

#include <string_view>
#include <unordered_map>
#include <utility>

#include "findings/dump_json.h"
#include "findings/known_files.h"
#include "platform/version.h"
#include "web/excerpts.h"
#include "web/finding_id.h"
#include "web/json_text.h"

namespace zvrsit {
namespace {

template <class Rows, class Value>
void AppendNumbers(std::string& out, std::string_view key, const Rows& rows, Value value) {
  AppendArray(out, key, rows,
              [&](const auto& row) { AppendNumber(out, static_cast<std::int64_t>(value(row))); });
}
template <class Rows, class Value>
void AppendTexts(std::string& out, std::string_view key, const Rows& rows, Value value) {
  AppendArray(out, key, rows, [&](const auto& row) { AppendJsonString(out, value(row)); });
}
template <class Names>
void AppendNames(std::string& out, std::string_view key, const Names& names) {
  AppendTexts(out, key, names, [](const auto& name) -> std::string_view { return name; });
}

void AppendHead(const ViewedSite& site, std::int32_t home, std::string& out) {
  AppendField(out += "{\"version\":1,", "program", Version());
  AppendField(out += ',', "made", site.made);
  out += site.isLive ? ",\"live\":true" : ",\"live\":false";
  AppendField(out += ',', "editor", site.editor);
  AppendField(out += ',', "siteAddress", site.siteAddress);
  AppendField(out += ",\"site\":{", "name", site.name);
  AppendField(out += ',', "folder", site.folder);
  AppendField(out += ',', "rules", site.isClassic ? "classic" : "web");
  AppendField(out += ',', "baseUrl", site.baseUrl);
  out += ",\"home\":";
  AppendNumber(out, home);
  out += "},";
  AppendNames(out, "fileKinds", kContentKindNames);
  AppendNames(out += ',', "linkKinds", kLinkKindNames);
}

void AppendStale(const FindingReport& report, std::string& out) {
  AppendNames(out += "\"stale\":{", "changed", report.changed);
  AppendNames(out += ',', "gone", report.gone);
  AppendNames(out += ',', "new", report.added);
  AppendNames(out += ',', "unread", report.unread);
  out += '}';
}

void AppendFiles(const SiteContent& content, std::string& out) {
  const auto& folders = content.folders;
  out += "\"folders\":{";
  AppendTexts(
      out, "name", folders, [](const auto& row) -> auto& { return row.name; });
  AppendNumbers(out += ',', "parent", folders, [](const auto& row) { return row.parent; });
  out += "},\n\"files\":{";
  const auto& files = content.files;
  AppendTexts(out, "name", files, [](const ContentFile& file) {
    return file.folder < 0 ? std::string_view(file.path) : KnownFiles::LastNameOf(file.path);
  });
  AppendTexts(
      out += ',', "title", files, [](const auto& file) -> auto& { return file.title; });
  const auto append = [&](std::string_view key, auto value) {
    AppendNumbers(out += ',', key, files, value);
  };
  append("folder", [](const ContentFile& file) { return file.folder; });
  append("kind", [](const ContentFile& file) { return file.kind; });
  append("size", [](const ContentFile& file) { return file.size; });
  append("time", [](const ContentFile& file) { return file.time; });
  append("family", [](const ContentFile& file) { return file.isFamily; });
  append("weight", [](const ContentFile& file) { return file.weight; });
  append("played", [](const ContentFile& file) { return file.played; });
  append("requests", [](const ContentFile& file) { return file.requests; });
  out += "},\n";
  AppendNumbers(out, "unused", content.unused, [](std::int32_t file) { return file; });
}

void AppendUrls(const SiteContent& content, std::string& out) {
  const auto& urls = content.urls;
  AppendNames(out, "hosts", content.hosts);
  AppendTexts(
      out += ",\"urls\":{", "text", urls, [](const auto& url) -> auto& { return url.text; });
  AppendNumbers(out += ',', "host", urls, [](const auto& url) { return url.host; });
  AppendTexts(
      out += ',', "state", urls, [](const auto& url) -> auto& { return url.answer.state; });
  AppendTexts(
      out += ',', "result", urls, [](const auto& url) -> auto& { return url.answer.words; });
  out += '}';
}

void AppendLinks(const SiteContent& content, std::string& out) {
  const auto& links = content.links;
  const auto& first = content.firstLink;
  std::vector<std::size_t> counts;
  std::vector<std::uint32_t> steps;
  steps.reserve(links.size());
  for (std::size_t file = 0; file + 1 < first.size(); ++file) {
    counts.push_back(first[file + 1] - first[file]);
    std::uint32_t before = 0;
    for (std::size_t i = first[file]; i < first[file + 1]; ++i) {
      steps.push_back(links[i].target - before);
      before = links[i].target;
    }
  }
  const auto same = [](auto number) { return number; };
  AppendNumbers(out += "\"links\":{", "count", counts, same);
  AppendNumbers(out += ',', "target", steps, same);
  AppendNumbers(out += ',', "kind", links, [](const auto& link) { return link.kind; });
  AppendNumbers(out += ',', "times", links, [](const auto& link) { return link.times; });
  out += '}';
}

// Writes the findings of a view.
class FindingWriter {
 public:
  FindingWriter(const SiteView& view, std::string& out)
      : view_(view), excerpts_(ReadExcerpts(view.report, view.content.offsets)), out_(out) {
    const auto& files = view.content.files;
    const auto& urls = view.content.urls;
    for (std::size_t i = 0; i < files.size(); ++i) targets_.emplace(files[i].path, i);
    for (std::size_t i = 0; i < urls.size(); ++i) targets_.emplace(urls[i].text, files.size() + i);
  }

  void Write() {
    AppendArray(out_, "findings", view_.report.findings, [this](const Finding& finding) {
      out_ += '\n';
      WriteOne(finding);
    });
    AppendArray(out_ += ",\n", "excerpts", excerpts_.all, [this](const Excerpt& excerpt) {
      out_ += '[';
      out_ += DumpJson(excerpt.text);
      out_ += fmt::format(",{},{}]", excerpt.offset, excerpt.length);
    });
  }

 private:
  void WriteOne(const Finding& finding) {
    AppendField(out_ += '{', "id", IdOf(finding));
    AppendField(out_ += ',', "rule", TraitsOf(finding.rule).name);
    AppendField(out_ += ',', "severity", SeverityName(finding.severity));
    AppendField(out_ += ',', "target", finding.target);
    out_ += fmt::format(",\"targetFile\":{},", TargetOf(finding));
    AppendField(out_, "message", finding.message);
    AppendField(out_ += ',', "suggestion", finding.suggestion);
    AppendField(out_ += ',', "command", view_.mending.CommandFor(finding));
    AppendArray(out_ += ',', "places", finding.places, [this](const FindingPlace& place) {
      out_ += fmt::format("[{},{},{},", NumberOf(place.file), place.line, place.column);
      AppendJsonString(out_, place.reference);
      out_ += fmt::format(",{}]", excerpts_.ofPlace[nextPlace_++]);
    });
    out_ += '}';
  }

  // Of a file or a URL; -1 for none.
  std::int64_t NumberOf(std::string_view name) const {
    const auto found = targets_.find(name);
    return found == targets_.end() ? -1 : static_cast<std::int64_t>(found->second);
  }
  // A fragment may hold "#" too, and so may the name of a file.
  std::int64_t TargetOf(const Finding& finding) const {
    std::string_view target = finding.target;
    std::int64_t number = NumberOf(target);
    if (finding.rule != Rule::kMissingFragment) return number;
    while (number < 0 && target.rfind('#') != target.npos) {
      target = target.substr(0, target.rfind('#'));
      number = NumberOf(target);
    }
    return number;
  }

  const SiteView& view_;
  const Excerpts excerpts_;
  std::string& out_;
  std::unordered_map<std::string_view, std::size_t> targets_;
  std::size_t nextPlace_ = 0;
};

// A text that is JSON's already.
void AppendKept(std::string& out, const char* key, const std::string& text) {
  out += fmt::format("\"{}\":{}", key, DumpJson(text));
}

void AppendSince(const SiteView& view, std::string& out) {
  out += "\"since\":";
  if (!view.earlier) {
    out += "null";
    return;
  }
  const SinceThen since = Compare(*view.earlier, view.site, view.report);
  AppendKept(out += '{', "made", view.earlier->made);
  out += ",\"totals\":" + DumpJson(view.earlier->totals) + ",";
  AppendNumbers(out, "added", since.added, [](std::size_t finding) { return finding; });
  AppendArray(out += ',', "mended", since.mended, [&](const EarlierFinding& finding) {
    AppendKept(out += '{', "rule", finding.rule);
    AppendKept(out += ',', "severity", finding.severity);
    AppendKept(out += ',', "target", finding.target);
    AppendKept(out += ',', "message", finding.message);
    out += '}';
  });
  out += '}';
}

}  // namespace

std::string TotalsJson(const FindingReport& report) {
  const SiteTotals& totals = report.totals;
  return fmt::format(
      "{{\"files\":{},\"pages\":{},\"sheets\":{},\"links\":{},\"urls\":{},\"errors\":{},"
      "\"warnings\":{},\"places\":{}}}",
      totals.files, totals.pages, totals.sheets, totals.links, totals.urls,
      report.Count(Severity::kError), report.Count(Severity::kWarning), report.CountPlaces());
}

std::string SiteViewJson(const SiteView& view) {
  std::string out;
  out.reserve(view.content.links.size() * 8 + view.content.files.size() * 100);
  AppendHead(view.site, view.content.home, out);
  out += ",\n\"totals\":" + TotalsJson(view.report) + ",\n";
  AppendStale(view.report, out);
  AppendFiles(view.content, out += ",\n");
  AppendUrls(view.content, out += ",\n");
  AppendLinks(view.content, out += ",\n");
  FindingWriter(view, out += ",\n").Write();
  AppendSince(view, out += ",\n");
  return out + "}";
}

}  // namespace zvrsit
