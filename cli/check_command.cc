#include <chrono>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/finding_options.h"
#include "cli/freshness.h"
#include "cli/known_site.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "cli/rebuild.h"
#include "cli/selection.h"
#include "cli/site_profile.h"
#include "cli/update_command.h"
#include "findings/collect.h"

namespace zvrsit::cli {
namespace {

constexpr const char* kName = "checked";

// What asking the URLs of other sites shows, as far as links of the selected files lead to them.
std::vector<UrlFinding> AskExternal(const Options& options, Session& session,
                                    const Selection& selection, const FindingOptions& wanted,
                                    const std::string& baseUrl) {
  const ExternalWish wish = WishOf(wanted.external);
  if (!wish.isWanted) return {};
  const auto begin = std::chrono::steady_clock::now();
  const std::vector<LinkedUrl> urls =
      ListLinkedUrls(session.manager(), session.names().folder(), wanted.ignores,
                     [&](const std::string& file) { return selection.Holds(file); });
  const std::string keptFile = KeptFileOfFolder(options, selection.root());
  const AskedUrls asked = AskWithProgress(urls, {wish, baseUrl, keptFile, wanted.quiet});
  Tell(wanted, fmt::format("{} URLs asked, {} known from before, in {:.2f} s", asked.asked,
                           asked.kept, SecondsSince(begin)));
  return FindingsOf(urls, asked.results);
}

// Fills `report` and gives the exit code of the rebuild. The database is removed before anything is
// printed. So nothing is left behind when the reader of the output ends early.
int Examine(const Options& options, const GivenSite& site, const Selection& selection,
            const FindingOptions& wanted, FindingReport& report) {
  const auto begin = std::chrono::steady_clock::now();
  PrivateFolder folder;
  Options own = options;
  own.database = NameOf(folder.path());
  Session session(own, Database::kMake);
  AddSite(session, kName, site);
  session.Open(kName);
  session.manager().KeepPageIds(true);
  const std::string top = Take(session.manager().GetSiteProfTopFile());
  Tell(wanted, "the site is " + session.names().nativeFolder() + ", its home page " +
                   session.names().Shown(top));
  const int code = RebuildSite(session, true, "", !wanted.quiet);
  Tell(wanted, fmt::format("read in {:.2f} s", SecondsSince(begin)));
  folder.Remove();  // from here on an interrupt ends the program
  FindAll(session, top, wanted, report,
          AskExternal(options, session, selection, wanted, site.baseUrl.value_or("")));
  SiteChanges changes;
  session.manager().ListUnread(changes);
  TellUnread(session, changes);
  NoteChanges(session, changes, report);
  session.Discard();
  report.seconds = SecondsSince(begin);
  Tell(wanted, fmt::format("looked through in {:.2f} s", report.seconds));
  return code;
}

// The same for a site of the database, whose tables are brought up to date. False when they cannot
// be, such as where another program is changing them.
bool ExamineKnown(const Options& options, const KnownSite& site, const Selection& selection,
                  const FindingOptions& wanted, FindingReport& report, int& code) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    code = UpdateSite(options, site.name, !wanted.quiet).code;
  } catch (const Failure& failure) {
    if (failure.code() != kDatabase && failure.code() != kFileSystem) throw;
    Tell(wanted, std::string("the database is not used: ") + failure.what());
    return false;
  }
  Tell(wanted,
       fmt::format("the site is \"{}\", up to date in {:.2f} s", site.name, SecondsSince(begin)));
  Session session(options, Database::kAsk);
  session.OpenToAsk(site.name);
  session.manager().KeepPageIds(true);  // two rules ask for them
  FindAll(session, site.profile.topFile, wanted, report,
          AskExternal(options, session, selection, wanted, site.profile.folders[kSlotLiveUrl]));
  session.LetGo();
  const SiteChanges changes = CompareSite(session);
  TellUnread(session, changes);
  NoteChanges(session, changes, report);
  report.seconds = SecondsSince(begin);
  Tell(wanted, fmt::format("looked through in {:.2f} s", report.seconds));
  return true;
}

// The site of the database that is asked about, if what is given says nothing else.
std::optional<KnownSite> KnownAs(const Options& options, const GivenSite& given,
                                 const std::string& root) {
  std::optional<KnownSite> site = FindSiteAround(options, {root});
  if (!site || site->profile.folders[kSlotSiteFolder] != FolderPath(root)) return std::nullopt;
  Session session(options, Database::kAsk);
  if (!HasGiven(session, given, site->profile)) return std::nullopt;
  return site;
}

// The configuration of the site that all these paths lie in; empty for none.
std::string ConfigOf(const GivenPaths& given) {
  if (!given.root.empty()) return FindConfig(given.root);
  std::string config = FindConfig(given.paths.empty() ? "." : given.paths.front());
  for (const std::string& path : given.paths) {
    if (FindConfig(path) != config) return "";
  }
  return config;
}

int RunCheck(const Options& options, GivenSite site, GivenPaths given, FindingOptions wanted) {
  const GivenExternal external = wanted.external;
  if (const auto config = Configure(wanted, ConfigOf(given))) {
    FillFrom(config->site, site);
    if (given.root.empty()) given.root = *config->site.folder;
  }
  const bool asksOthers = WishOf(wanted.external).isWanted;
  NeedUse(external, asksOthers, "--external");
  if (asksOthers) NeedExternalChecks();
  if (given.root.empty() && given.filesFrom.empty() && given.changedSince.empty()) {
    const std::vector<std::string> here = {"."};
    const auto around = FindSiteAround(options, given.paths.empty() ? here : given.paths);
    if (around) given.root = NativePath(around->profile.folders[kSlotSiteFolder]);
  }
  const Selection selection(given);
  site.folder = selection.root();
  FindingReport report;
  int code = kClean;
  const std::optional<KnownSite> known = KnownAs(options, site, selection.root());
  if (!known || !ExamineKnown(options, *known, selection, wanted, report, code)) {
    code = Examine(options, site, selection, wanted, report);
  }
  selection.Narrow(report);
  PrintFindings(report, wanted);
  if (code != kClean) return code;
  return report.Count(Severity::kError) == 0 ? kClean : kFindings;
}

}  // namespace

void AddCheckCommand(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<GivenSite>();
  const auto given = std::make_shared<GivenPaths>();
  const auto wanted = std::make_shared<FindingOptions>();
  CLI::App* check = app.add_subcommand("check", "Check a folder of pages; nothing to set up");
  AddSelectionOptions(*check, *given);
  AddFindingOptions(*check, *wanted);
  AddExternalOptions(*check, "--external", wanted->external);
  AddSiteOptions(*check, *site);
  check->callback([&options, &run, site, given, wanted] {
    run = [&options, site, given, wanted] {
      wanted->format = options.format;
      return RunCheck(options, *site, *given, *wanted);
    };
  });
}

}  // namespace zvrsit::cli
