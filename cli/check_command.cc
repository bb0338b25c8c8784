#include <fmt/core.h>

#include <filesystem>
#include <memory>
#include <random>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/link_report.h"
#include "cli/rebuild.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "checked";

// A folder of our own among the temporary files, gone with this object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::random_device random;
    const fs::path base = fs::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
      path_ = base / fmt::format("zvrsit-{:08x}{:08x}", random(), random());
      std::error_code error;
      if (!fs::create_directory(path_, error)) continue;
      fs::permissions(path_, fs::perms::owner_all, error);
      return;
    }
    throw Failure(kFileSystem, base.string() + ": no temporary folder can be made here");
  }
  ~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(path_, error);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string path() const { return path_.string(); }

 private:
  fs::path path_;
};

int RunCheck(const Options& options, const NewSite& site) {
  const TemporaryFolder folder;
  Options own = options;
  if (own.database.empty()) own.database = folder.path();
  Session session(own, Database::kMake);
  AddSite(session, kName, site);
  session.Open(kName);
  const int code = RebuildSite(session, true);
  const SiteTotals totals = CountSite(session);
  const std::vector<ShownLink> broken = BrokenLinks(session);
  session.Close();
  if (options.json) {
    Json answer = TotalsAsJson(totals);
    answer["broken"] = LinksAsJson(broken);
    PrintJson(answer);
  } else {
    PrintTotals(totals);
    PrintBroken(broken);
    fmt::print("{}\n", broken.empty() ? "no broken links"
                                      : Counted(static_cast<long>(broken.size()), "broken link",
                                                "broken links"));
  }
  if (code != kClean) return code;
  return broken.empty() ? kClean : kFindings;
}

}  // namespace

void AddCheckCommand(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<NewSite>();
  CLI::App* check =
      app.add_subcommand("check", "Check a folder for broken links, nothing to set up");
  AddNewSiteOptions(*check, *site);
  check->callback(
      [&options, &run, site] { run = [&options, site] { return RunCheck(options, *site); }; });
}

}  // namespace zvrsit::cli
