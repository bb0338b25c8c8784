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

// Calls `each` with the link of each of these record numbers, in their order.
void ForEachLink(Session& session, const std::vector<int>& numbers,
                 const std::function<void(const ShownLink&)>& each);
// An object: from, to, kind (2 a file, 3 a URL), type, code, text, alt, count, exists.
Json LinkAsJson(const ShownLink& link);
// A line.
void PrintLink(const ShownLink& link);

}  // namespace zvrsit::cli
