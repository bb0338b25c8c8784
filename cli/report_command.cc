// The command report.
#include <cstdio>
#include <ctime>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/finding_options.h"
#include "cli/freshness.h"
#include "cli/interrupts.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "exports/new_file.h"
#include "web/report.h"

namespace zvrsit::cli {
namespace {

struct ReportWanted {
  std::string site;
  std::string output;
};

std::string Now() {
  const std::time_t now = std::time(nullptr);
  char text[32];
  const std::size_t length =
      std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&now));
  return std::string(text, length);
}

void WriteReport(const std::string& place, const std::string& page) {
  try {
    NewFile file({place, PathOf(place)});
    file.Write(page);
    Interrupts::Check();
    file.Commit();
  } catch (const ExportError& error) {
    throw Failure(kFileSystem, error.what());
  }
}

int RunReport(const Options& options, const ReportWanted& wanted) {
  const Interrupts interrupts;
  Session session(options, Database::kAsk);
  session.OpenToAsk(wanted.site);
  const SiteNames& names = session.names();
  FindingOptions rules;
  Configure(rules, ConfigIn(names.nativeFolder()));
  SiteMgr& manager = session.manager();
  const std::string top = Take(manager.GetSiteProfTopFile());
  FindingReport report;
  FindAll(session, top, rules, report);
  const ExportedSite exported{wanted.site, names.nativeFolder(),
                              [&names](const std::string& path) { return names.Shown(path); }};
  SiteContent content;
  if (ReadContent(manager, exported, top, content) != 0) {
    throw Failure(kDatabase, "the tables of \"" + wanted.site + "\" cannot be read");
  }
  const ViewedSite site{wanted.site, names.nativeFolder(),
                        Take(manager.GetSiteProfDir(kSlotLiveUrl)),
                        manager.GetLinkRules() == LinkRules::Classic, Now()};
  session.LetGo();
  const SiteChanges changes = CompareSite(session);
  TellChanges(session, changes, wanted.site);
  NoteChanges(session, changes, report);
  WriteReport(wanted.output, ReportPage(site, content, report));
  return kClean;
}

}  // namespace

void AddReportCommand(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<ReportWanted>();
  CLI::App* report =
      app.add_subcommand("report", "Write all that is known of a site as one web page");
  AddSiteName(*report, wanted->site);
  report->add_option("-o,--output", wanted->output, "the file")
      ->option_text("FILE.html")
      ->required()
      ->check(NotEmpty());
  report->callback([&options, &run, wanted] {
    run = [&options, wanted] { return RunReport(options, *wanted); };
  });
}

}  // namespace zvrsit::cli
