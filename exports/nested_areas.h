// The files and folders of a graph as areas within areas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "exports/graph.h"
#include "exports/treemap.h"

namespace zvrsit {

enum class AreaOf : std::uint8_t { kBytes, kInLinks };

inline constexpr std::size_t kNoNode = static_cast<std::size_t>(-1);

struct Area {
  // Within the area around it; that of a folder ends in a separator. Empty for the site folder, and
  // for the files that are directly in a folder and stand as one.
  std::string name;
  std::size_t node = kNoNode;      // index into Graph::nodes; none for a folder that has parts
  std::vector<std::size_t> parts;  // indexes of areas
  double weight = 0;
  Box box;
  bool hasHeader = false;  // room for its name above its parts
};

inline constexpr double kHeaderHeight = 18;

// The site folder first, filling `box`, whose unit is about a pixel. Hosts and files outside of the
// site have no area. In a folder the areas of parts are in the ratio of what they show, where that
// is at least a 4,000th of the whole site; what is smaller is drawn as large as that. A folder
// with nothing but one folder in it is one area with it.
std::vector<Area> NestAreas(const Graph& graph, AreaOf what, const Box& box);

}  // namespace zvrsit
