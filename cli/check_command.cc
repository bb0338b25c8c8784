#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/freshness.h"
#include "cli/link_report.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

constexpr const char* kName = "checked";

struct Findings {
  int code = kClean;  // of the rebuild
  SiteTotals totals;
  std::vector<BrokenLink> broken;
  Json unread;
};

// The database is gone before anything is printed, so that an early end of whoever reads the
// output leaves nothing behind.
Findings Examine(const Options& options, const GivenSite& site) {
  PrivateFolder folder(PathOf(options.database));
  Options own = options;
  own.database = NameOf(folder.path());
  Session session(own, Database::kMake);
  AddSite(session, kName, site);
  session.Open(kName);
  Findings findings;
  findings.code = RebuildSite(session, true);
  folder.Remove();  // from here on an interrupt ends the program
  findings.totals = CountSite(session);
  findings.broken = BrokenLinks(session);
  const SiteChanges changes = CompareSite(session);
  findings.unread = ChangesAsJson(session, changes)["unread"];
  TellUnread(session, changes);
  session.Discard();
  return findings;
}

int RunCheck(const Options& options, const GivenSite& site, bool all) {
  const Findings findings = Examine(options, site);
  if (options.json) {
    Json head = TotalsAsJson(findings.totals);
    head["unread"] = findings.unread;
    PrintBrokenAsJson(head, findings.broken);
  } else {
    PrintTotals(findings.totals);
    PrintBroken(findings.broken, all);
    Print("{}\n", CountedBroken(findings.broken));
  }
  if (findings.code != kClean) return findings.code;
  return findings.broken.empty() ? kClean : kFindings;
}

}  // namespace

void AddCheckCommand(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<GivenSite>();
  CLI::App* check =
      app.add_subcommand("check", "Check a folder for broken links, nothing to set up");
  AddGiven(*check, "FOLDER", site->folder, "the folder of the site")->option_text(" ")->required();
  AddSiteOptions(*check, *site);
  check->footer("With --db the temporary database is made below that folder.\n" +
                check->get_footer());
  const auto all = std::make_shared<bool>(false);
  AddAllPlaces(*check, *all);
  check->callback([&options, &run, site, all] {
    run = [&options, site, all] { return RunCheck(options, *site, *all); };
  });
}

}  // namespace zvrsit::cli
