// Links as the program shows them.
#pragma once

#include <string>
#include <vector>

#include "cli/output.h"
#include "cli/session.h"

namespace zvrsit::cli {

struct ShownLink {
  std::string from;
  std::string to;
  SiteLink link;
};

// The links of these record numbers, in their order.
std::vector<ShownLink> ShowLinks(Session& session, const std::vector<int>& numbers);
// Every link of the open site, by record number.
std::vector<ShownLink> AllLinks(Session& session);
// The links to files that are not there, or lie outside of the site, by source and then number.
std::vector<ShownLink> BrokenLinks(Session& session);

// An array of objects: from, to, kind (2 a file, 3 a URL), type, code, text, alt, count, exists.
Json LinksAsJson(const std::vector<ShownLink>& links);
// A line each.
void PrintLinks(const std::vector<ShownLink>& links);
// A line a source, and below it a line for each of its broken links.
void PrintBroken(const std::vector<ShownLink>& links);

}  // namespace zvrsit::cli
