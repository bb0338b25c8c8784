// A graph in the languages of other programs.
#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include <utility>

#include "exports/graph.h"
#include "findings/dump_json.h"
#include "findings/escapes.h"

namespace zvrsit {
namespace {

// By NodeKind.
struct KindTraits {
  const char* name;
  char letter;       // of identifiers; one for all files, as they come and go
  const char* look;  // in DOT
};
constexpr KindTraits kKinds[] = {
    {"page", 'f', "shape=box"},
    {"file", 'f', "shape=note"},
    {"missing", 'f', "shape=octagon, color=red"},
    {"outside", 'f', "shape=box, style=dashed"},
    {"host", 'h', "shape=ellipse"},
    {"folder", 'd', "shape=folder"},
};

const KindTraits& TraitsOfKind(NodeKind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

// Each byte that is not allowed becomes "_" and two digits.
std::string IdOf(const GraphNode& node) {
  std::string id = std::string(1, TraitsOfKind(node.kind).letter) + ":";
  for (const char c : node.name) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || c == '.' || c == '-';
    id += isPlain ? std::string(1, c) : fmt::format("_{:02X}", static_cast<unsigned char>(c));
  }
  return id;
}

// Neither DOT nor XML can hold control characters.
std::string WithControlsEscaped(std::string_view utf8) {
  std::string text;
  for (const char c : utf8) {
    const auto value = static_cast<unsigned char>(c);
    text += value < 0x20 || value == 0x7F ? fmt::format("\\x{:02x}", value) : std::string(1, c);
  }
  return WithoutControls(std::move(text));
}

// A quoted text of DOT, whose labels know escapes and entities.
std::string DotText(std::string_view utf8) {
  static constexpr Replacements kEscapes{{'\\', "\\\\"}, {'"', "\\\""}, {'&', "&amp;"}};
  return '"' + kEscapes.In(WithControlsEscaped(utf8)) + '"';
}

std::string GraphXml(std::string_view utf8) {
  return XmlMarkup(WithControlsEscaped(utf8));
}

std::string FormatDot(const Graph& graph) {
  std::string out = "digraph " + DotText(graph.site) + " {\n";
  for (const GraphNode& node : graph.nodes) {
    const std::string label =
        node.kind == NodeKind::kFolder ? fmt::format("{} ({})", node.name, node.stands) : node.name;
    out += fmt::format("  \"{}\" [label={}, {}", IdOf(node), DotText(label),
                       TraitsOfKind(node.kind).look);
    if (!node.title.empty()) out += ", tooltip=" + DotText(node.title);
    out += "];\n";
  }
  for (const GraphEdge& edge : graph.edges) {
    out += fmt::format("  \"{}\" -> \"{}\" [weight={}];\n", IdOf(graph.nodes[edge.from]),
                       IdOf(graph.nodes[edge.to]), edge.weight);
  }
  return out + "}\n";
}

std::string FormatJson(const Graph& graph) {
  using Json = nlohmann::ordered_json;
  std::string out = "{\"version\":1,\"site\":" + DumpJson(graph.site) + ",\n\"nodes\":[";
  const char* separator = "\n";
  for (const GraphNode& node : graph.nodes) {
    out += separator + DumpJson({{"id", IdOf(node)},
                                 {"kind", NodeKindName(node.kind)},
                                 {"name", node.name},
                                 {"title", node.title.empty() ? Json() : Json(node.title)},
                                 {"stands", node.stands},
                                 {"inner", node.inner}});
    separator = ",\n";
  }
  out += "],\n\"edges\":[";
  separator = "\n";
  for (const GraphEdge& edge : graph.edges) {
    out += separator + DumpJson({{"from", IdOf(graph.nodes[edge.from])},
                                 {"to", IdOf(graph.nodes[edge.to])},
                                 {"weight", edge.weight}});
    separator = ",\n";
  }
  return out + "]}\n";
}

std::string FormatGraphml(const Graph& graph) {
  std::string out =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<graphml xmlns=\"http://graphml.graphdrawing.org/xmlns\">\n";
  for (const char* const key : {"kind", "name", "title"}) {
    out +=
        fmt::format("<key id=\"{0}\" for=\"node\" attr.name=\"{0}\" attr.type=\"string\"/>\n", key);
  }
  for (const char* const key : {"stands", "inner"}) {
    out +=
        fmt::format("<key id=\"{0}\" for=\"node\" attr.name=\"{0}\" attr.type=\"long\"/>\n", key);
  }
  out += "<key id=\"weight\" for=\"edge\" attr.name=\"weight\" attr.type=\"long\"/>\n";
  out += "<graph id=\"site\" edgedefault=\"directed\">\n";
  const auto data = [&out](const char* key, const std::string& value) {
    out += fmt::format("<data key=\"{}\">{}</data>", key, value);
  };
  for (const GraphNode& node : graph.nodes) {
    out += "<node id=\"" + IdOf(node) + "\">";
    data("kind", NodeKindName(node.kind));
    data("name", GraphXml(node.name));
    if (!node.title.empty()) data("title", GraphXml(node.title));
    data("stands", std::to_string(node.stands));
    data("inner", std::to_string(node.inner));
    out += "</node>\n";
  }
  for (const GraphEdge& edge : graph.edges) {
    out += fmt::format("<edge source=\"{}\" target=\"{}\">", IdOf(graph.nodes[edge.from]),
                       IdOf(graph.nodes[edge.to]));
    data("weight", std::to_string(edge.weight));
    out += "</edge>\n";
  }
  return out + "</graph>\n</graphml>\n";
}

}  // namespace

const char* NodeKindName(NodeKind kind) {
  return TraitsOfKind(kind).name;
}

std::string FormatGraph(const Graph& graph, GraphFormat format) {
  switch (format) {
    case GraphFormat::kJson:
      return FormatJson(graph);
    case GraphFormat::kGraphml:
      return FormatGraphml(graph);
    case GraphFormat::kDot:
      break;
  }
  return FormatDot(graph);
}

}  // namespace zvrsit
