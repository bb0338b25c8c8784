// A report: what the view shows of a site, in one page that needs nothing else.
#pragma once

#include <string>

#include "web/site_view.h"

namespace zvrsit {

// The page, in UTF-8. Its data stand in it compressed; what it says at once, its title and its
// totals, also without them. It loads nothing and asks no server; a browser opens it as a file.
std::string ReportPage(const SiteView& view);

}  // namespace zvrsit
