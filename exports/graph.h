// The pages of a site and the links between them, as a graph.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exports/site_rows.h"

namespace zvrsit {

enum class NodeKind : std::uint8_t {
  kPage,
  kFile,     // any other file that is there
  kMissing,  // a file that is not there
  kOutside,  // a file that lies outside of the site
  kHost,     // of external URLs
  kFolder,   // everything in it
};
// "page", "file" and so on.
const char* NodeKindName(NodeKind kind);

struct GraphNode {
  NodeKind kind = NodeKind::kPage;
  // Texts as in JSON (findings/escapes.h). The name is native, relative to the site folder; that of
  // a folder ends in a separator, "." is the site folder. A host has its port.
  std::string name;
  std::string title;        // of a page
  std::int64_t stands = 1;  // for how many files of the site a folder stands
  std::int64_t inner = 0;   // how many links lead from it to itself
  // Of all the files that it stands for: bytes, links to them from other files, and links from them
  // to files that are not there; and how many of them have such links.
  std::int64_t size = 0;
  std::int64_t inLinks = 0;
  std::int64_t broken = 0;
  std::int64_t brokenFiles = 0;
};
struct GraphEdge {
  std::size_t from = 0;  // index into Graph::nodes
  std::size_t to = 0;
  std::int64_t weight = 0;  // how many links; one that stands twice in a page counts twice
};
struct Graph {
  std::string site;
  std::vector<GraphNode> nodes;  // by kind and name
  std::vector<GraphEdge> edges;  // by their ends, none twice
};

struct GraphWanted {
  bool allFiles = false;  // not only pages
  // With more files than this, folders stand for what is in them. Beginning with the site folder,
  // they are unfolded, the largest first, as long as there is room (folding.h). 0: none is folded.
  std::size_t fold = 0;
  // Only what is at most `depth` links away from this file, in either direction; -1: everything.
  int from = -1;
  int depth = 1;
};

// Reads the graph of the open site; 0, or -1 when a table cannot be read. Missing files and hosts
// are there when a node of the graph links to them. URLs without a host are left out.
[[nodiscard]] int ReadGraph(SiteMgr& manager, const ExportedSite& site, const GraphWanted& wanted,
                            Graph& graph);

enum class GraphFormat { kDot, kJson, kGraphml };
// The graph in that format, in UTF-8. A node has the same identifier as long as it has its name: it
// is one word of letters, digits and "._:-".
std::string FormatGraph(const Graph& graph, GraphFormat format);

}  // namespace zvrsit
