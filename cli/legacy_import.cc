// Older sites that go over into the newer generation.
#include <memory>

#include "cli/beside_rebuild.h"
#include "cli/exit_code.h"
#include "cli/legacy_commands.h"
#include "cli/legacy_session.h"
#include "cli/rebuild.h"
#include "cli/site_profile.h"
#include "manager/family_marks.h"
#include "util/server_fields.h"

namespace zvrsit::cli {
namespace {

// Copies the server profile of that name to the newer generation. If a different profile has the
// name there, that one is kept.
void CarryServer(LegacySession& session, const std::string& name) {
  SitServProperty old;
  if (session.manager().GetServProf(name, old) != 0) return;
  ServProfile server;
  ForEachServerField<ServProfile, SitServProperty>(
      [&](ServerField, auto field, auto oldField) { server.*field = old.*oldField; });
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
  given.baseUrl = old.dir[kSlotLiveUrl];
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
  PrintTotals(totals, options.json);
  return code;
}

}  // namespace

void AddLegacyImport(CLI::App& legacy, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App* carry = legacy.add_subcommand(
      "import", "Carry a site and its profiles over into the newer generation, and rebuild it");
  AddSiteName(*carry, *name);
  carry->callback(
      [&options, &run, name] { run = [&options, name] { return RunImport(options, *name); }; });
}

}  // namespace zvrsit::cli
