#include <memory>

#include "cli/commands.h"
#include "cli/examine.h"
#include "cli/exit_code.h"

namespace zvrsit::cli {
namespace {

int RunCheck(const Options& options, GivenCheck given) {
  FindingReport report;
  const int code = Examine(options, given, report, [](auto&, auto&) {});
  PrintFindings(report, given.findings);
  if (code != kClean) return code;
  return report.Count(Severity::kError) == 0 ? kClean : kFindings;
}

}  // namespace

void AddCheckCommand(CLI::App& app, const Options& options, Run& run) {
  const auto given = std::make_shared<GivenCheck>();
  CLI::App* check = app.add_subcommand("check", "Check a folder of pages; nothing to set up");
  AddSelectionOptions(*check, given->paths);
  AddFindingOptions(*check, given->findings);
  AddExternalOptions(*check, "--external", given->findings.external);
  AddSiteOptions(*check, given->site);
  check->callback([&options, &run, given] {
    run = [&options, given] {
      given->findings.format = options.format;
      return RunCheck(options, *given);
    };
  });
}

}  // namespace zvrsit::cli
