// What the user does not want to hear of.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "findings/finding.h"

namespace zvrsit {

// Whether a name matches a pattern: `*` stands for any characters but "/", `**` for any characters,
// `?` for one character but "/". A pattern without "/" is held against the last name alone; one
// that ends in "/" means all that lies below. Takes time in proportion to the product of both
// lengths.
bool MatchesGlob(std::string_view pattern, std::string_view name);

struct Ignores {
  std::vector<std::string> files;    // patterns of files, relative to the site folder, with "/"
  std::vector<std::string> targets;  // of what references mean, and of references as written

  // Whether nothing is to be said of what stands in a native file, or of a target or reference.
  bool HaveFile(const std::string& file) const;
  bool HaveTarget(const std::string& target) const;
  // Takes the findings out that stand in such files, or are about such targets.
  void TakeOut(FindingReport& report) const;
};

}  // namespace zvrsit
