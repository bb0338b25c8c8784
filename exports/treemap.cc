#include "exports/treemap.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace zvrsit {
namespace {

// The side ratio of the least square box, when boxes with these areas stand in one row along
// `side`. In a row the largest or the smallest is the least square one.
double WorstRatio(double largest, double smallest, double sum, double side) {
  const double square = side * side;
  return std::max(square * largest / (sum * sum), sum * sum / (square * smallest));
}

// Takes a row with that area away from the box, along its shorter side.
Box TakeRow(Box& box, double area, bool isLast) {
  Box row = box;
  if (box.width >= box.height) {
    row.width = isLast ? box.width : area / box.height;
    box.x += row.width;
    box.width -= row.width;
  } else {
    row.height = isLast ? box.height : area / box.width;
    box.y += row.height;
    box.height -= row.height;
  }
  return row;
}

// Places boxes with these areas one behind the other in the row.
void FillRow(Box row, bool isColumn, const double* areas, std::size_t count,
             std::vector<Box>& boxes) {
  double sum = std::accumulate(areas, areas + count, 0.0);
  for (std::size_t i = 0; i < count; ++i) {
    Box box = row;
    const double part = i + 1 == count ? 1 : areas[i] / sum;
    sum -= areas[i];
    if (isColumn) {
      box.height = row.height * part;
      row.y += box.height;
      row.height -= box.height;
    } else {
      box.width = row.width * part;
      row.x += box.width;
      row.width -= box.width;
    }
    boxes.push_back(box);
  }
}

}  // namespace

std::vector<Box> Squarify(Box box, const std::vector<double>& weights) {
  std::vector<Box> boxes;
  const double scale =
      box.width * box.height / std::accumulate(weights.begin(), weights.end(), 0.0);
  std::vector<double> areas(weights);
  for (double& area : areas) area *= scale;
  for (std::size_t begin = 0; begin < areas.size();) {
    const double side = std::min(box.width, box.height);
    double sum = areas[begin];
    std::size_t end = begin + 1;
    for (; end < areas.size(); ++end) {
      const double more = sum + areas[end];
      if (WorstRatio(areas[begin], areas[end], more, side) >
          WorstRatio(areas[begin], areas[end - 1], sum, side)) {
        break;
      }
      sum = more;
    }
    const bool isColumn = box.width >= box.height;
    const Box row = TakeRow(box, sum, end == areas.size());
    FillRow(row, isColumn, &areas[begin], end - begin, boxes);
    begin = end;
  }
  return boxes;
}

}  // namespace zvrsit
