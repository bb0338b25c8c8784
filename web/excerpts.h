// The lines of pages that findings stand in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings/finding.h"

namespace zvrsit {

// A part of a line, in UTF-8. It has no control characters: U+FFFD stands for each, and `*` for
// each character of a user and password in a URL.
struct Excerpt {
  std::string text;
  // Where the reference stands in it, in UTF-16 units.
  std::size_t offset = 0;
  std::size_t length = 0;

  bool operator==(const Excerpt&) const = default;
};

struct Excerpts {
  std::vector<Excerpt> all;  // none twice
  // Of each place of each finding, in their order: index into `all`. -1 for a place without a line,
  // and where the page cannot be read or has no such line any more.
  std::vector<std::int32_t> ofPlace;
};

// Where references begin that findings tell of: by file and text, with a line end between, a byte
// of the file; -1 where there are several. Of pages that are in the code page as they are.
using ReferenceOffsets = std::unordered_map<std::string, std::int64_t>;

// Reads the pages that have findings, in their encodings; as little of them as it can.
Excerpts ReadExcerpts(const FindingReport& report, const ReferenceOffsets& offsets);

}  // namespace zvrsit
