// The file robots.txt of a server, after RFC 9309.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

// How much of such a file is read.
inline constexpr std::size_t kMostRobots = 512 * 1024;

class Robots {
 public:
  Robots() = default;  // everything is allowed
  // `agent` is how we call ourselves: what stands before the "/" of the user agent counts. The
  // groups for that name are followed, or those for "*" where there is none.
  Robots(std::string_view text, std::string_view agent);

  // Whether a path, with its query, may be asked: the longest rule that matches it decides, and of
  // two equally long ones the one that allows.
  bool Allows(std::string_view path) const;

 private:
  struct Line {
    std::string pattern;  // "*" stands for any characters, a "$" at the end for the end
    bool allows;
  };
  std::vector<Line> lines_;
};

}  // namespace zvrsit
