#include <memory>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/link_report.h"

namespace zvrsit::cli {
namespace {

struct LinkQuery {
  std::string site;
  std::string from;
  std::string to;
};

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
  Session session(options, Database::kMustExist);
  session.OpenToAsk(query.site);
  const auto numbers = Numbers(session, query);
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

int RunBroken(const Options& options, const std::string& site) {
  Session session(options, Database::kMustExist);
  session.OpenToAsk(site);
  const std::vector<BrokenLink> broken = BrokenLinks(session);
  if (options.json) {
    JsonRows rows;
    for (const BrokenLink& link : broken) rows.Add(BrokenAsJson(link));
    rows.End();
  } else {
    PrintBroken(broken);
  }
  return broken.empty() ? kClean : kFindings;
}

}  // namespace

void AddLinkCommands(CLI::App& app, const Options& options, Run& run) {
  const auto query = std::make_shared<LinkQuery>();
  CLI::App* links = app.add_subcommand("links", "List links: what links where");
  AddSiteName(*links, query->site);
  CLI::Option* from = links->add_option("--from", query->from, "only links of this file");
  from->option_text("FILE");
  links->add_option("--to", query->to, "only links to this file, or to this external URL")
      ->option_text("FILE")
      ->excludes(from);
  links->callback(
      [&options, &run, query] { run = [&options, query] { return RunLinks(options, *query); }; });

  CLI::App* broken = app.add_subcommand("broken", "List links to files that are not there");
  AddSiteName(*broken, query->site);
  broken->callback([&options, &run, query] {
    run = [&options, query] { return RunBroken(options, query->site); };
  });
}

}  // namespace zvrsit::cli
