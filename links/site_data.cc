#include "links/site_data.h"

#include <algorithm>
#include <string>

#include "dom/document.h"
#include "links/extractor.h"
#include "links/html_values.h"
#include "links/json_references.h"
#include "links/page_types.h"
#include "links/redirect_rules.h"
#include "links/url_text.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

constexpr auto kNoPlace = std::string_view::npos;

// One file, filling the rows.
class DataExtraction {
 public:
  DataExtraction(const Document& document, PageRows& rows)
      : document_(document), text_(document.text()), rows_(rows) {}

  void ReadManifest() {
    for (const JsonReference& found : ReadJsonReferences(JsonKind::kManifest, text_)) {
      Add(LT_MANIFEST, found.offset, rows_.Keep(found.target)).isPrefix = found.isPrefix;
    }
  }

  void ReadSitemap() {
    if (document_.elementCount() == 0) return;
    const std::string_view root = LocalName(document_.element(0).name());
    if (root != "urlset" && root != "sitemapindex") return;
    for (std::uint32_t i = 0; i < document_.elementCount(); ++i) {
      const Element element = document_.element(i);
      const std::string_view name = LocalName(element.name());
      if (name == "loc" || name.ends_with("_loc")) AddText(element.firstChild().asText());
      const Attribute href = name == "link" ? element.attributes().find(Attr::kHref) : Attribute();
      if (href) Add(LT_SITEMAP, href.valueOffset(), rows_.Decoded(href));
    }
  }

  void ReadRobots() {
    ForEachLine([this](std::string_view line) {
      line = line.substr(0, line.find('#'));
      const std::size_t colon = line.find(':');
      if (colon == kNoPlace || !EqualsLower(Trimmed(line.substr(0, colon)), "sitemap")) return;
      AddPart(LT_SITEMAP, Trimmed(line.substr(colon + 1)));
    });
  }

  // Addresses that the host itself answers at begin with a dot.
  void ReadRedirects() {
    for (const RedirectRule& rule : ReadRedirectRules(text_)) {
      if (!rule.hasPlaceholders() && !rule.to.starts_with("/.")) AddPart(LT_REDIRECT, rule.to);
    }
  }

 private:
  static std::string_view LocalName(std::string_view name) {
    return name.substr(name.find(':') + 1);
  }

  template <class Use>
  void ForEachLine(Use use) {
    for (std::size_t begin = 0; begin < text_.size();) {
      const std::size_t end = std::min(text_.find_first_of("\r\n", begin), text_.size());
      use(text_.substr(begin, end - begin));
      begin = end + 1;
    }
  }

  void AddText(const Text& text) {
    if (!text) return;
    const std::string_view raw = Trimmed(text.rawData());
    const bool isPlain = text.kind() == TextKind::kCdata || raw.find('&') == kNoPlace;
    const std::string decoded = isPlain ? std::string() : text.data(true);
    LinkRow& row = AddPart(LT_SITEMAP, raw);
    if (!isPlain) row.target = rows_.Keep(Trimmed(decoded));
  }

  // `part` is one of the text.
  LinkRow& AddPart(std::uint32_t type, std::string_view part) {
    return Add(type, static_cast<std::size_t>(part.data() - text_.data()), part);
  }

  LinkRow& Add(std::uint32_t type, std::size_t offset, std::string_view target) {
    LinkRow row;
    row.type = type;
    row.offset = static_cast<std::uint32_t>(offset);
    row.target = target;
    return rows_.links.emplace_back(row);
  }

  const Document& document_;
  const std::string_view text_;
  PageRows& rows_;
};

}  // namespace

void ExtractFile(std::string_view path, const Document& document, LinkRules rules, PageRows& rows) {
  const PageSyntax syntax = FlagsOf(rules).readsSiteData ? PageSyntaxOf(path) : PageSyntax::kHtml;
  if (!IsSiteData(syntax)) return ExtractPage(document, rules, rows);
  rows.Clear();
  rows.parts.Read(document, kClassicFlags);  // one part without a BASE
  DataExtraction extraction(document, rows);
  if (syntax == PageSyntax::kManifest) extraction.ReadManifest();
  if (syntax == PageSyntax::kSitemap) extraction.ReadSitemap();
  if (syntax == PageSyntax::kRobots) extraction.ReadRobots();
  if (syntax == PageSyntax::kRedirects) extraction.ReadRedirects();
}

}  // namespace zvrsit
