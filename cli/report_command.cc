// The command report.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "cli/commands.h"
#include "cli/examine.h"
#include "cli/exit_code.h"
#include "cli/freshness.h"
#include "cli/gathered_view.h"
#include "cli/interrupts.h"
#include "cli/known_site.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/terminal.h"
#include "exports/new_file.h"
#include "findings/formats.h"
#include "web/report.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

struct ReportWanted {
  std::string site;    // a name or a folder; may be empty
  std::string output;  // "-" or empty: stdout
  std::string since;   // may be empty
  GivenCheck given;
};

bool GoesToStdout(const ReportWanted& wanted) {
  return wanted.output.empty() || wanted.output == "-";
}

// Empty when it cannot be read.
std::string ReadText(const std::string& name) {
  std::ifstream file(PathOf(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The report that is compared with. A file that is no report is not replaced by one: it may be a
// page of the site.
std::optional<EarlierReport> FindEarlier(const ReportWanted& wanted) {
  std::error_code error;
  std::optional<EarlierReport> earlier;
  const fs::file_status there = fs::status(PathOf(wanted.output), error);
  if (!GoesToStdout(wanted) && fs::exists(there) && !fs::is_directory(there)) {
    if (!fs::is_regular_file(there)) {
      throw Failure(kUsage, wanted.output + ": is a device or a pipe; for stdout, leave -o out");
    }
    const std::string page = ReadText(wanted.output);
    if (!page.empty() && !IsReport(page)) {
      throw Failure(kUsage, wanted.output + ": is there already, and is no report");
    }
    earlier = ReadReport(page);
  }
  if (wanted.since.empty()) return earlier;
  const std::string page = ReadText(wanted.since);
  if (page.empty()) throw Failure(kFileSystem, wanted.since + ": this file cannot be read");
  earlier = ReadReport(page);
  if (!earlier) throw Failure(kUsage, wanted.since + ": this is no report that can be compared");
  return earlier;
}

bool IsSiteName(const Options& options, const std::string& name) {
  try {
    return Session(options, Database::kAsk).manager().FindSiteProf(name) >= 0;
  } catch (const Failure&) {
    return false;
  }
}

// Asks a site of the database, as it is known there.
void AskSite(const Options& options, ReportWanted& wanted, SiteView& view) {
  const std::string& name = wanted.site;
  FindingOptions& findings = wanted.given.findings;
  Session session(options, Database::kAsk);
  session.OpenToAsk(name);
  const SiteProfile profile = ReadProfile(session, name);
  if (!HasGiven(session, wanted.given.site, profile)) {
    throw Failure(kUsage, "\"" + name + "\" has another profile: zvrsit site show " + name);
  }
  ConfigureCheck(findings, ConfigIn(session.names().nativeFolder()));
  session.manager().KeepPageIds(true);  // two rules ask for them
  const ExaminedSite site{session, name, profile.topFile, profile.folders[kSlotLiveUrl]};
  FindAll(
      session, site.top, findings, view.report,
      AskOthers(options, session, findings, site.baseUrl, [](const std::string&) { return true; }));
  Gather(options, findings, site, view.report, view);
  session.LetGo();
  const SiteChanges changes = CompareSite(session);
  TellChanges(session, changes, name);
  NoteChanges(session, changes, view.report);
}

// The folder of the site that a folder belongs to, by the database or by a configuration; else the
// folder itself.
std::string RootOf(const Options& options, const FindingOptions& findings,
                   const std::string& folder) {
  if (const auto around = FindSiteAround(options, {folder})) {
    return NativePath(around->profile.folders[kSlotSiteFolder]);
  }
  const std::string config = findings.config.empty() ? FindConfig(folder) : findings.config;
  if (!findings.usesConfig || config.empty()) return folder;
  const std::string root = *ReadConfig(config).site.folder;
  const bool isIts = FolderPath(folder).starts_with(FolderPath(root)) ||
                     FolderPath(root).starts_with(FolderPath(folder));
  return isIts ? root : folder;
}

// Looks through a folder, or the site that it lies in.
int LookThrough(const Options& options, ReportWanted& wanted, SiteView& view) {
  wanted.given.paths.root =
      RootOf(options, wanted.given.findings, wanted.site.empty() ? "." : wanted.site);
  return Examine(options, wanted.given, view.report,
                 [&](const ExaminedSite& site, const FindingReport& report) {
                   Gather(options, wanted.given.findings, site, report, view);
                 });
}

// Whether a new file there would be one of the site.
bool LiesInSite(const std::string& place, const std::string& folder) {
  return AbsolutePath(place).starts_with(FolderPath(folder));
}

void WriteReport(const std::string& place, const std::string& page) {
  const Interrupts interrupts;
  try {
    NewFile file({place, PathOf(place)});
    file.Write(page);
    Interrupts::Check();
    file.Commit();
  } catch (const ExportError& error) {
    throw Failure(kFileSystem, error.what());
  }
}

void TellWritten(const Options& options, const std::string& place, const SiteView& view) {
  const SinceThen since =
      view.earlier ? Compare(*view.earlier, view.site, view.report) : SinceThen{};
  if (options.json) {
    PrintJson({{"file", JsonText(place)},
               {"errors", view.report.Count(Severity::kError)},
               {"warnings", view.report.Count(Severity::kWarning)},
               {"places", view.report.CountPlaces()},
               {"since", view.earlier ? Json(view.earlier->made) : Json()},
               {"added", since.added.size()},
               {"mended", since.mended.size()}});
    return;
  }
  Print("{}: {}\n", LineText(place), CountedFindings(view.report));
  if (!view.earlier) return;
  Print("since {}: {} new, {} mended\n", LineText(view.earlier->made), since.added.size(),
        since.mended.size());
}

int RunReport(const Options& options, ReportWanted wanted) {
  if (wanted.output.empty() && IsTerminal(stdout)) {
    throw Failure(kUsage, "where is the report to go? -o FILE.html");
  }
  SiteView view;
  view.earlier = FindEarlier(wanted);
  std::error_code error;
  const bool isFolder = wanted.site.empty() || fs::is_directory(PathOf(wanted.site), error);
  int code = kClean;
  if (isFolder && (wanted.site.empty() || !IsSiteName(options, wanted.site))) {
    code = LookThrough(options, wanted, view);
  } else {
    AskSite(options, wanted, view);
  }
  const bool isOfOther =
      view.earlier && wanted.since.empty() && view.earlier->folder != JsonText(view.site.folder);
  if (isOfOther) view.earlier.reset();
  const std::string page = ReportPage(view);
  if (GoesToStdout(wanted)) {
    std::fwrite(page.data(), 1, page.size(), stdout);
  } else {
    WriteReport(wanted.output, page);
    if (LiesInSite(wanted.output, view.site.folder)) {
      Warn(wanted.output + ": this lies in the site, and will be one of its pages");
    }
    TellWritten(options, wanted.output, view);
  }
  return code;
}

}  // namespace

void AddReportCommand(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<ReportWanted>();
  CLI::App* report =
      app.add_subcommand("report", "Write all that is known of a site as one web page");
  report->add_option("SITE", wanted->site, "its name; or a folder, with nothing to set up")
      ->option_text(" ")
      ->check(NotEmpty());
  report->add_option("-o,--output", wanted->output, "the file; by default stdout")
      ->option_text("FILE.html")
      ->check(NotEmpty());
  report
      ->add_option("--since", wanted->since,
                   "an earlier report to compare with; by default the one replaced")
      ->option_text("OLD.html")
      ->check(NotEmpty());
  AddRuleOptions(*report, wanted->given.findings);
  AddExternalOptions(*report, "--external", wanted->given.findings.external);
  AddSiteOptions(*report, wanted->given.site);
  report->callback([&options, &run, wanted] {
    run = [&options, wanted] { return RunReport(options, *wanted); };
  });
}

}  // namespace zvrsit::cli
