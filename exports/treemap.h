// Squarified treemaps: a box is divided into boxes that are as square as can be.
#pragma once

#include <vector>

namespace zvrsit {

// In any unit, as long as it is one; y grows downwards.
struct Box {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

// One box for each weight, in their order: together they fill `box`, and their areas are in the
// ratio of the weights. These are above 0 and descend. After Bruls, Huizing, van Wijk: Squarified
// Treemaps, 2000.
std::vector<Box> Squarify(Box box, const std::vector<double>& weights);

}  // namespace zvrsit
