#include "exports/graph.h"

#include <algorithm>
#include <map>
#include <memory>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "exports/folding.h"
#include "findings/escapes.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "links/link_type.h"
#include "manager/site_mgr.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

bool IsOfSite(NodeKind kind) {
  return kind != NodeKind::kHost && kind != NodeKind::kOutside;
}

// Adds the weights of edges with the same ends.
void Merge(std::vector<GraphEdge>& edges) {
  const auto ends = [](const GraphEdge& edge) { return std::tuple(edge.from, edge.to); };
  std::ranges::sort(edges, {}, ends);
  std::size_t kept = 0;
  for (const GraphEdge& edge : edges) {
    if (kept > 0 && ends(edges[kept - 1]) == ends(edge)) {
      edges[kept - 1].weight += edge.weight;
    } else {
      edges[kept++] = edge;
    }
  }
  edges.resize(kept);
}

// Gives each node a new place, nodes with the same place becoming one; a place of npos drops it.
constexpr std::size_t kDropped = static_cast<std::size_t>(-1);
void MoveEdges(std::vector<GraphEdge>& edges, const std::vector<std::size_t>& places) {
  std::erase_if(edges, [&](const GraphEdge& edge) {
    return places[edge.from] == kDropped || places[edge.to] == kDropped;
  });
  for (GraphEdge& edge : edges) edge = {places[edge.from], places[edge.to], edge.weight};
  Merge(edges);
}

class GraphReader {
 public:
  GraphReader(SiteMgr& manager, const ExportedSite& site, const GraphWanted& wanted, Graph& graph)
      : manager_(manager), site_(site), wanted_(wanted), graph_(graph) {}

  int Read() {
    if (ReadFiles() < 0 || ReadHosts() < 0 || ReadLinks() < 0) return -1;
    DropUnwanted();
    Fold();
    Sort();
    return 0;
  }

 private:
  int ReadFiles() {
    const OwnedCells cells(manager_.EnumPath());
    if (cells == nullptr) return -1;
    for (const SiteRecCell& cell : *cells) {
      const bool isThere = cell.GetFlag() != 0;
      const bool isPage = cell.GetFileType() == static_cast<int>(FT_HTML);
      files_[cell.GetID().id] = graph_.nodes.size();
      graph_.nodes.push_back({!isThere ? NodeKind::kMissing
                              : isPage ? NodeKind::kPage
                                       : NodeKind::kFile,
                              JsonText(site_.nameOf(cell.GetName())), JsonText(cell.GetTitle())});
      if (isThere) graph_.nodes.back().size = cell.GetSize();
    }
    return 0;
  }

  int ReadHosts() {
    const OwnedCells cells(manager_.EnumUrl());
    if (cells == nullptr) return -1;
    std::unordered_map<std::string, std::size_t> hosts;
    for (const SiteRecCell& cell : *cells) {
      const std::string host = JsonText(HostOfUrl(cell.GetName()));
      if (host.empty()) continue;
      const auto [known, isNew] = hosts.emplace(host, graph_.nodes.size());
      if (isNew) graph_.nodes.push_back({NodeKind::kHost, host, ""});
      urls_[cell.GetID().id] = known->second;
    }
    return 0;
  }

  int ReadLinks() {
    const std::unique_ptr<std::vector<int>> numbers(manager_.EnumLink());
    if (numbers == nullptr) return -1;
    SiteLink link;
    for (const int number : *numbers) {
      if (manager_.GetLink(number, link) == 0) AddLink(link);
    }
    Merge(graph_.edges);
    for (const GraphEdge& edge : graph_.edges) {
      if (edge.from == edge.to) continue;
      graph_.nodes[edge.to].inLinks += edge.weight;
      if (graph_.nodes[edge.to].kind == NodeKind::kMissing) {
        graph_.nodes[edge.from].broken += edge.weight;
        graph_.nodes[edge.from].brokenFiles = 1;
      }
    }
    return 0;
  }
  void AddLink(const SiteLink& link) {
    const auto& targets = link.to.kind == kKindUrl ? urls_ : files_;
    const auto from = files_.find(link.from.id);
    const auto to = targets.find(link.to.id);
    if (from == files_.end() || to == targets.end()) return;
    GraphNode& source = graph_.nodes[from->second];
    // Pages of other types than HTML are those that hold links, apart from style sheets.
    const bool isOfPage =
        (link.type & (LT_CSS_LINK | LT_CSS_IMPORT | LT_CSS_IMAGE | LT_CSS_OTHER)) == 0;
    if (source.kind == NodeKind::kFile && isOfPage) source.kind = NodeKind::kPage;
    if (link.outside) graph_.nodes[to->second].kind = NodeKind::kOutside;
    graph_.edges.push_back({from->second, to->second, link.count});
  }

  bool IsShown(NodeKind kind) const { return kind != NodeKind::kFile || wanted_.allFiles; }
  static bool IsTargetOnly(NodeKind kind) {
    return kind == NodeKind::kMissing || kind == NodeKind::kOutside || kind == NodeKind::kHost;
  }

  void DropUnwanted() {
    const std::vector<bool> isNear = FindNear();
    std::vector<bool> isShown(graph_.nodes.size());
    for (std::size_t i = 0; i < isShown.size(); ++i) {
      const NodeKind kind = graph_.nodes[i].kind;
      isShown[i] = isNear[i] && IsShown(kind) && !IsTargetOnly(kind);
    }
    std::vector<bool> isTarget(isShown);
    for (const GraphEdge& edge : graph_.edges) {
      const std::size_t to = edge.to;
      if (isShown[edge.from] && isNear[to] && IsTargetOnly(graph_.nodes[to].kind))
        isTarget[to] = true;
    }
    std::vector<std::size_t> places(graph_.nodes.size(), kDropped);
    std::vector<GraphNode> nodes;
    for (std::size_t i = 0; i < places.size(); ++i) {
      if (!isTarget[i]) continue;
      places[i] = nodes.size();
      nodes.push_back(std::move(graph_.nodes[i]));
    }
    graph_.nodes = std::move(nodes);
    MoveEdges(graph_.edges, places);
  }

  // What is near enough to the file that was asked for. The way does not lead on from targets that
  // are no files of the site: everything would be near to everything.
  std::vector<bool> FindNear() const {
    const auto start = files_.find(wanted_.from);
    std::vector<bool> isNear(graph_.nodes.size(), start == files_.end());
    if (start == files_.end()) return isNear;
    std::vector<std::vector<std::size_t>> next(graph_.nodes.size());
    for (const GraphEdge& edge : graph_.edges) {
      if (!IsShown(graph_.nodes[edge.from].kind) || !IsShown(graph_.nodes[edge.to].kind)) continue;
      next[edge.from].push_back(edge.to);
      next[edge.to].push_back(edge.from);
    }
    std::vector<std::size_t> ring{start->second};
    isNear[start->second] = true;
    for (int depth = 0; depth < wanted_.depth && !ring.empty(); ++depth) {
      std::vector<std::size_t> outer;
      for (const std::size_t node : ring) {
        if (IsTargetOnly(graph_.nodes[node].kind) && node != start->second) continue;
        for (const std::size_t other : next[node]) {
          if (!isNear[other]) outer.push_back(other);
          isNear[other] = true;
        }
      }
      ring = std::move(outer);
    }
    return isNear;
  }

  void Fold() {
    Folding folding;
    for (const GraphNode& node : graph_.nodes) {
      if (IsOfSite(node.kind)) folding.Add(node.name);
    }
    folding.Fold(wanted_.fold);
    std::vector<std::size_t> places(graph_.nodes.size());
    std::vector<GraphNode> nodes;
    std::map<std::string, std::size_t> folders;
    for (std::size_t i = 0; i < places.size(); ++i) {
      GraphNode& node = graph_.nodes[i];
      const std::string* const folder = IsOfSite(node.kind) ? folding.FolderOf(node.name) : nullptr;
      if (folder == nullptr) {
        places[i] = nodes.size();
        nodes.push_back(std::move(node));
        continue;
      }
      const auto [known, isNew] = folders.emplace(*folder, nodes.size());
      if (isNew) nodes.push_back({NodeKind::kFolder, folder->empty() ? "." : *folder, "", 0});
      places[i] = known->second;
      GraphNode& standing = nodes[known->second];
      ++standing.stands;
      standing.size += node.size;
      standing.inLinks += node.inLinks;
      standing.broken += node.broken;
      standing.brokenFiles += node.brokenFiles;
    }
    graph_.nodes = std::move(nodes);
    MoveEdges(graph_.edges, places);
    std::erase_if(graph_.edges, [this](const GraphEdge& edge) {
      if (edge.from == edge.to) graph_.nodes[edge.from].inner += edge.weight;
      return edge.from == edge.to;
    });
  }

  void Sort() {
    std::vector<std::size_t> order(graph_.nodes.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::ranges::sort(order, {}, [this](std::size_t i) {
      return std::tie(graph_.nodes[i].kind, graph_.nodes[i].name);
    });
    std::vector<std::size_t> places(order.size());
    std::vector<GraphNode> nodes;
    for (const std::size_t i : order) {
      places[i] = nodes.size();
      nodes.push_back(std::move(graph_.nodes[i]));
    }
    graph_.nodes = std::move(nodes);
    MoveEdges(graph_.edges, places);
  }

  SiteMgr& manager_;
  const ExportedSite& site_;
  const GraphWanted& wanted_;
  Graph& graph_;
  std::unordered_map<int, std::size_t> files_;  // by number: index into the nodes, while reading
  std::unordered_map<int, std::size_t> urls_;
};

}  // namespace

int ReadGraph(SiteMgr& manager, const ExportedSite& site, const GraphWanted& wanted, Graph& graph) {
  graph = {JsonText(site.name), {}, {}};
  return GraphReader(manager, site, wanted, graph).Read();
}

}  // namespace zvrsit
