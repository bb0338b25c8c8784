// Links as the program shows them.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/output.h"
#include "cli/session.h"

namespace zvrsit::cli {

struct ShownLink {
  std::string from;
  std::string to;
  SiteLink link;  // but `exists` is true also for a file that is there outside of the site
};

struct BrokenLink : ShownLink {
  std::vector<LinkPlace> places;  // all of them, in the order of the source; empty: not known
};

// Calls `each` with the number and the link for these record numbers, in their order.
void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(int, const ShownLink&)>& each);
// The links to files that are not there, by source and place in it.
std::vector<BrokenLink> BrokenLinks(Session& session);

// An object: from, to, kind (2 a file, 3 a URL), type, code, text, alt, count, exists.
Json LinkAsJson(const ShownLink& link);
// A line.
void PrintLink(const ShownLink& link);

// A line a source, and below it a line for each of its broken links, with its first place; or, with
// `all`, for each place.
void PrintBroken(const std::vector<BrokenLink>& links, bool all);
// One object: the fields of `head`, then broken_links and broken_places, which count them, and
// broken, an array with an object for each link: that of LinkAsJson, outside, unservable, line and
// column of its first place, null where they are not known, and places, an array of all.
void PrintBrokenAsJson(const Json& head, const std::vector<BrokenLink>& links);
// "no broken links", "2 broken links", "2 broken links in 5 places".
std::string CountedBroken(const std::vector<BrokenLink>& links);

}  // namespace zvrsit::cli
