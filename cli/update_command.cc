#include "cli/update_command.h"

#include <memory>
#include <utility>
#include <vector>

#include "cli/beside_rebuild.h"
#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/rebuild.h"
#include "cli/unsynced.h"
#include "manager/site_changes.h"

namespace zvrsit::cli {
namespace {

// Updates the site without reading all of it. False when it must be rebuilt; `marks` then has those
// of the user, if the tables could be read.
bool UpdateOpenSite(Session& session, const std::string& name, bool showsProgress, Updated& updated,
                    std::vector<Mark>& marks) {
  session.HoldSite(name);
  const std::string tables = session.FolderOfTables(name);
  if (MayBeTorn(tables)) {
    marks = NotedMarks(tables);
    return false;
  }
  session.manager().SetMapsTables(true);  // nobody else comes near them before they are closed
  const bool isWhole = session.manager().NeedToRebuild(name) == kRebuilt;
  if (!session.OpenIfSound(name)) return false;
  marks = ListMarks(session.manager());
  if (!isWhole) return false;
  TerminalProgress progress(showsProgress);
  const NotOfTheSite leftOut(session);
  const int result = session.manager().SiteUpdate(updated.changes, progress.dialog());
  Interrupts::Check();
  if (result < 0) ThrowIfSystemFailed("the update failed");
  if (result != 0) return false;
  updated.code = TellSkipped(session);
  updated.totals = CountSite(session);
  return true;
}

int RunUpdate(const Options& options, const std::string& name) {
  const Updated updated = UpdateSite(options, name, true);
  const SiteUpdates& changes = updated.changes;
  if (options.json) {
    const SiteTotals& totals = updated.totals;
    PrintJson({{"rebuilt", updated.isRebuilt},
               {"new", changes.added.size()},
               {"changed", changes.changed.size()},
               {"gone", changes.gone.size()},
               {"read", changes.read},
               {"files", totals.files},
               {"pages", totals.pages},
               {"sheets", totals.sheets},
               {"links", totals.links},
               {"urls", totals.urls}});
    return updated.code;
  }
  if (updated.isRebuilt) {
    Print("everything was read anew\n");
  } else {
    Print("{} new, {} changed, {} gone; {} read\n", changes.added.size(), changes.changed.size(),
          changes.gone.size(), changes.read);
  }
  PrintTotals(updated.totals, false);
  return updated.code;
}

}  // namespace

Updated UpdateSite(const Options& options, const std::string& name, bool showsProgress) {
  Updated updated;
  std::vector<Mark> marks;
  {
    Session session(options, Database::kMustExist);
    if (UpdateOpenSite(session, name, showsProgress, updated, marks)) {
      session.CloseUpdated();
      return updated;
    }
    session.Discard();
  }
  updated = {};
  updated.isRebuilt = true;
  Session session(options, Database::kMustExist);
  BesideRebuild rebuild(session, name, true);
  updated.code = RebuildSite(rebuild.copy(), true, session.database(), showsProgress);
  if (SetMarks(rebuild.copy().manager(), marks) != 0) rebuild.copy().FailToWrite();
  updated.totals = CountSite(rebuild.copy());
  rebuild.Commit();
  return updated;
}

void AddUpdateCommand(CLI::App& app, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App* update = app.add_subcommand("update", "Read what has changed on disk, and no more");
  AddSiteName(*update, *name);
  update->callback(
      [&options, &run, name] { run = [&options, name] { return RunUpdate(options, *name); }; });
}

}  // namespace zvrsit::cli
