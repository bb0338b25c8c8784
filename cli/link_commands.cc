#include <chrono>
#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/finding_options.h"
#include "cli/freshness.h"
#include "cli/link_report.h"

namespace zvrsit::cli {
namespace {

std::unique_ptr<std::vector<int>> Numbers(Session& session, const LinkQuery& query) {
  SiteMgr& manager = session.manager();
  std::unique_ptr<std::vector<int>> numbers(
      !query.from.empty() ? manager.GetForeLinks(session.EntryOf(query.from))
      : !query.to.empty() ? manager.GetBackLinks(session.TargetOf(query.to))
                          : manager.EnumLink());
  if (numbers == nullptr) throw Failure(kDatabase, "the link table cannot be read");
  return numbers;
}

int RunLinks(const Options& options, const LinkQuery& query) {
  Session session(options, Database::kAsk);
  session.OpenToAsk(query.site);
  const auto numbers = Numbers(session, query);
  session.LetGo();
  TellChanges(session, CompareSite(session), query.site);
  JsonRows rows;
  ForEachLink(session, *numbers, [&](const ShownLink& link) {
    if (options.json) {
      rows.Add(LinkAsJson(link));
    } else {
      PrintLink(link);
    }
  });
  if (options.json) rows.End();
  return kClean;
}

int RunBroken(const Options& options, const LinkQuery& query, FindingOptions wanted) {
  const auto begin = std::chrono::steady_clock::now();
  Session session(options, Database::kAsk);
  session.OpenToAsk(query.site);
  Configure(wanted, ConfigIn(session.names().nativeFolder()));
  FindingReport report;
  FindAll(session, Take(session.manager().GetSiteProfTopFile()), wanted, report);
  session.LetGo();
  const SiteChanges changes = CompareSite(session);
  TellChanges(session, changes, query.site);
  NoteChanges(session, changes, report);
  report.seconds = SecondsSince(begin);
  PrintFindings(report, wanted);
  return report.Count(Severity::kError) == 0 ? kClean : kFindings;
}

}  // namespace

void AddLinkQueries(CLI::App& app, Run& run, const AskLinks& links, const AskLinks& broken) {
  const auto query = std::make_shared<LinkQuery>();
  CLI::App* list = app.add_subcommand("links", "List links: what links where");
  AddSiteName(*list, query->site);
  CLI::Option* from = list->add_option("--from", query->from, "only links of this file");
  from->option_text("FILE")->check(NotEmpty());
  list->add_option("--to", query->to, "only links to this file, or to this external URL")
      ->option_text("FILE")
      ->check(NotEmpty())
      ->excludes(from);
  list->callback([&run, query, links] { run = [query, links] { return links(*query); }; });

  CLI::App* missing = app.add_subcommand("broken", "List links to files that are not there");
  AddSiteName(*missing, query->site);
  missing->callback([&run, query, broken] { run = [query, broken] { return broken(*query); }; });
}

void AddLinkCommands(CLI::App& app, const Options& options, Run& run) {
  const auto wanted = std::make_shared<FindingOptions>();
  wanted->severities.KeepLinks();
  AddLinkQueries(
      app, run, [&options](const LinkQuery& query) { return RunLinks(options, query); },
      [&options, wanted](const LinkQuery& query) {
        wanted->format = options.format;
        return RunBroken(options, query, *wanted);
      });
  AddFindingOptions(*app.get_subcommand("broken"), *wanted);
}

}  // namespace zvrsit::cli
