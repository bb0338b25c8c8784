#include "web/report.h"

#include <fmt/format.h>

#include <map>
#include <string_view>

#include "findings/escapes.h"
#include "findings/known_files.h"
#include "web/finding_id.h"
#include "web/gzip.h"
#include "web/view_texts.h"

namespace zvrsit {
namespace {

// Puts a text in the place of each mark `<!--name-->` of the template.
std::string FillMarks(std::string_view page, const std::map<std::string_view, std::string>& texts) {
  constexpr std::string_view kBegin = "<!--";
  constexpr std::string_view kEnd = "-->";
  std::string filled;
  for (std::size_t at = page.find(kBegin); at != page.npos; at = page.find(kBegin)) {
    filled += page.substr(0, at);
    page.remove_prefix(at + kBegin.size());
    const std::size_t end = page.find(kEnd);
    filled += texts.at(page.substr(0, end));
    page.remove_prefix(end + kEnd.size());
  }
  return filled.append(page);
}

// Nothing but its own style and script, and pictures that the script makes; while it follows the
// site, also the server that it comes from.
std::string Policy(bool isLive) {
  return fmt::format(
      "default-src 'none'; style-src '{}'; script-src '{}'; img-src data: blob:; {}base-uri "
      "'none'; "
      "form-action 'none'",
      kView.styleHash, kView.scriptHash, isLive ? "connect-src 'self'; " : "");
}

std::string WithCommas(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string TotalMarkup(std::string_view word, std::size_t number) {
  return fmt::format("<div class=\"{}{}\"><dt>{}</dt><dd>{}</dd></div>\n", word,
                     number == 0 ? " none" : "", word, WithCommas(number));
}

std::string NameOfSite(const ViewedSite& site) {
  if (!site.name.empty()) return site.name;
  const std::string bare = site.folder.substr(0, site.folder.size() - 1);
  return std::string(KnownFiles::LastNameOf(bare));
}

std::string HeadMarkup(const ViewedSite& site, const FindingReport& report) {
  const auto number = [](int count) { return static_cast<std::size_t>(count < 0 ? 0 : count); };
  const SiteTotals& totals = report.totals;
  return fmt::format("<h1>{}</h1>\n<p class=\"about\">{} <time datetime=\"{}\">{}</time></p>\n",
                     XmlText(NameOfSite(site)), XmlText(site.folder), site.made, site.made) +
         "<dl class=\"totals\">\n" + TotalMarkup("errors", report.Count(Severity::kError)) +
         TotalMarkup("warnings", report.Count(Severity::kWarning)) +
         TotalMarkup("pages", number(totals.pages)) + TotalMarkup("files", number(totals.files)) +
         TotalMarkup("links", number(totals.links)) + TotalMarkup("URLs", number(totals.urls)) +
         "</dl>\n";
}

// No text in it can end its element, or begin a comment.
std::string SummaryMarkup(const SiteView& view) {
  static constexpr Replacements kEscapes{{'<', "\\u003c"}};
  return std::string(kSummaryBegin) + kEscapes.In(SummaryJson(view.site, view.report)) +
         std::string(kScriptEnd);
}

std::string DataMarkup(const SiteView& view) {
  return "<script type=\"application/octet-stream\" id=\"data\">" +
         Base64(Gzip(SiteViewJson(view))) + std::string(kScriptEnd);
}

}  // namespace

std::string IdOf(const Finding& finding) {
  std::uint64_t hash = 0xCBF29CE484222325;  // FNV-1a
  const auto add = [&hash](std::string_view text) {
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  };
  add(TraitsOf(finding.rule).name);
  add(std::string_view("\0", 1));
  add(finding.target);
  return fmt::format("{:016x}", hash);
}

std::string_view OverlayScript() {
  return kView.overlay;
}

std::string ReportPage(const SiteView& view) {
  return FillMarks(kView.page, {{"title", XmlText(NameOfSite(view.site)) + " - links and findings"},
                                {"policy", Policy(view.site.isLive)},
                                {"style", std::string(kView.style)},
                                {"head", HeadMarkup(view.site, view.report)},
                                {"summary", SummaryMarkup(view)},
                                {"data", view.site.isLive ? "" : DataMarkup(view)},
                                {"script", std::string(kView.script)}});
}

}  // namespace zvrsit
