// Writes sites of generated pages, the same bytes for the same shape.
#pragma once

#include <string>

namespace zvrsit::bench {

// Pages lie 100 to a folder, as d0000/p000000.html. Each links to a shared style sheet and to
// `links` others: one in ten to an external URL, one in fifty of the rest to a page that is not
// there, one in five with a fragment. index.html links to the first page of each folder.
struct SiteShape {
  std::string folder;
  unsigned pages = 0;
  unsigned seed = 1;
  unsigned links = 50;
  unsigned bytes = 10000;  // of a page, about
  unsigned hub = 0;        // links of one page more, hub.html; 0 for no such page
  unsigned reach = 0;      // links name a page at most so many before or behind; 0: any of the site
  unsigned backlinks = 0;  // so many pages have d0000/p000000.html as their last link
};

// The path of a page, relative to the site's folder.
std::string PageName(unsigned number);

// Makes the folder and the site in it; whether all of it could be written.
bool WriteSite(const SiteShape& shape);

}  // namespace zvrsit::bench
