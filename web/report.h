// A report: what the view shows of a site, in one page that needs nothing else.
#pragma once

#include <string>
#include <string_view>

#include "web/site_view.h"

namespace zvrsit {

// The page, in UTF-8. Its data stand in it compressed; what it says at once, its title and its
// totals, also without them. It loads nothing and asks no server; a browser opens it as a file. A
// page that is served has no data; it asks for them.
std::string ReportPage(const SiteView& view);

// The script that marks broken references in a page of a site which the program serves.
std::string_view OverlayScript();

}  // namespace zvrsit
