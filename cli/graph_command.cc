// The command graph.
#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/freshness.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "exports/graph_picture.h"

namespace zvrsit::cli {
namespace {

struct GraphOptions {
  std::string site;
  std::string to;
  std::string output;
  std::string from;
  std::string area;
  bool isPicture = false;
  GraphWanted wanted;
};

GraphFormat FormatOf(const Options& options, const std::string& to) {
  if (to == "graphml") return GraphFormat::kGraphml;
  return to == "json" || (to.empty() && options.json) ? GraphFormat::kJson : GraphFormat::kDot;
}

std::string Drawn(const Graph& graph, const Options& options, const GraphOptions& given) {
  if (!given.isPicture) return FormatGraph(graph, FormatOf(options, given.to));
  return DrawGraph(graph, given.area == "links" ? AreaOf::kInLinks : AreaOf::kBytes);
}

void WriteTo(const std::string& place, const std::string& text) {
  if (place.empty()) {
    Print("{}", text);
    return;
  }
  try {
    NewFile file({place, PathOf(place)});
    file.Write(text);
    file.Commit();
  } catch (const ExportError& error) {
    throw Failure(kFileSystem, error.what());
  }
}

int RunGraph(const Options& options, GraphOptions given) {
  Session session(options, Database::kAsk);
  session.OpenToAsk(given.site);
  if (!given.from.empty()) given.wanted.from = session.EntryOf(given.from).id;
  const SiteNames& names = session.names();
  const ExportedSite site{given.site, names.nativeFolder(),
                          [&names](const std::string& path) { return names.Shown(path); }};
  Graph graph;
  if (ReadGraph(session.manager(), site, given.wanted, graph) != 0) {
    throw Failure(kDatabase, "the tables of \"" + given.site + "\" cannot be read");
  }
  session.LetGo();
  TellChanges(session, CompareSite(session), given.site);
  WriteTo(given.output, Drawn(graph, options, given));
  return kClean;
}

}  // namespace

void AddGraphCommand(CLI::App& app, const Options& options, Run& run) {
  const auto given = std::make_shared<GraphOptions>();
  given->wanted.fold = 500;
  CLI::App* graph =
      app.add_subcommand("graph", "Draw the pages of a site and the links between them as a graph");
  AddSiteName(*graph, given->site);
  CLI::Option* to =
      graph->add_option("--to", given->to, "Graphviz, programs, editors of graphs, a picture")
          ->option_text("dot|json|graphml|svg")
          ->check(CLI::IsMember({"dot", "json", "graphml", "svg"}));
  graph->add_flag("--svg", given->isPicture, "a picture: areas within areas, and arcs for links")
      ->excludes(to);
  graph->add_option("--area", given->area, "what areas of the picture show (size)")
      ->option_text("size|links")
      ->check(CLI::IsMember({"size", "links"}));
  graph->add_option("-o,--output", given->output, "a file, instead of stdout")
      ->option_text("FILE")
      ->check(NotEmpty());
  graph
      ->add_option("--fold", given->wanted.fold,
                   "with more files than this, folders stand for them (500); 0: never")
      ->option_text("NUMBER");
  CLI::Option* from = graph->add_option("--from", given->from, "only what is near to this file")
                          ->option_text("FILE")
                          ->check(NotEmpty());
  graph->add_option("--depth", given->wanted.depth, "how many links away that is, both ways (1)")
      ->option_text("NUMBER")
      ->check(CLI::Range(0, 1 << 20))
      ->needs(from);
  graph->add_flag("--all-files", given->wanted.allFiles, "also images, style sheets and the like");
  graph->callback([&options, &run, given] {
    given->isPicture = given->isPicture || given->to == "svg";
    run = [&options, given] { return RunGraph(options, *given); };
  });
}

}  // namespace zvrsit::cli
