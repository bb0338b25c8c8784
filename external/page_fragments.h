// Whether fragments name something in a page of another site.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "external/answer.h"

namespace zvrsit {

struct ReceivedPage {
  std::string_view body;
  std::string_view contentType;
  bool isWhole = true;
};

// Looks for each of these fragments. A fragment of what is no HTML is found: it is up to others
// what it means there. What is not in the part that was received is unknown. GitHub and its like
// write "user-content-" in front of the IDs of an author; both forms are found.
std::vector<std::pair<std::string, FragmentState>> LookForFragments(
    const ReceivedPage& page, const std::vector<std::string>& fragments);

}  // namespace zvrsit
