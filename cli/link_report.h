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
  int line = 0;  // where the source has it first, counted from 1; 0 where that is not known
};

// Calls `each` for the links of these record numbers, in their order.
void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(const ShownLink&)>& each);
// The links to files that are not there, by source and place in it.
std::vector<BrokenLink> BrokenLinks(Session& session);

// An object: from, to, kind (2 a file, 3 a URL), type, code, text, alt, count, exists.
Json LinkAsJson(const ShownLink& link);
// The same with line, null where it is not known, and outside.
Json BrokenAsJson(const BrokenLink& link);
// A line.
void PrintLink(const ShownLink& link);
// A line a source, and below it a line for each of its broken links.
void PrintBroken(const std::vector<BrokenLink>& links);

}  // namespace zvrsit::cli
