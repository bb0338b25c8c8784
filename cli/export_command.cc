// The command export.
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/finding_options.h"
#include "cli/freshness.h"
#include "cli/interrupts.h"
#include "cli/native_name.h"
#include "exports/site_rows.h"

namespace zvrsit::cli {
namespace {

struct ExportWanted {
  std::string site;
  std::string to;
  std::string output;
  bool findings = false;
};

// Lets an interrupt end the export, so that nothing unfinished stays.
class InterruptedRows : public ExportRows {
 public:
  explicit InterruptedRows(std::unique_ptr<ExportRows> rows) : rows_(std::move(rows)) {}
  void Begin(const ExportTable& table) override { rows_->Begin(table); }
  void Add(const ExportRow& row) override {
    Interrupts::Check();
    rows_->Add(row);
  }
  void Finish() override { rows_->Finish(); }

 private:
  std::unique_ptr<ExportRows> rows_;
};

std::unique_ptr<ExportRows> MakeRows(const ExportWanted& wanted) {
  const OutputPath place{wanted.output, PathOf(wanted.output)};
  if (wanted.to == "jsonl") return MakeJsonLines(place);
  if (place.name.empty()) {
    throw Failure(kUsage, "an export to " + wanted.to + " needs a place: -o " +
                              (wanted.to == "csv" ? "FOLDER" : "FILE"));
  }
  if (wanted.to == "csv") return MakeCsv(place);
  if (!kHasSqlite)
    throw Failure(kUsage, "this program was built without SQLite: --to csv or jsonl");
  return MakeSqlite(place);
}

void WriteExport(Session& session, const ExportWanted& wanted, const FindingReport* report) {
  const SiteNames& names = session.names();
  const ExportedSite site{wanted.site, names.nativeFolder(),
                          [&names](const std::string& path) { return names.Shown(path); }};
  InterruptedRows rows(MakeRows(wanted));
  if (ExportSite(session.manager(), site, report, rows) != 0) {
    throw Failure(kDatabase, "the tables of \"" + wanted.site + "\" cannot be read");
  }
  session.LetGo();
  rows.Finish();
}

int RunExport(const Options& options, const ExportWanted& wanted) {
  Session session(options, Database::kAsk);
  session.OpenToAsk(wanted.site);
  FindingReport report;
  if (wanted.findings) {
    FindingOptions rules;
    Configure(rules, ConfigIn(session.names().nativeFolder()));
    FindAll(session, Take(session.manager().GetSiteProfTopFile()), rules, report);
  }
  TellChanges(session, CompareSite(session), wanted.site);
  const Interrupts interrupts;
  try {
    WriteExport(session, wanted, wanted.findings ? &report : nullptr);
  } catch (const ExportError& error) {
    throw Failure(kFileSystem, error.what());
  }
  return kClean;
}

}  // namespace

void AddExportCommand(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<ExportWanted>();
  CLI::App* command = app.add_subcommand(
      "export", "Write files, links and URLs of a site as tables for other programs");
  AddSiteName(*command, wanted->site);
  command->add_option("--to", wanted->to, "a database, files of a table each, or an object a line")
      ->option_text("sqlite|csv|jsonl")
      ->check(CLI::IsMember({"sqlite", "csv", "jsonl"}))
      ->required();
  command
      ->add_option("-o,--output", wanted->output,
                   "where to: a file, for csv a folder; jsonl goes to stdout without it")
      ->option_text("PLACE");
  command->add_flag("--findings", wanted->findings, "also what `broken` and `check` would tell");
  command->callback([&options, &run, wanted] {
    run = [&options, wanted] { return RunExport(options, *wanted); };
  });
}

}  // namespace zvrsit::cli
