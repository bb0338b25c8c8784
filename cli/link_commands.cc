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

std::vector<ShownLink> Answer(Session& session, const LinkQuery& query) {
  if (query.from.empty() && query.to.empty()) return AllLinks(session);
  const UrlID id = session.EntryOf(query.from.empty() ? query.to : query.from);
  const std::unique_ptr<std::vector<int>> numbers(
      query.from.empty() ? session.manager().GetBackLinks(id) : session.manager().GetForeLinks(id));
  if (numbers == nullptr) throw Failure(kDatabase, "the link table cannot be read");
  return ShowLinks(session, *numbers);
}

int RunLinks(const Options& options, const LinkQuery& query) {
  Session session(options, Database::kMustExist);
  session.Open(query.site);
  const std::vector<ShownLink> links = Answer(session, query);
  if (options.json) {
    PrintJson(LinksAsJson(links));
  } else {
    PrintLinks(links);
  }
  return kClean;
}

int RunBroken(const Options& options, const std::string& site) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  const std::vector<ShownLink> broken = BrokenLinks(session);
  if (options.json) {
    PrintJson(LinksAsJson(broken));
  } else {
    PrintBroken(broken);
  }
  return broken.empty() ? kClean : kFindings;
}

}  // namespace

void AddLinkCommands(CLI::App& app, const Options& options, Run& run) {
  const auto query = std::make_shared<LinkQuery>();
  CLI::App* links = app.add_subcommand("links", "List links: what links where");
  links->add_option("NAME", query->site, "the site")->required();
  CLI::Option* from = links->add_option("--from", query->from, "only links of this file");
  links->add_option("--to", query->to, "only links to this file")->excludes(from);
  links->callback(
      [&options, &run, query] { run = [&options, query] { return RunLinks(options, *query); }; });

  CLI::App* broken = app.add_subcommand("broken", "List links to files that are not there");
  broken->add_option("NAME", query->site, "the site")->required();
  broken->callback([&options, &run, query] {
    run = [&options, query] { return RunBroken(options, query->site); };
  });
}

}  // namespace zvrsit::cli
