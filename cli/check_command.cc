#include <fmt/core.h>

#include <filesystem>
#include <memory>
#include <random>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/freshness.h"
#include "cli/link_report.h"
#include "cli/native_name.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "checked";

// A folder of our own below `base`, gone with this object.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const fs::path& base) {
    std::error_code ignored;
    fs::create_directories(base, ignored);
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
      path_ = base / fmt::format("zvrsit-{:08x}{:08x}", random(), random());
      std::error_code error;
      if (!fs::create_directory(path_, error)) continue;
      fs::permissions(path_, fs::perms::owner_all, error);
      return;
    }
    throw Failure(kFileSystem, NameOf(base) + ": no temporary folder can be made here");
  }
  ~TemporaryFolder() { Remove(); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path() const { return NameOf(path_); }
  // Removes what the system lets go of while it is open.
  void Remove() const {
    std::error_code error;
    fs::remove_all(path_, error);
  }

 private:
  fs::path path_;
};

struct Findings {
  int code = kClean;  // of the rebuild
  SiteTotals totals;
  std::vector<BrokenLink> broken;
  Json unread;
};

// The database is gone before anything is printed, so that an early end of whoever reads the
// output leaves nothing behind.
Findings Examine(const Options& options, const GivenSite& site) {
  const TemporaryFolder folder(options.database.empty() ? fs::temp_directory_path()
                                                        : PathOf(options.database));
  Options own = options;
  own.database = folder.path();
  Session session(own, Database::kMake);
  AddSite(session, kName, site);
  session.Open(kName);
  Findings findings;
  findings.code = RebuildSite(session, true);
  folder.Remove();  // an interrupt is not caught from here on
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
