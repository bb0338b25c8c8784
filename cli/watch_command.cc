#include <cstdio>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/finding_options.h"
#include "cli/folder_watch.h"
#include "cli/live_site.h"
#include "cli/output.h"
#include "cli/terminal.h"
#include "cli/watch_loop.h"
#include "findings/formats.h"

namespace zvrsit::cli {
namespace {

// What a watch prints, as it happens: text for people, or an object a line.
class WatchOutput {
 public:
  explicit WatchOutput(LiveSite& site)
      : site_(site), isText_(site.options().format == FindingFormat::kText) {}

  void Begin() {
    const FindingReport report = site_.Report();
    const SiteTotals& totals = report.totals;
    if (isText_) {
      Add("watching " + LineText(report.folder) + ": " + Counted(totals.files, "file", "files") +
          ", " + CountedFindings(report) + "\n");
    } else {
      Add(JsonTotals("watching", report,
                     {{"site", JsonText(site_.name())}, {"folder", JsonText(report.folder)}}));
    }
    Write();
  }

  void Tell(const FindingChange& change) {
    AddFindings(change.broke, false);
    AddFindings(change.mended, true);
    Write();
    if (site_.options().quiet) return;
    const FindingReport report = site_.Report();  // takes its time where there is much
    Add(isText_ ? "now " + CountedFindings(report) + "\n"
                : JsonTotals("now", report, Json::object()));
    Write();
  }

  void End() {
    Add(isText_ ? "watch ended\n" : Json({{"event", "ended"}}).dump() + "\n");
    Write();
  }

 private:
  static std::string JsonTotals(const char* event, const FindingReport& report, const Json& more) {
    Json line{{"event", event}};
    line.update(more);
    line.update({{"files", report.totals.files},
                 {"errors", report.Count(Severity::kError)},
                 {"warnings", report.Count(Severity::kWarning)},
                 {"places", report.CountPlaces()}});
    return line.dump() + "\n";
  }

  void AddFindings(const std::vector<Finding>& findings, bool areMended) {
    const FindingReport report = site_.ReportOn(findings);
    if (isText_) {
      TextStyle style = StyleOf(site_.options());
      style.totals = false;
      style.mended = areMended;
      return Add(FormatFindings(report, FindingFormat::kText, style));
    }
    const std::string event = areMended ? "{\"event\":\"mended\"," : "{\"event\":\"broke\",";
    for (const Finding& finding : findings) {
      Add(event + FormatFindings(site_.ReportOn({finding}), FindingFormat::kJsonl).substr(1));
    }
  }

  void Add(const std::string& text) { text_ += text; }

  void Write() {
    if (!isText_ && IsTerminal(stdout)) text_ = WithoutControls(std::move(text_));
    std::fwrite(text_.data(), 1, text_.size(), stdout);
    text_.clear();
    FinishOutput();
  }

  LiveSite& site_;
  const bool isText_;
  std::string text_;
};

int RunWatch(const Options& options, const std::string& name, const FindingOptions& wanted) {
  NeedFolderWatch();
  const FindingFormat format = wanted.format;
  if (format != FindingFormat::kText && format != FindingFormat::kJson &&
      format != FindingFormat::kJsonl) {
    throw Failure(kUsage, "watch prints text, json or jsonl");
  }
  LiveSite site(options, name, wanted);
  WatchOutput output(site);
  const WatchSteps steps{[&] {
                           if (!wanted.quiet) output.Begin();
                         },
                         [&](const FindingChange& change) { output.Tell(change); }};
  const bool hasReader = WatchSite(site, steps);
  if (hasReader && !wanted.quiet) output.End();
  return kClean;
}

}  // namespace

void AddWatchCommand(CLI::App& app, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto wanted = std::make_shared<FindingOptions>();
  CLI::App* watch = app.add_subcommand("watch", "Update while you edit, and tell what breaks");
  AddSiteName(*watch, *name);
  AddFindingOptions(*watch, *wanted);
  watch->callback([&options, &run, name, wanted] {
    run = [&options, name, wanted] {
      wanted->format = options.format;
      return RunWatch(options, *name, *wanted);
    };
  });
}

}  // namespace zvrsit::cli
