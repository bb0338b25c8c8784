#include "cli/examine.h"

#include <chrono>

#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/freshness.h"
#include "cli/known_site.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "cli/rebuild.h"
#include "cli/update_command.h"

namespace zvrsit::cli {
namespace {

constexpr const char* kName = "checked";

auto SelectedBy(const Selection& selection) {
  return [&selection](const std::string& file) { return selection.Holds(file); };
}

// What both ways of looking through end with: `changes` are those of the disk.
void Conclude(Session& session, const SiteChanges& changes, const FindingOptions& wanted,
              std::chrono::steady_clock::time_point begin, FindingReport& report) {
  TellUnread(session, changes);
  NoteChanges(session, changes, report);
  report.seconds = SecondsSince(begin);
  Tell(wanted, fmt::format("looked through in {:.2f} s", report.seconds));
}

// Fills `report` and gives the exit code of the rebuild. The database is removed before anything is
// printed. So nothing is left behind when the reader of the output ends early.
int ExamineFolder(const Options& options, const GivenSite& site, const Selection& selection,
                  const FindingOptions& wanted, FindingReport& report, const WhileOpen& whileOpen) {
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
          AskOthers(options, session, wanted, site.baseUrl.value_or(""), SelectedBy(selection)));
  whileOpen({session, "", top, site.baseUrl.value_or("")}, report);
  SiteChanges changes;
  session.manager().ListUnread(changes);
  Conclude(session, changes, wanted, begin, report);
  session.Discard();
  return code;
}

// The same for a site of the database, whose tables are brought up to date. False when they cannot
// be, such as where another program is changing them.
bool ExamineKnown(const Options& options, const KnownSite& site, const Selection& selection,
                  const FindingOptions& wanted, FindingReport& report, int& code,
                  const WhileOpen& whileOpen) {
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
          AskOthers(options, session, wanted, site.profile.folders[kSlotLiveUrl],
                    SelectedBy(selection)));
  whileOpen({session, site.name, site.profile.topFile, site.profile.folders[kSlotLiveUrl]}, report);
  session.LetGo();
  Conclude(session, CompareSite(session), wanted, begin, report);
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

// Takes from the configuration and the database what is not given.
void Complete(const Options& options, GivenCheck& given) {
  GivenPaths& paths = given.paths;
  if (const auto config = ConfigureCheck(given.findings, ConfigOf(paths))) {
    FillFrom(config->site, given.site);
    if (paths.root.empty()) paths.root = *config->site.folder;
  }
  if (paths.root.empty() && paths.filesFrom.empty() && paths.changedSince.empty()) {
    const std::vector<std::string> here = {"."};
    const auto around = FindSiteAround(options, paths.paths.empty() ? here : paths.paths);
    if (around) paths.root = NativePath(around->profile.folders[kSlotSiteFolder]);
  }
}

}  // namespace

std::optional<Config> ConfigureCheck(FindingOptions& options, const std::string& found) {
  const GivenExternal external = options.external;
  std::optional<Config> config = Configure(options, found);
  const bool asksOthers = WishOf(options.external).isWanted;
  NeedUse(external, asksOthers, "--external");
  if (asksOthers) NeedExternalChecks();
  return config;
}

std::vector<UrlFinding> AskOthers(const Options& options, Session& session,
                                  const FindingOptions& wanted, const std::string& baseUrl,
                                  const std::function<bool(const std::string&)>& isWanted) {
  const ExternalWish wish = WishOf(wanted.external);
  if (!wish.isWanted) return {};
  const auto begin = std::chrono::steady_clock::now();
  const std::vector<LinkedUrl> urls =
      ListLinkedUrls(session.manager(), session.names().folder(), wanted.ignores, isWanted);
  const std::string keptFile = KeptFileOfFolder(options, session.names().nativeFolder());
  const AskedUrls asked = AskWithProgress(urls, {wish, baseUrl, keptFile, wanted.quiet});
  Tell(wanted, fmt::format("{} URLs asked, {} known from before, in {:.2f} s", asked.asked,
                           asked.kept, SecondsSince(begin)));
  return FindingsOf(urls, asked.results);
}

int Examine(const Options& options, GivenCheck& given, FindingReport& report,
            const WhileOpen& whileOpen) {
  Complete(options, given);
  const Selection selection(given.paths);
  given.site.folder = selection.root();
  int code = kClean;
  const std::optional<KnownSite> known = KnownAs(options, given.site, selection.root());
  if (!known ||
      !ExamineKnown(options, *known, selection, given.findings, report, code, whileOpen)) {
    code = ExamineFolder(options, given.site, selection, given.findings, report, whileOpen);
  }
  selection.Narrow(report);
  return code;
}

}  // namespace zvrsit::cli
