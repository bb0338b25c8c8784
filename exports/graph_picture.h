// The graph of a site as a picture.
#pragma once

#include <string>

#include "exports/nested_areas.h"

namespace zvrsit {

// A picture in SVG that stands alone: folders and files as areas within areas, the heaviest edges
// between them as arcs, and what is broken hatched. In UTF-8; the same graph gives the same bytes.
std::string DrawGraph(const Graph& graph, AreaOf what);

}  // namespace zvrsit
