#include "exports/graph_picture.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <tuple>

#include "exports/picture_text.h"

namespace zvrsit {
namespace {

constexpr double kWidth = 1600;
constexpr double kHeight = 1000;
constexpr Box kMap{12, 62, kWidth - 24, kHeight - 62 - 44};
constexpr std::size_t kMostArcs = 60;
constexpr std::size_t kMostLost = 20;  // of them, to missing files
constexpr double kLineHeight = 15;
constexpr double kBand = 6;

// Text on each fill, and what is hatched, have the contrast that WCAG 2.1 asks for at level AA.
constexpr const char* kStyle = R"svg(<style>
svg { background: #fff; font: 12px system-ui, sans-serif; fill: #1f2733; }
.name { font-size: 20px; font-weight: 600; }
.facts, .legend { font-size: 13px; fill: #4a5565; }
rect { stroke: #fff; }
.folder { fill: #eef1f5; stroke: #c3cbd6; }
.page { fill: #d3e3f6; }
.file { fill: #e3e6ea; }
.folded { fill: #bfcddd; }
.missing { fill: #fff; stroke: #b42318; stroke-width: 1.5; stroke-dasharray: 4 2; }
.broken { fill: none; stroke: #b42318; stroke-width: 1.5; }
.stripes { fill: url(#stripes); stroke: none; }
.stripe { fill: #b42318; stroke: none; }
.faint { fill-opacity: .25; }
.badge { fill: #b42318; stroke: none; }
.count { fill: #fff; font-size: 11px; font-weight: 600; text-anchor: middle; }
.header { font-weight: 600; fill: #36404e; }
.labels { pointer-events: none; }
.arc { fill: none; stroke: #1d4f91; stroke-opacity: .4; }
.arc.lost { stroke: #b42318; stroke-opacity: .8; stroke-dasharray: 6 3; }
.head { fill: #1d4f91; }
.head.lost { fill: #b42318; }
@media (prefers-color-scheme: dark) {
svg { background: #14181e; fill: #e8ecf1; }
.facts, .legend { fill: #aab4c1; }
rect { stroke: #14181e; }
.folder { fill: #1e242c; stroke: #465161; }
.page { fill: #234264; }
.file { fill: #39414c; }
.folded { fill: #3c4f66; }
.missing { fill: #14181e; }
.missing, .broken { stroke: #ff8d7e; }
.stripe, .badge, .head.lost { fill: #ff8d7e; }
.count { fill: #14181e; }
.header { fill: #cdd5df; }
.arc { stroke: #8ab8f5; }
.head { fill: #8ab8f5; }
.arc.lost { stroke: #ff8d7e; }
}
</style>
<defs>
<pattern id="stripes" width="7" height="7" patternUnits="userSpaceOnUse"
 patternTransform="rotate(45)"><rect class="stripe" width="3" height="7"/></pattern>
<marker id="to" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="8" markerHeight="8"
 markerUnits="userSpaceOnUse" orient="auto"><path class="head" d="M0 0 8 4 0 8z"/></marker>
<marker id="lost" viewBox="0 0 8 8" refX="7" refY="4" markerWidth="8" markerHeight="8"
 markerUnits="userSpaceOnUse" orient="auto"><path class="head lost" d="M0 0 8 4 0 8z"/></marker>
</defs>
)svg";

class GraphPicture {
 public:
  GraphPicture(const Graph& graph, AreaOf what)
      : graph_(graph), what_(what), areas_(NestAreas(graph, what, kMap)) {}

  std::string Draw() {
    out_ = fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {} {}\" role=\"img\">\n"
        "<title>{}</title>\n{}",
        kWidth, kHeight, PictureText(graph_.site), kStyle);
    DrawHead();
    for (const std::size_t part : areas_.front().parts) DrawArea(part, "");
    DrawArcs();
    out_ += "<g class=\"labels\">\n" + labels_ + "</g>\n";
    DrawLegend();
    return out_ + "</svg>\n";
  }

 private:
  void DrawHead() {
    std::int64_t files = 0;
    std::int64_t broken = 0;
    for (const GraphNode& node : graph_.nodes) {
      if (node.kind == NodeKind::kHost || node.kind == NodeKind::kOutside) continue;
      files += node.stands;
      broken += node.broken;
    }
    AddText(out_, "name", kMap.x, 28, FitText(graph_.site, kMap.width, 20));
    AddText(out_, "facts", kMap.x, 48,
            fmt::format("{}; {}; area: {}", Counted(files, "file"),
                        Counted(broken, "link to missing files", "links to missing files"),
                        what_ == AreaOf::kBytes ? "bytes" : "links to it"));
  }

  void DrawArea(std::size_t index, const std::string& around) {
    const Area& area = areas_[index];
    const std::string name = around + area.name;
    out_ += "<g>";
    if (area.node != kNoNode) {
      DrawNode(area, name);
    } else {
      out_ += fmt::format("<title>{}</title>", PictureText(name));
      DrawBox("folder", area.box);
      if (area.hasHeader) {
        AddText(labels_, "header", area.box.x + 5, area.box.y + 13,
                FitText(area.name, area.box.width - 10, 12));
      }
      out_ += '\n';
      for (const std::size_t part : area.parts) DrawArea(part, name);
    }
    out_ += "</g>\n";
  }

  void DrawNode(const Area& area, const std::string& name) {
    const GraphNode& node = graph_.nodes[area.node];
    out_ += fmt::format("<title>{}</title>", TitleOf(node, name));
    DrawBox(node.kind == NodeKind::kMissing  ? "missing"
            : node.kind == NodeKind::kFolder ? "folded"
            : node.kind == NodeKind::kPage   ? "page"
                                             : "file",
            area.box);
    if (node.kind == NodeKind::kMissing) DrawBox("stripes faint", area.box);
    if (node.broken > 0) DrawBroken(area.box, node);
    if (area.box.height < kLineHeight + 1) return;
    const double width = area.box.width - 8;
    const std::string count = Counted(node.stands, "file");
    const std::string own = TextWidth(count, 12) <= width ? count : "";
    const bool isFolder = node.kind == NodeKind::kFolder;
    AddText(labels_, "", area.box.x + 4, area.box.y + 13,
            area.name.empty() ? own : FitText(area.name, width, 12));
    if (!isFolder || area.name.empty() || area.box.height < 2 * kLineHeight + 2) return;
    AddText(labels_, "", area.box.x + 4, area.box.y + 13 + kLineHeight, own);
  }

  static std::string TitleOf(const GraphNode& node, const std::string& name) {
    std::string title = name.empty() ? "./" : name;
    if (!node.title.empty()) title += " (" + node.title + ")";
    title = PictureText(title);
    if (node.kind == NodeKind::kFolder) title += "\n" + Counted(node.stands, "file");
    title += node.kind == NodeKind::kMissing ? "\nis not there" : "\n" + Counted(node.size, "byte");
    title += "\n" + Counted(node.inLinks, "link") + " to it";
    if (node.broken > 0) {
      title += "\n" + Counted(node.broken, "link to missing files", "links to missing files");
    }
    return title;
  }

  void DrawBox(const char* look, const Box& box) {
    out_ += fmt::format(
        R"svg(<rect class="{}" x="{:.2f}" y="{:.2f}" width="{:.2f}" height="{:.2f}"/>)svg", look,
        box.x, box.y, box.width, box.height);
  }

  // A striped band along as much of the lower edge as files have such links, and where there is
  // room how many links these are.
  void DrawBroken(const Box& box, const GraphNode& node) {
    const double band = std::min(kBand, box.height / 4);
    const double share = static_cast<double>(node.brokenFiles) / static_cast<double>(node.stands);
    const double length = std::min(box.width, std::max(kBand, box.width * share));
    DrawBox("stripes", {box.x, box.y + box.height - band, length, band});
    if (node.kind != NodeKind::kFolder) DrawBox("broken", box);
    const std::string text = fmt::format("! {}", node.broken);
    const double width = TextWidth(text, 11) + 8;
    if (box.width < width + 4 || box.height < 3 * kLineHeight) return;
    const double x = box.x + box.width - width - 2;
    const double y = box.y + box.height - 17;
    labels_ += fmt::format(
        R"svg(<rect class="badge" x="{:.2f}" y="{:.2f}" width="{:.2f}" height="15" rx="3"/>)svg", x,
        y, width);
    AddText(labels_, "count", x + width / 2, y + 11, text);
  }

  bool IsLost(const GraphEdge& edge) const {
    return graph_.nodes[edge.to].kind == NodeKind::kMissing;
  }

  // The heaviest last, above the others.
  void DrawArcs() {
    std::vector<const Area*> shown(graph_.nodes.size());
    MarkShown(0, shown);
    std::vector<const GraphEdge*> lost;
    std::vector<const GraphEdge*> edges;
    for (const GraphEdge& edge : graph_.edges) {
      if (shown[edge.from] == nullptr || shown[edge.to] == nullptr) continue;
      (IsLost(edge) ? lost : edges).push_back(&edge);
    }
    KeepHeaviest(lost, kMostLost);
    KeepHeaviest(edges, kMostArcs - lost.size());
    edges.insert(edges.begin(), lost.begin(), lost.end());
    std::int64_t heaviest = 10;  // few links are thin everywhere
    for (const GraphEdge* const edge : edges) heaviest = std::max(heaviest, edge->weight);
    for (auto edge = edges.rbegin(); edge != edges.rend(); ++edge) {
      DrawArc(**edge, heaviest, shown[(*edge)->from]->box, shown[(*edge)->to]->box);
    }
  }

  static void KeepHeaviest(std::vector<const GraphEdge*>& edges, std::size_t most) {
    std::ranges::stable_sort(edges, {}, [](const GraphEdge* edge) { return -edge->weight; });
    if (edges.size() > most) edges.resize(most);
  }

  void MarkShown(std::size_t index, std::vector<const Area*>& shown) const {
    const Area& area = areas_[index];
    if (area.node != kNoNode) shown[area.node] = &area;
    for (const std::size_t part : area.parts) MarkShown(part, shown);
  }

  // Bent to the left of its direction, so that the way back is another arc.
  void DrawArc(const GraphEdge& edge, std::int64_t heaviest, const Box& from, const Box& to) {
    const double x1 = from.x + from.width / 2;
    const double y1 = from.y + from.height / 2;
    const double x2 = to.x + to.width / 2;
    const double y2 = to.y + to.height / 2;
    const bool isLost = IsLost(edge);
    out_ += fmt::format(
        R"svg(<path class="arc{}" d="M{:.1f} {:.1f}Q{:.1f} {:.1f} {:.1f} {:.1f}" )svg"
        R"svg(stroke-width="{:.1f}" marker-end="url(#{})"><title>{}</title></path>)svg"
        "\n",
        isLost ? " lost" : "", x1, y1, (x1 + x2) / 2 + (y2 - y1) / 5, (y1 + y2) / 2 - (x2 - x1) / 5,
        x2, y2,
        0.8 + 2 * std::sqrt(static_cast<double>(edge.weight) / static_cast<double>(heaviest)),
        isLost ? "lost" : "to",
        PictureText(graph_.nodes[edge.from].name + " -> " + graph_.nodes[edge.to].name) + "\n" +
            Counted(edge.weight, "link"));
  }

  void DrawLegend() {
    double x = kMap.x;
    const double y = kHeight - 28;
    const auto entry = [&](const char* look, bool isBroken, const std::string& text) {
      DrawBox(look, {x, y, 18, 14});
      if (isBroken) {
        DrawBox("stripes", {x, y + 8, 18, 6});
        DrawBox("broken", {x, y, 18, 14});
      }
      AddText(out_, "legend", x + 25, y + 12, text);
      x += 25 + TextWidth(text, 13) + 24;
    };
    const auto has = [this](NodeKind kind) {
      return std::ranges::any_of(graph_.nodes,
                                 [kind](const GraphNode& node) { return node.kind == kind; });
    };
    entry("page", false, "page");
    if (has(NodeKind::kFile)) entry("file", false, "other file");
    if (has(NodeKind::kFolder)) entry("folded", false, "folder, with all that is in it");
    entry("page", true, "has links to missing files");
    if (has(NodeKind::kMissing)) entry("missing", false, "is not there");
    out_ += fmt::format(
        R"svg(<path class="arc" d="M{0:.1f} {1:.1f}h26" stroke-width="1.5" marker-end="url(#to)"/>)svg",
        x, y + 7);
    AddText(out_, "legend", x + 33, y + 12,
            fmt::format("links, wider where there are more; at most {} arcs", kMostArcs));
  }

  const Graph& graph_;
  const AreaOf what_;
  const std::vector<Area> areas_;
  std::string out_;
  std::string labels_;  // above everything else
};

}  // namespace

std::string DrawGraph(const Graph& graph, AreaOf what) {
  return GraphPicture(graph, what).Draw();
}

}  // namespace zvrsit
