// The commands of the older generation.
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "cli/beside_rebuild.h"
#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/legacy_session.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"
#include "legacy/sit_peeper.h"
#include "manager/family_marks.h"

namespace zvrsit::cli {
namespace {

// By type, from 1.
constexpr const char* kTypeNames[] = {"anchor",     "image",      "map_file", "frame", "link",
                                      "stylesheet", "background", "input",    "area",  "form",
                                      "script",     "object",     "refresh"};

const char* TypeName(int type) {
  return type >= kSitLinkFirst && type <= kSitLinkLast ? kTypeNames[type - kSitLinkFirst] : "?";
}

Json SiteRow(const std::string& name, const SitSiteProperty& site) {
  return {{"name", JsonText(name)},
          {"folder", JsonText(NativePath(site.dir[kSlotSiteFolder]))},
          {"top", JsonText(NativePath(site.topFile))}};
}

Json LinkRow(const LegacyLink& link) {
  return {{"from", JsonText(link.from)}, {"to", JsonText(link.to)}, {"kind", link.kind},
          {"type", TypeName(link.type)}, {"code", link.type},       {"text", JsonText(link.text)},
          {"alt", JsonText(link.alt)},   {"exists", link.exists}};
}

void PrintRow(const LegacyLink& link) {
  Print("{} -> {}  {}{}\n", LineText(link.from), LineText(link.to), TypeName(link.type),
        link.exists ? "" : "  missing");
}

// --- add, sites, rebuild -------------------------------------------------------------------

int RunAdd(const Options& options, const std::string& name, const GivenSite& site) {
  LegacySession session(options, Database::kMake);
  SitMgr& manager = session.manager();
  if (manager.SiteProfGetID(name) >= 0) {
    throw Failure(kUsage, "there is an older site named \"" + name + "\" already");
  }
  const SiteProfile profile = NewProfile(session.newer(), site);
  SitSiteProperty property;
  property.topFile = profile.topFile;
  property.dir[kSlotSiteFolder] = profile.folders[kSlotSiteFolder];
  if (manager.SetSiteProf(name, property) != 0) {
    if (manager.GetLastError() != kSitBadArgument) session.FailToWrite();
    throw Failure(kUsage, "\"" + name + "\" cannot be made an older site");
  }
  session.LetGo();
  PrintObject(SiteRow(name, property), options.json);
  return kClean;
}

int RunSites(const Options& options) {
  LegacySession session(options, Database::kAsk);
  SitMgr& manager = session.manager();
  Json rows = Json::array();
  std::vector<Strings> lines;
  manager.EnumSiteProf(1);
  while (std::string* next = manager.EnumSiteProf(0)) {
    const std::string name = Take(next);
    const SitSiteProperty site = session.Profile(name);
    rows.push_back(SiteRow(name, site));
    lines.push_back({name, NativePath(site.dir[kSlotSiteFolder])});
  }
  session.LetGo();
  PrintList(rows, lines, options.json);
  return kClean;
}

struct Totals {
  long files = 0;  // not missing
  long links = 0;
  long broken = 0;
  long urls = 0;
};

Totals Count(LegacySession& session) {
  SitMgr& manager = session.manager();
  Totals totals;
  const int files = manager.UrlNum(kKindPath);
  for (int i = 0; i < files; ++i) {
    const int status = manager.GetUrlStatus({kKindPath, i});
    if (manager.GetLastError() == kSitOk && (status & kStatusBroken) == 0) ++totals.files;
  }
  manager.EnumUrl(1);
  while (std::string* url = manager.EnumUrl(0)) {
    SitMgr::DeleteString(url);
    ++totals.urls;
  }
  session.ForEachLink("", "", [&totals](const LegacyLink& link) {
    ++totals.links;
    if (!link.exists) ++totals.broken;
  });
  return totals;
}

Json TotalsRow(const Totals& totals) {
  return {{"files", totals.files},
          {"links", totals.links},
          {"broken", totals.broken},
          {"urls", totals.urls}};
}

std::string TotalsLine(const Totals& totals) {
  return Counted(totals.files, "file", "files") + ", " + Counted(totals.links, "link", "links") +
         ", " + std::to_string(totals.broken) + " broken, " +
         Counted(totals.urls, "external URL", "external URLs");
}

int RunRebuild(const Options& options, const std::string& name, bool diff) {
  LegacySession session(options, Database::kMustExist);
  session.OpenToRebuild(name);
  session.NeedFolder();
  if (session.manager().SiteRebuildDB(diff ? 0 : 1) != 0) session.FailToWrite();
  const Totals totals = Count(session);
  session.Close();
  session.LetGo();
  if (options.json) {
    PrintJson(TotalsRow(totals));
  } else {
    Print("{}\n", TotalsLine(totals));
  }
  return kClean;
}

// --- links, broken -------------------------------------------------------------------------

// Prints the links that `wanted` holds for; their number.
template <class Wanted>
std::size_t PrintLinks(const Options& options, const LinkQuery& query, Wanted wanted) {
  LegacySession session(options, Database::kAsk);
  session.Open(query.site);
  std::vector<LegacyLink> links;
  session.ForEachLink(query.from, query.to, [&](const LegacyLink& link) {
    if (wanted(link)) links.push_back(link);
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

int RunLinks(const Options& options, const LinkQuery& query) {
  PrintLinks(options, query, [](const LegacyLink&) { return true; });
  return kClean;
}

int RunBroken(const Options& options, const LinkQuery& query) {
  const std::size_t count =
      PrintLinks(options, query, [](const LegacyLink& link) { return !link.exists; });
  return count == 0 ? kClean : kFindings;
}

// --- peek ----------------------------------------------------------------------------------

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

// --- undo ----------------------------------------------------------------------------------

Strings SplitWords(const std::string& line) {
  std::istringstream stream(line);
  Strings words;
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  return words;
}

void Perform(LegacySession& session, const Strings& words) {
  SitMgr& manager = session.manager();
  const std::string& verb = words.front();
  int result = -1;
  if (verb == "undo" && words.size() == 1) {
    result = manager.UndoWithAlternatives();
    if (manager.GetLastError() != kSitOk) session.FailToWrite();
  } else if (verb == "save" && words.size() == 2) {
    result = manager.Save(session.names().FileOf(words[1]));
  } else if (verb == "rm" && words.size() == 2) {
    result = manager.Remove(session.EntryOf(words[1]));
  } else if (verb == "mv" && words.size() == 3) {
    result = manager.Move(session.EntryOf(words[1]), session.names().FileOf(words[2]));
  } else {
    throw Failure(kUsage, "\"" + verb + "\" is not save FILE, rm FILE, mv FROM TO or undo");
  }
  if (result == 0) return;
  const int error = manager.GetLastError();
  if (error == kSitWriteFailed || error == kSitDeleteFailed) session.FailToWrite();
  throw Failure(kDatabase, verb + " failed with error " + std::to_string(error));
}

// A line that was done, and the totals after it.
struct Step {
  std::string line;
  Totals totals;
};

void PerformLines(LegacySession& session, std::vector<Step>& steps) {
  int number = 0;
  try {
    for (std::string line; std::getline(std::cin, line);) {
      ++number;
      const Strings words = SplitWords(line);
      if (words.empty()) continue;
      Perform(session, words);
      steps.push_back({line, Count(session)});
    }
  } catch (const Failure& failure) {
    throw Failure(failure.code(), "line " + std::to_string(number) + ": " + failure.what());
  }
  session.Close();
}

void PrintSteps(const Options& options, const std::vector<Step>& steps) {
  JsonRows rows;
  for (const Step& step : steps) {
    if (!options.json) {
      Print("{}: {}\n", LineText(step.line), TotalsLine(step.totals));
      continue;
    }
    Json row{{"did", JsonText(step.line)}};
    row.update(TotalsRow(step.totals));
    rows.Add(row);
  }
  if (options.json) rows.End();
}

// The history lives as long as the manager, so changes and undo share one run.
int RunUndo(const Options& options, const std::string& name) {
  LegacySession session(options, Database::kMustExist);
  session.Open(name);
  std::vector<Step> steps;
  std::optional<Failure> failure;
  try {
    PerformLines(session, steps);
  } catch (const Failure& thrown) {
    failure = thrown;
  }
  session.LetGo();
  PrintSteps(options, steps);
  if (failure) throw Failure(*failure);
  return kClean;
}

// --- import --------------------------------------------------------------------------------

// The server profile of that name in the newer generation; a different one that is there is kept.
void CarryServer(LegacySession& session, const std::string& name) {
  SitServProperty old;
  if (session.manager().GetServProf(name, old) != 0) return;
  ServProfile server;
  server.host = old.host;
  server.user = old.user;
  server.password = old.password;
  server.dir = old.dir;
  server.firewall = old.firewall;
  server.firewallHost = old.firewallHost;
  server.firewallUser = old.firewallUser;
  server.firewallPassword = old.firewallPassword;
  server.transferType = old.fxferType;
  server.initDirMode = old.initDirMode;
  server.lockDir = old.lockDir;
  server.initRemoteDir = old.initRemoteDir;
  server.mruDirRemote = old.mruDirRemote;
  server.mruDirLocal = old.mruDirLocal;
  server.asciiSuffix = old.asciiSuffix;
  SiteMgr& newer = session.newer().manager();
  ServProfile present;
  if (newer.GetServProf(name, present) == 0) {
    if (present != server) Warn("the server \"" + name + "\" differs and is kept as it is");
  } else if (newer.SetServProf(name, server) != 0) {
    FailToWriteProfile("the server \"" + name + "\"");
  }
}

GivenSite AsGiven(LegacySession& session, const SitSiteProperty& old) {
  GivenSite given;
  given.folder = NativePath(old.dir[kSlotSiteFolder]);
  if (!old.topFile.empty()) given.top = NativePath(old.topFile);
  if (old.useDocRoot != 0 && !old.dir[kSlotDocumentRoot].empty()) {
    given.docRoot = NativePath(old.dir[kSlotDocumentRoot]);
  }
  given.liveUrl = old.dir[kSlotLiveUrl];
  ServProfile server;
  if (session.newer().manager().GetServProf(old.servProf, server) == 0) {
    given.server = old.servProf;
  } else if (!old.servProf.empty()) {
    Warn("there is no server named \"" + old.servProf + "\"; the site comes without it");
  }
  return given;
}

// The user's publishing marks of the files that both sides know.
void CarryMarks(LegacySession& session, SiteMgr& newer) {
  SitMgr& older = session.manager();
  const int count = older.UrlNum(kKindPath);
  for (int i = 0; i < count; ++i) {
    const UrlID id(kKindPath, i);
    const int marks = older.GetUrlFtpMember(id);
    if (older.GetLastError() != kSitOk || (marks & kUserMarks) == 0) continue;
    const int number = newer.FindPath(Take(older.UrlUrl(id)));
    if (number < 0) continue;
    newer.SetFtpFamily({kKindPath, number}, static_cast<unsigned>(marks & kUserMarks));
  }
}

int RebuildNewer(LegacySession& session, const std::string& name, bool hasMarks,
                 SiteTotals& totals) {
  BesideRebuild rebuild(session.newer(), name);
  const int code = RebuildSite(rebuild.copy(), true, session.newer().database());
  if (hasMarks) CarryMarks(session, rebuild.copy().manager());
  totals = CountSite(rebuild.copy());
  rebuild.Commit();
  return code;
}

int RunImport(const Options& options, const std::string& name) {
  LegacySession session(options, Database::kMustExist);
  const SitSiteProperty old = session.Profile(name);
  const bool hasMarks = session.HasFiles(name);
  if (hasMarks) session.Open(name);
  Session& newer = session.newer();
  newer.HoldProfiles();
  if (newer.manager().FindSiteProf(name) < 0 && !old.servProf.empty()) {
    CarryServer(session, old.servProf);
  }
  AddSite(newer, name, AsGiven(session, old));
  SiteProfile profile = ReadProfile(newer, name);
  for (std::size_t slot = 0; slot < old.dir.size(); ++slot) {
    if (profile.folders[slot].empty()) profile.folders[slot] = old.dir[slot];
  }
  if (newer.manager().SetSiteProf(name, profile) < 0) {
    FailToWriteProfile("\"" + name + "\"");
  }
  SiteTotals totals;
  const int code = RebuildNewer(session, name, hasMarks, totals);
  session.LetGo();
  if (options.json) {
    PrintJson(TotalsAsJson(totals));
  } else {
    PrintTotals(totals);
  }
  return code;
}

// --- the command line ----------------------------------------------------------------------

void AddMaking(CLI::App& legacy, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  const auto site = std::make_shared<GivenSite>();
  CLI::App* add = legacy.add_subcommand("add", "Register a folder as an older site");
  AddSiteName(*add, *name);
  AddGiven(*add, "FOLDER", site->folder, "the folder of the site")->option_text(" ")->required();
  AddGiven(*add, "--top", site->top, "the home page; by default index.html and its like")
      ->option_text("FILE");
  add->callback([&options, &run, name, site] {
    run = [&options, name, site] { return RunAdd(options, *name, *site); };
  });

  CLI::App* sites = legacy.add_subcommand("sites", "List the older sites");
  sites->callback([&options, &run] { run = [&options] { return RunSites(options); }; });

  const auto diff = std::make_shared<bool>(false);
  CLI::App* rebuild = legacy.add_subcommand("rebuild", "Read a whole site anew from disk");
  AddSiteName(*rebuild, *name);
  rebuild->add_flag("--diff", *diff, "let the entries of files keep their numbers");
  rebuild->callback([&options, &run, name, diff] {
    run = [&options, name, diff] { return RunRebuild(options, *name, *diff); };
  });

  CLI::App* carry = legacy.add_subcommand(
      "import", "Carry a site and its profiles over into the newer generation, and rebuild it");
  AddSiteName(*carry, *name);
  carry->callback(
      [&options, &run, name] { run = [&options, name] { return RunImport(options, *name); }; });
}

void AddQuestions(CLI::App& legacy, const Options& options, Run& run) {
  AddLinkQueries(
      legacy, run, [&options](const LinkQuery& query) { return RunLinks(options, query); },
      [&options](const LinkQuery& query) { return RunBroken(options, query); });

  const auto asked = std::make_shared<std::string>();
  CLI::App* peek = legacy.add_subcommand(
      "peek", "List the files of a site, or the sites that hold a file, without opening one");
  peek->add_option("NAME", *asked, "the name of a site, or a file")->option_text(" ")->required();
  peek->callback(
      [&options, &run, asked] { run = [&options, asked] { return RunPeek(options, *asked); }; });
}

void AddUndo(CLI::App& legacy, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App* undo =
      legacy.add_subcommand("undo", "Make changes that can be taken back, read line by line");
  AddSiteName(*undo, *name);
  undo->footer(
      std::string(
          "Standard input holds a change a line: save FILE, rm FILE, mv FROM TO, or undo, "
          "which takes\n"
          "the newest change back that is left. Names with spaces stand in double quotes. "
          "At the end\n"
          "the totals after each line are printed. What is not taken back by then stays.\n") +
      undo->get_footer());
  undo->callback(
      [&options, &run, name] { run = [&options, name] { return RunUndo(options, *name); }; });
}

}  // namespace

void AddLegacyCommands(CLI::App& app, const Options& options, Run& run) {
  CLI::App* legacy = app.add_subcommand(
      "legacy", "Sites of the older generation, in the folder legacy of the database");
  legacy->require_subcommand(1);
  AddMaking(*legacy, options, run);
  AddQuestions(*legacy, options, run);
  AddUndo(*legacy, options, run);
}

}  // namespace zvrsit::cli
