#include <fmt/core.h>

#include <functional>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"

namespace zvrsit::cli {
namespace {

using Cells = vec<SiteRecCell>;
using Query = Cells* (*)(SiteMgr&);

struct CellsBack {
  void operator()(Cells* cells) const { SiteMgr::DeleteVecRecCell(cells); }
};

Json CellAsJson(const std::string& name, const SiteRecCell& cell) {
  Json row{{"name", JsonText(name)}};
  if (cell.GetID().kind != kKindPath) return row;
  row["title"] = JsonText(cell.GetTitle());
  row["type"] = cell.GetFileType();
  row["size"] = cell.GetSize();
  row["time"] = cell.GetTime();
  row["exists"] = cell.GetFlag() != 0;
  return row;
}

void PrintCell(const std::string& name, const SiteRecCell& cell) {
  fmt::print("{}", LineText(name));
  if (!cell.GetTitle().empty()) fmt::print("  \"{}\"", LineText(cell.GetTitle()));
  if (cell.GetID().kind == kKindPath && cell.GetFlag() == 0) fmt::print("  missing");
  fmt::print("\n");
}

int RunQuery(const Options& options, const std::string& site, Query query) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  const std::unique_ptr<Cells, CellsBack> cells(query(session.manager()));
  if (cells == nullptr) throw Failure(kDatabase, "the tables of \"" + site + "\" cannot be read");
  Json rows = Json::array();
  for (const SiteRecCell& cell : *cells) {
    const std::string name =
        cell.GetID().kind == kKindPath ? session.Shown(cell.GetName()) : cell.GetName();
    if (options.json) {
      rows.push_back(CellAsJson(name, cell));
    } else {
      PrintCell(name, cell);
    }
  }
  if (options.json) PrintJson(rows);
  return kClean;
}

Cells* Family(SiteMgr& manager) {
  return manager.UpdateLinkFamily() == 0 ? manager.GetFtpMember() : nullptr;
}

}  // namespace

void AddFileCommands(CLI::App& app, const Options& options, Run& run) {
  struct Row {
    const char* name;
    const char* help;
    Query query;
  };
  const Row rows[] = {
      {"files", "List the files that the site knows", [](SiteMgr& m) { return m.EnumPath(); }},
      {"urls", "List the external URLs that the site links to",
       [](SiteMgr& m) { return m.EnumUrl(); }},
      {"unused", "List the files that nothing links to",
       [](SiteMgr& m) { return m.GetUnusedFiles(); }},
      {"family", "List the files that the top file reaches", &Family},
  };
  for (const Row& row : rows) {
    const auto site = std::make_shared<std::string>();
    CLI::App* command = app.add_subcommand(row.name, row.help);
    command->add_option("NAME", *site, "the site")->required();
    command->callback([&options, &run, site, query = row.query] {
      run = [&options, site, query] { return RunQuery(options, *site, query); };
    });
  }
}

}  // namespace zvrsit::cli
