#include "exports/nested_areas.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

#include "exports/folding.h"

namespace zvrsit {
namespace {

constexpr double kLeastShare = 1.0 / 4000;
constexpr double kInset = 3;

class Nesting {
 public:
  Nesting(const Graph& graph, AreaOf what) : graph_(graph), what_(what) {
    areas_.emplace_back();
    folders_[""] = 0;
  }

  std::vector<Area> Nest(const Box& box) {
    for (std::size_t i = 0; i < graph_.nodes.size(); ++i) AddNode(i);
    SeparateOwnFiles();
    Weigh();
    Place(0, box);
    return std::move(areas_);
  }

 private:
  void AddNode(std::size_t index) {
    const GraphNode& node = graph_.nodes[index];
    if (node.kind == NodeKind::kHost || node.kind == NodeKind::kOutside) return;
    if (node.kind == NodeKind::kFolder) {
      areas_[FolderAt(node.name == "." ? "" : node.name)].node = index;
      return;
    }
    const std::size_t name = node.name.rfind(kSeparator) + 1;  // npos + 1 is 0
    const std::size_t folder = FolderAt(std::string_view(node.name).substr(0, name));
    areas_[AddPart(folder, node.name.substr(name))].node = index;
  }

  // The area of the folder with that name, made with those around it where it is new.
  std::size_t FolderAt(std::string_view name) {
    std::size_t at = 0;
    for (std::size_t begin = 0; begin < name.size();) {
      const std::size_t end = name.find(kSeparator, begin) + 1;
      const auto [known, isNew] = folders_.emplace(name.substr(0, end), areas_.size());
      at = isNew ? AddPart(at, std::string(name.substr(begin, end - begin))) : known->second;
      begin = end;
    }
    return at;
  }

  std::size_t AddPart(std::size_t around, std::string name) {
    areas_[around].parts.push_back(areas_.size());
    areas_.emplace_back().name = std::move(name);
    return areas_.size() - 1;
  }

  // A node that stands for the files of a folder becomes a part of it beside the others.
  void SeparateOwnFiles() {
    for (std::size_t i = 0, known = areas_.size(); i < known; ++i) {
      if (areas_[i].node == kNoNode || (i > 0 && areas_[i].parts.empty())) continue;
      const std::size_t own = AddPart(i, "");
      areas_[own].node = std::exchange(areas_[i].node, kNoNode);
    }
  }

  double WeightOf(const GraphNode& node) const {
    return static_cast<double>(what_ == AreaOf::kBytes ? node.size : node.inLinks);
  }

  // A folder stands before its parts.
  void Weigh() {
    double total = 0;
    for (const Area& area : areas_) {
      if (area.node != kNoNode) total += WeightOf(graph_.nodes[area.node]);
    }
    const double least = total > 0 ? total * kLeastShare : 1;
    for (auto area = areas_.rbegin(); area != areas_.rend(); ++area) {
      if (area->node != kNoNode) {
        area->weight = std::max(least, WeightOf(graph_.nodes[area->node]));
      }
      for (const std::size_t part : area->parts) area->weight += areas_[part].weight;
    }
  }

  void Place(std::size_t index, const Box& box) {
    if (index > 0) Join(areas_[index]);
    Area& area = areas_[index];
    area.box = box;
    if (area.parts.empty()) return;
    Box inner = box;
    if (index > 0) inner = Inner(area);
    std::ranges::sort(area.parts, {}, [this](std::size_t part) {
      return std::tuple(-areas_[part].weight, areas_[part].name);
    });
    std::vector<double> weights;
    for (const std::size_t part : area.parts) weights.push_back(areas_[part].weight);
    const std::vector<Box> boxes = Squarify(inner, weights);
    for (std::size_t i = 0; i < boxes.size(); ++i) Place(area.parts[i], boxes[i]);
  }

  // Makes a folder one with the folder that is all it holds.
  void Join(Area& area) const {
    while (area.parts.size() == 1) {
      const Area& only = areas_[area.parts.front()];
      if (!only.name.ends_with(kSeparator)) return;
      area.name += only.name;
      area.node = only.node;
      area.parts = std::vector(only.parts);
    }
  }

  static Box Inner(Area& area) {
    const Box& box = area.box;
    const double inset = std::min(kInset, std::min(box.width, box.height) / 16);
    area.hasHeader = box.width > 48 && box.height > 2.5 * kHeaderHeight;
    const double top = area.hasHeader ? kHeaderHeight : inset;
    return {box.x + inset, box.y + top, box.width - 2 * inset, box.height - top - inset};
  }

  const Graph& graph_;
  const AreaOf what_;
  std::vector<Area> areas_;
  std::map<std::string, std::size_t, std::less<>> folders_;  // by name: index of the area
};

}  // namespace

std::vector<Area> NestAreas(const Graph& graph, AreaOf what, const Box& box) {
  return Nesting(graph, what).Nest(box);
}

}  // namespace zvrsit
