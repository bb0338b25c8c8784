// Questions about older sites: links, broken, peek.
#include <memory>
#include <vector>

#include "cli/exit_code.h"
#include "cli/legacy_commands.h"
#include "cli/legacy_session.h"
#include "findings/url_check.h"
#include "legacy/sit_peeper.h"

namespace zvrsit::cli {
namespace {

// By type, from 1.
constexpr const char* kLegacyTypeNames[] = {"anchor",     "image",      "map_file", "frame", "link",
                                            "stylesheet", "background", "input",    "area",  "form",
                                            "script",     "object",     "refresh"};

const char* LegacyTypeName(int type) {
  return type >= kSitLinkFirst && type <= kSitLinkLast ? kLegacyTypeNames[type - kSitLinkFirst]
                                                       : "?";
}

Json LinkRow(const LegacyLink& link) {
  return {{"from", JsonText(link.from)}, {"to", JsonText(link.to)},
          {"kind", link.kind},           {"type", LegacyTypeName(link.type)},
          {"code", link.type},           {"text", JsonText(link.text)},
          {"alt", JsonText(link.alt)},   {"exists", link.exists}};
}

void PrintRow(const LegacyLink& link) {
  Print("{} -> {}  {}{}\n", LineText(link.from), LineText(link.to), LegacyTypeName(link.type),
        link.exists ? "" : "  missing");
}

// Prints the links that `wanted` holds for; their number.
template <class Wanted>
std::size_t PrintLinks(const Options& options, const LinkQuery& query, Wanted wanted) {
  LegacySession session(options, Database::kAsk);
  session.Open(query.site);
  std::vector<LegacyLink> links;
  session.ForEachLink(query.from, query.to, [&](const LegacyLink& link) {
    if (!wanted(link)) return;
    links.push_back(link);
    // What this generation takes for the name of a file may be a URL too.
    for (std::string* text : {&links.back().to, &links.back().text}) {
      *text = WithoutCredentials(*text);
    }
  });
  session.LetGo();
  JsonRows rows;
  for (const LegacyLink& link : links) {
    if (options.json) {
      rows.Add(LinkRow(link));
    } else {
      PrintRow(link);
    }
  }
  if (options.json) rows.End();
  return links.size();
}

int RunLegacyLinks(const Options& options, const LinkQuery& query) {
  PrintLinks(options, query, [](const LegacyLink&) { return true; });
  return kClean;
}

int RunBroken(const Options& options, const LinkQuery& query) {
  const std::size_t count =
      PrintLinks(options, query, [](const LegacyLink& link) { return !link.exists; });
  return count == 0 ? kClean : kFindings;
}

// Says which sites cannot be asked what they hold; true for none.
bool CanAskAll(LegacySession& session, SitPeeper& peeper) {
  bool all = true;
  session.manager().EnumSiteProf(1);
  while (std::string* name = session.manager().EnumSiteProf(0)) {
    try {
      session.NeedToPeep(peeper, Take(name));
    } catch (const Failure& failure) {
      Warn(failure.what());
      all = false;
    }
  }
  return all;
}

struct Peeped {
  std::vector<std::string> names;
  bool whole = true;  // every site could be asked
};

Peeped Peek(LegacySession& session, const std::string& asked, bool isSite) {
  SitPeeper peeper;
  session.Share(peeper);
  if (isSite) session.NeedToPeep(peeper, asked);
  const bool whole = isSite || CanAskAll(session, peeper);
  auto* const list = isSite ? peeper.EnumPath(asked) : peeper.GetSiteByPath(AbsolutePath(asked));
  if (list == nullptr) throw Failure(kDatabase, "the files of \"" + asked + "\" cannot be read");
  return {TakeList(list), whole};
}

int RunPeek(const Options& options, const std::string& asked) {
  LegacySession session(options, Database::kAsk);
  const bool isSite = session.manager().SiteProfGetID(asked) >= 0;
  const Peeped peeped = Peek(session, asked, isSite);
  session.LetGo();
  Json names = Json::array();
  for (const std::string& name : peeped.names) {
    names.push_back(JsonText(isSite ? NativePath(name) : name));
    if (!options.json) Print("{}\n", LineText(isSite ? NativePath(name) : name));
  }
  if (options.json) PrintJson({{isSite ? "files" : "sites", names}});
  return peeped.whole ? kClean : kDatabase;
}

}  // namespace

void AddLegacyQuestions(CLI::App& legacy, const Options& options, Run& run) {
  AddLinkQueries(
      legacy, run, [&options](const LinkQuery& query) { return RunLegacyLinks(options, query); },
      [&options](const LinkQuery& query) { return RunBroken(options, query); });

  const auto asked = std::make_shared<std::string>();
  CLI::App* peek = legacy.add_subcommand(
      "peek", "List the files of a site, or the sites that hold a file, without opening one");
  peek->add_option("NAME", *asked, "the name of a site, or a file")->option_text(" ")->required();
  peek->callback(
      [&options, &run, asked] { run = [&options, asked] { return RunPeek(options, *asked); }; });
}

}  // namespace zvrsit::cli
