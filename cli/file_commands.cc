#include <cstdint>
#include <memory>
#include <string_view>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/freshness.h"
#include "cli/output.h"
#include "cli/url_commands.h"
#include "findings/owned_cells.h"
#include "findings/url_check.h"
#include "util/file_type.h"

namespace zvrsit::cli {
namespace {

using Cells = vec<SiteRecCell>;
using Query = Cells* (*)(SiteMgr&);

struct TypeName {
  std::uint32_t type;
  const char* name;
};
constexpr TypeName kTypeNames[] = {
    {FT_HTML, "FT_HTML"}, {FT_CSS, "FT_CSS"}, {FT_JPEG, "FT_JPEG"}, {FT_GIF, "FT_GIF"},
    {FT_BMP, "FT_BMP"},   {FT_PNG, "FT_PNG"}, {FT_TIFF, "FT_TIFF"}, {FT_MIDI, "FT_MIDI"},
    {FT_WAV, "FT_WAV"},   {FT_AU, "FT_AU"},   {FT_JAVA, "FT_JAVA"}, {FT_JS, "FT_JS"},
    {FT_TXT, "FT_TXT"},   {FT_CSV, "FT_CSV"}, {FT_CDF, "FT_CDF"},   {FT_XBM, "FT_XBM"},
    {FT_FPX, "FT_FPX"},   {FT_PCD, "FT_PCD"}, {FT_MIF, "FT_MIF"},   {FT_DCM, "FT_DCM"},
};

const char* FileTypeName(int type) {
  for (const TypeName& row : kTypeNames) {
    if (row.type == static_cast<std::uint32_t>(type)) return row.name;
  }
  return "FT_OTHER";
}

// A file that was never seen on disk has neither size nor time.
Json CellAsJson(const std::string& name, const SiteRecCell& cell) {
  Json row{{"name", JsonText(name)}};
  if (cell.GetID().kind != kKindPath) return row;
  const bool seen = cell.GetTime() != 0;
  row["title"] = JsonText(cell.GetTitle());
  row["type"] = FileTypeName(cell.GetFileType());
  row["code"] = cell.GetFileType();
  row["size"] = seen ? Json(cell.GetSize()) : Json();
  row["time"] = seen ? Json(cell.GetTime()) : Json();
  row["exists"] = cell.GetFlag() != 0;
  return row;
}

void PrintCell(const std::string& name, const SiteRecCell& cell, bool inSite) {
  Print("{}", LineText(name));
  if (!cell.GetTitle().empty()) Print("  \"{}\"", LineText(cell.GetTitle()));
  if (cell.GetID().kind == kKindPath && cell.GetFlag() == 0) {
    Print("{}", inSite ? "  missing" : "  outside of the site");
  }
  Print("\n");
}

int RunQuery(const Options& options, const std::string& site, Query query, bool endsInNul) {
  Session session(options, Database::kAsk);
  session.OpenToAsk(site);
  const OwnedCells cells(query(session.manager()));
  if (cells == nullptr) {
    throw Failure(kDatabase, "the tables of \"" + site + "\" cannot be read");
  }
  session.LetGo();
  TellChanges(session, CompareSite(session), site);
  JsonRows rows;
  for (const SiteRecCell& cell : *cells) {
    const bool isFile = cell.GetID().kind == kKindPath;
    if (endsInNul) {
      Print("{}{}", isFile ? NativePath(cell.GetName()) : WithoutCredentials(cell.GetName()), '\0');
      continue;
    }
    const std::string name =
        isFile ? session.names().Shown(cell.GetName()) : WithoutCredentials(cell.GetName());
    if (options.json) {
      rows.Add(CellAsJson(name, cell));
    } else {
      PrintCell(name, cell, session.names().AreOf(cell.GetName()));
    }
  }
  if (options.json && !endsInNul) rows.End();
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
    AddSiteName(*command, *site);
    const auto endsInNul = std::make_shared<bool>(false);
    command->add_flag("-0,--null", *endsInNul,
                      "whole names alone, each ended by a NUL: for xargs -0");
    const auto check = std::make_shared<FindingOptions>();
    if (std::string_view(row.name) == "urls") AddUrlCheck(*command, *check);
    command->callback([&options, &run, site, endsInNul, check, query = row.query] {
      if (IsUrlCheck(*check)) {
        run = [&options, site, check] { return RunUrlCheck(options, *site, *check); };
        return;
      }
      run = [&options, site, endsInNul, check, query] {
        NeedUse(check->external, false, "--check");
        return RunQuery(options, *site, query, *endsInNul);
      };
    });
  }
}

}  // namespace zvrsit::cli
