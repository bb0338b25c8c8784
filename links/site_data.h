// Files that are no pages, but that hold addresses of the site: web app manifests, sitemaps,
// robots.txt and `_redirects`. With RuleFlags::readsSiteData.
#pragma once

#include <string_view>

#include "links/link_rules.h"

namespace zvrsit {

class Document;
class PageRows;

// Files in the folder of the site from which search engines begin, beside the home page.
inline constexpr std::string_view kSiteRoots[] = {"robots.txt", "sitemap.xml", "sitemap_index.xml",
                                                  "sitemap-index.xml"};

// Fills `rows` with what the file `path` refers to; `document` was read from it. For
// a page this is the same as ExtractPage.
void ExtractFile(std::string_view path, const Document& document, LinkRules rules, PageRows& rows);

}  // namespace zvrsit
