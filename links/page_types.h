// Which files beside HTML pages are read for links under the web rules, and how.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api.h"

namespace zvrsit {

// How the text of a page is read.
enum class PageSyntax : std::uint8_t {
  kHtml,
  kXml,      // XHTML
  kDrawing,  // SVG; read as kXml is, but no page to a reader of the site
  kServer,   // HTML with code in it that the server runs (PHP, ASP, JSP and their like)
  // No pages at all (links/site_data.h):
  kManifest,   // a web app manifest: *.webmanifest, and *.json that begins or ends with "manifest"
  kSitemap,    // *.xml with "sitemap" in its name
  kRobots,     // robots.txt
  kRedirects,  // _redirects
};

// A list of extensions. The types of HTML pages (FT_HTML) need not be in it.
class ZVRSIT_API PageTypes {
 public:
  // The usual extensions, separated by spaces.
  static constexpr std::string_view kUsual = "asp aspx jsp php php3 php5 phtml svg xht xhtml";

  // `list`: extensions without the dot, of ASCII letters, digits, "-" and "_", in any letter case,
  // separated by spaces or commas. An empty text, and any other text, means the usual ones.
  explicit PageTypes(std::string_view list = {});
  // Whether `list` is as above and not empty.
  static bool IsList(std::string_view list);

  // Whether a file of that path or name is read as a page.
  bool Hold(std::string_view path) const;
  // In lower case, ascending, separated by spaces.
  std::string list() const;

 private:
  std::vector<std::string> extensions_;  // in lower case, ascending
};

// What stands after the last "." of a name, in lower case; empty without one.
ZVRSIT_API std::string ExtensionOf(std::string_view path);

// How a file of that path or name is read, if it is read at all; kHtml for one of type FT_HTML.
ZVRSIT_API PageSyntax PageSyntaxOf(std::string_view path);
// Whether files that are read so are no pages, but hold addresses all the same.
constexpr bool IsSiteData(PageSyntax syntax) {
  return syntax >= PageSyntax::kManifest;
}
// Whether a reader of the site would call a file that is read so a page.
constexpr bool IsShownAsPage(PageSyntax syntax) {
  return syntax != PageSyntax::kDrawing && !IsSiteData(syntax);
}

}  // namespace zvrsit
