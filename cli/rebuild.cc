#include "cli/rebuild.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "cli/config.h"
#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/progress.h"
#include "cli/unread_pages.h"
#include "util/path_parts.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kVersionControl[] = {".git", ".hg", ".svn", ".bzr", "CVS"};

// Why a page or a folder was not read. With RuleFlags::readsWhatIsLinked one reason is that folders
// which are links lead round in circles and give it a second name.
std::string WhyNotRead(Session& session, const std::string& path) {
  if (path.back() == '\\') return "this folder cannot be read";
  std::error_code error;
  const std::string real = NameOf(fs::canonical(PathOf(NativePath(path)), error));
  const std::string known = error ? path : AbsolutePath(real);
  const bool mayHaveTwoNames = FlagsOf(session.manager().GetLinkRules()).readsWhatIsLinked;
  if (!mayHaveTwoNames || known == path || session.manager().FindPath(known) < 0) {
    return "its links cannot be read, or not all";
  }
  return "not read, as it is " + session.names().Shown(known) + " by another name";
}

}  // namespace

LeftOut::LeftOut(LinkRules rules, const std::string& database)
    : leavesOutTools_(FlagsOf(rules).leavesOutTools) {
  std::error_code error;
  database_ = fs::canonical(PathOf(database), error);
}

bool LeftOut::HasFolder(const fs::path& folder) const {
  const fs::path name = folder.filename();
  if (leavesOutTools_ &&
      std::ranges::find(kVersionControl, NameOf(name)) != std::end(kVersionControl))
    return true;
  std::error_code error;
  return !database_.empty() && name == database_.filename() &&
         fs::equivalent(folder, database_, error);
}

bool LeftOut::HasFile(std::string_view name) const {
  return leavesOutTools_ && name == kConfigName;
}

NotOfTheSite::NotOfTheSite(Session& session, const std::string& database)
    : manager_(session.manager()),
      leftOut_(manager_.GetLinkRules(), database.empty() ? session.database() : database) {
  manager_.SetIgnoreHook(&IsLeftOut, this);
}

NotOfTheSite::~NotOfTheSite() {
  manager_.SetIgnoreHook(nullptr, nullptr);
}

bool NotOfTheSite::IsLeftOut(const std::string& path, void* context) {
  const LeftOut& leftOut = static_cast<const NotOfTheSite*>(context)->leftOut_;
  if (path.back() != '\\') return leftOut.HasFile(NameInFolder(path));
  return leftOut.HasFolder(PathOf(NativePath(path.substr(0, path.size() - 1))));
}

int RebuildSite(Session& session, bool complete, const std::string& database, bool showsProgress) {
  SiteMgr& manager = session.manager();
  TerminalProgress progress(showsProgress);
  const NotOfTheSite leftOut(session, database);
  int stored = manager.SiteRebuildDB(complete ? 1 : 0, progress.dialog());
  Interrupts::Check();
  if (manager.IsFull() &&
      manager.PackSite() == 0) {  // what earlier rebuilds have left is in the way
    stored = manager.SiteRebuildDB(complete ? 1 : 0, progress.dialog());
    Interrupts::Check();
  }
  if (stored != 0 || manager.GetSiteProfRebuildState() != kRebuilt) {
    if (manager.IsFull()) throw Failure(kDatabase, std::string("the rebuild failed: ") + kNoRoom);
    ThrowIfSystemFailed("the rebuild failed");
    throw Failure(kDatabase, "the rebuild failed: the tables of the site cannot be written");
  }
  if (manager.FindPath(Take(manager.GetSiteProfTopFile())) < 0) {
    Warn(NativePath(Take(manager.GetSiteProfTopFile())) +
         ": the top file lies outside of the site");
  }
  if (manager.PackSite(false) != 0) session.FailToWrite();
  const int code = TellSkipped(session);
  WarnOfUnreadPages(session);
  return code;
}

// The rest of the site is right.
int TellSkipped(Session& session) {
  const std::vector<std::string>& skipped = session.manager().SkippedByRebuild();
  for (const std::string& path : skipped) {
    Warn(NativePath(path) + ": " + WhyNotRead(session, path));
  }
  return skipped.empty() ? kClean : kFileSystem;
}

SiteTotals CountSite(Session& session) {
  SiteTotals totals;
  session.manager().CountSite(totals);
  return totals;
}

void PrintTotals(const SiteTotals& totals, bool json) {
  if (json) {
    return PrintJson({{"files", totals.files},
                      {"pages", totals.pages},
                      {"sheets", totals.sheets},
                      {"links", totals.links},
                      {"urls", totals.urls}});
  }
  Print("{}, {}, {}, {}, {}\n", Counted(totals.files, "file", "files"),
        Counted(totals.pages, "page", "pages"),
        Counted(totals.sheets, "style sheet", "style sheets"),
        Counted(totals.links, "link", "links"),
        Counted(totals.urls, "external URL", "external URLs"));
}

}  // namespace zvrsit::cli
