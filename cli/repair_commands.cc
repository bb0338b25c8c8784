#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/external_check.h"
#include "cli/finding_options.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/repair.h"
#include "repair/repair_plan.h"
#include "util/path_parts.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// What the command line says.
struct GivenRepair : RepairOptions {
  std::string from;
  std::string to;
  std::string file;
  std::vector<std::string> files;
  std::string linksTo;
  bool recursive = false;
  bool force = false;
  bool wrongCase = false;
  bool moved = false;
};

bool IsFolder(const std::string& path) {
  std::error_code error;
  return fs::is_directory(PathOf(NativePath(path)), error);
}

bool IsThere(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(PathOf(NativePath(path)), error).type() != fs::file_type::not_found;
}

// What a user means by a name: a file or a folder of the site that is there.
struct Meant {
  std::string path;       // of a folder with `\` at the end
  bool isOfSite = false;  // named from the site folder, not from the working folder
};

std::string AsFolder(const std::string& path) {
  return path.ends_with('\\') ? path : path + '\\';
}

std::optional<Meant> FindOnDisk(const SiteNames& names, const std::string& native) {
  const std::vector<std::string> candidates = names.Candidates(native);
  for (const std::string& path : candidates) {
    if (!names.AreOf(path) || path.size() == names.folder().size() || !IsThere(path)) continue;
    return Meant{IsFolder(path) ? AsFolder(path) : path, path == candidates.back()};
  }
  return std::nullopt;
}

// Where something goes that is named by `native`. It need not be there.
std::string PlaceFor(const SiteNames& names, const std::string& native, bool isOfSite) {
  std::vector<std::string> candidates = names.Candidates(native);
  if (isOfSite) std::ranges::reverse(candidates);
  const auto found =
      std::ranges::find_if(candidates, [&](const std::string& path) { return names.AreOf(path); });
  if (found == candidates.end()) throw Failure(kUsage, native + ": lies outside of the site");
  return *found;
}

// The name of a file, or of a folder with its `\`.
std::string LastName(const std::string& path) {
  const bool isFolder = path.ends_with('\\');
  const std::string_view bare = std::string_view(path).substr(0, path.size() - (isFolder ? 1 : 0));
  return std::string(NameInFolder(bare)) + (isFolder ? "\\" : "");
}

// Links to a file that was moved before are led to its new place; so are those to the files of a
// folder.
void PlanFormerMove(SiteRepair& repair, const std::string& from, const std::string& to) {
  std::vector<Retarget> targets;
  const std::unique_ptr<vec<SiteRecCell>> files(repair.manager().EnumPath());
  for (std::size_t i = 0; files != nullptr && i < files->size(); ++i) {
    const std::string path = (*files)[i].GetName();
    const bool isBelow = path.starts_with(AsFolder(from)) && IsFolder(to);
    if (path != from && !isBelow) continue;
    const std::string now = isBelow ? AsFolder(to) + path.substr(from.size() + 1) : to;
    if (IsThere(now)) targets.push_back({path, now});
  }
  if (PlanRetarget(repair.manager(), targets, repair.plan()) != 0) {
    throw Failure(kDatabase, "the links to " + NativePath(from) + " cannot be looked for");
  }
  Warn(NativePath(to) + " was moved before: what it refers to itself is left as it is");
}

int RunMove(const Options& options, const GivenRepair& given) {
  SiteRepair repair(options, given);
  const SiteNames& names = repair.session().names();
  const std::optional<Meant> from = FindOnDisk(names, given.from);
  std::string to = PlaceFor(names, given.to, from && from->isOfSite);
  const bool isInto = to.ends_with('\\') || IsFolder(to);
  if (!from) {
    const std::string before =
        Take(repair.manager().UrlPath(repair.session().EntryOf(given.from).id));
    if (isInto) to = AsFolder(to) + LastName(before);
    if (!IsThere(to)) throw Failure(kFileSystem, given.from + ": no such file");
    PlanFormerMove(repair, before, to);
    return repair.Run();
  }
  const bool renamesItself = from->path == AsFolder(to);
  if (isInto && !renamesItself) to = AsFolder(to) + LastName(from->path);
  if (from->path.ends_with('\\')) to = AsFolder(to);
  if (to == from->path) throw Failure(kUsage, given.to + ": this is where it is");
  if (to.ends_with('\\') && to.starts_with(from->path)) {
    throw Failure(kUsage, given.to + ": a folder cannot be moved into itself");
  }
  if (PlanMove(repair.manager(), from->path, to, repair.plan()) != 0) {
    throw Failure(kFileSystem, IsThere(to) ? NativePath(to) + ": is there already"
                                           : given.from + ": cannot be moved to " + given.to);
  }
  repair.change().moves.push_back({from->path, to});
  return repair.Run();
}

// The entries that go, and the links to them from what stays.
struct Losses {
  std::vector<Retarget> targets;
  std::vector<std::string> links;  // for people
};

Losses FindLosses(SiteRepair& repair, const std::string& other) {
  Losses losses;
  SiteMgr& manager = repair.manager();
  const std::vector<std::string>& removals = repair.change().removals;
  const std::unique_ptr<vec<SiteRecCell>> files(manager.EnumPath());
  for (std::size_t i = 0; files != nullptr && i < files->size(); ++i) {
    const std::string path = (*files)[i].GetName();
    if (!LiesAtAny(path, removals)) continue;
    losses.targets.push_back({path, other});
    if (!IsThere(path)) continue;  // references to it are broken already
    const std::unique_ptr<std::vector<int>> links(manager.GetBackLinks((*files)[i].GetID()));
    for (std::size_t k = 0; links != nullptr && k < links->size(); ++k) {
      SiteLink found;
      if (manager.GetLink((*links)[k], found) != 0) continue;
      const std::string source = Take(manager.UrlPath(found.from.id));
      if (LiesAtAny(source, removals)) continue;
      const SiteNames& names = repair.session().names();
      std::string link = names.Shown(source) + " refers to " + names.Shown(path);
      if (losses.links.empty() || losses.links.back() != link) losses.links.push_back(link);
    }
  }
  return losses;
}

void AddRemoval(SiteRepair& repair, const std::string& file, bool recursive) {
  Session& session = repair.session();
  const std::optional<Meant> meant = FindOnDisk(session.names(), file);
  if (!meant) {
    // Gone already: bringing the site up to date was all there was to do.
    const std::vector<std::string> candidates = session.names().Candidates(file);
    const std::vector<std::string>& gone = repair.found().changes.gone;
    const bool isKnown =
        repair.found().isRebuilt || std::ranges::find_first_of(gone, candidates) != gone.end();
    if (!isKnown) session.EntryOf(file);
    return;
  }
  if (meant->path.ends_with('\\') && !recursive) {
    throw Failure(kUsage, file + ": this is a folder (zvrsit rm --recursive)");
  }
  if (LiesAt(Take(repair.manager().GetSiteProfTopFile()), meant->path)) {
    throw Failure(kUsage, file + ": the home page of the site cannot be removed");
  }
  // What lies in a folder goes with it, and nothing goes twice.
  std::vector<std::string>& removals = repair.change().removals;
  if (LiesAtAny(meant->path, removals)) return;
  std::erase_if(removals, [&](const std::string& path) { return LiesAt(path, meant->path); });
  removals.push_back(meant->path);
}

int RunRemove(const Options& options, const GivenRepair& given) {
  SiteRepair repair(options, given);
  for (const std::string& file : given.files) AddRemoval(repair, file, given.recursive);
  std::string other;
  if (!given.linksTo.empty()) other = repair.session().names().FileOf(given.linksTo);
  const Losses losses = FindLosses(repair, other);
  if (!other.empty()) {
    if (LiesAtAny(other, repair.change().removals)) {
      throw Failure(kUsage, given.linksTo + ": this is removed too");
    }
    if (PlanRetarget(repair.manager(), losses.targets, repair.plan()) != 0) {
      throw Failure(kDatabase, "the links to what is removed cannot be looked for");
    }
  } else if (!losses.links.empty()) {
    for (const std::string& link : losses.links) Warn(link);
    if (!given.force && !given.dryRun) {
      throw Failure(kFindings,
                    "nothing was removed, as something refers to it: --links-to FILE leads these "
                    "references elsewhere, --force leaves them broken");
    }
  }
  return repair.Run();
}

int RunRenameId(const Options& options, const GivenRepair& given) {
  SiteRepair repair(options, given);
  const std::string file = repair.session().names().FileOf(given.file);
  if (PlanRenamedId(repair.manager(), file, given.from, given.to, repair.plan()) != 0) {
    throw Failure(kUsage, given.file + " has no ID \"" + given.from + "\", or has \"" + given.to +
                              "\" already, or that is no ID");
  }
  return repair.Run();
}

// The files that findings of these kinds certainly mean.
std::vector<Retarget> CertainTargets(Session& session, const GivenRepair& given) {
  FindingOptions wanted;
  FindingReport report;
  FindAll(session, "", wanted, report);
  std::vector<Retarget> targets;
  for (const Finding& finding : report.findings) {
    const fs::path target = PathOf(finding.target);
    const fs::path meant = PathOf(finding.suggestion);
    const bool hasMoved = finding.rule == Rule::kMissingFile && meant.has_filename() &&
                          meant.filename() == target.filename() && meant != target;
    const bool counts =
        (finding.rule == Rule::kWrongCase && given.wrongCase) || (hasMoved && given.moved);
    if (!counts || target.is_absolute() || finding.suggestion.empty()) continue;
    const fs::path folder = PathOf(session.names().nativeFolder());
    targets.push_back(
        {AbsolutePath(NameOf(folder / target)), AbsolutePath(NameOf(folder / meant))});
  }
  return targets;
}

// URLs that have moved for good, as far as it is known from asking their servers before.
void AddMovedUrls(Session& session, const std::string& site, std::vector<Retarget>& targets) {
  const auto all = [](const std::string&) { return true; };
  const std::vector<LinkedUrl> urls =
      ListLinkedUrls(session.manager(), session.names().folder(), {}, all);
  const std::vector<UrlResult> results = KeptResults(urls, KeptFileOfSite(session, site));
  for (std::size_t i = 0; i < urls.size(); ++i) {
    if (results[i].state == UrlState::kMoved) targets.push_back({urls[i].url, results[i].movedTo});
  }
}

int RunFix(const Options& options, const GivenRepair& given) {
  if (!given.wrongCase && !given.moved) {
    throw Failure(kUsage, "say what is to be mended: --wrong-case, --moved");
  }
  SiteRepair repair(options, given);
  std::vector<Retarget> targets = CertainTargets(repair.session(), given);
  if (given.moved) AddMovedUrls(repair.session(), given.site, targets);
  if (PlanRetarget(repair.manager(), targets, repair.plan()) != 0) {
    throw Failure(kDatabase, "the broken references cannot be looked for");
  }
  return repair.Run();
}

// Its options are those of `given`, which lives as long as the command line.
CLI::App* AddRepair(CLI::App& app, const char* name, const char* help, const Options& options,
                    Run& run, int (*act)(const Options&, const GivenRepair&),
                    const std::shared_ptr<GivenRepair>& given) {
  CLI::App* command = app.add_subcommand(name, help);
  AddSiteName(*command, given->site);
  command->add_flag("--dry-run", given->dryRun, "print what would change, as a diff");
  command->callback([&options, &run, act, given] {
    run = [&options, act, given] { return act(options, *given); };
  });
  return command;
}

void AddName(CLI::App& command, const char* name, std::string& value, const char* help) {
  command.add_option(name, value, help)->option_text(" ")->required()->check(NotEmpty());
}

}  // namespace

void AddRepairCommands(CLI::App& app, const Options& options, Run& run) {
  const auto moved = std::make_shared<GivenRepair>();
  CLI::App* move = AddRepair(app, "mv", "Move a file or a folder; references follow", options, run,
                             &RunMove, moved);
  AddName(*move, "FROM", moved->from, "a file or a folder of the site");
  AddName(*move, "TO", moved->to, "where it goes: a new name, or a folder");

  const auto removed = std::make_shared<GivenRepair>();
  CLI::App* remove = AddRepair(app, "rm", "Remove files that nothing refers to", options, run,
                               &RunRemove, removed);
  remove->add_option("FILE", removed->files, "files of the site")
      ->option_text(" ")
      ->required()
      ->check(NotEmpty());
  remove->add_option("--links-to", removed->linksTo, "lead references to them to this file")
      ->option_text("FILE")
      ->check(NotEmpty());
  remove->add_flag("-r,--recursive", removed->recursive, "folders with all that is in them too");
  remove->add_flag("--force", removed->force, "remove them though references break");

  const auto renamed = std::make_shared<GivenRepair>();
  CLI::App* rename = AddRepair(app, "rename-id", "Give an ID of a page another name; links follow",
                               options, run, &RunRenameId, renamed);
  AddName(*rename, "FILE", renamed->file, "the page");
  AddName(*rename, "OLD", renamed->from, "its ID or anchor name");
  AddName(*rename, "NEW", renamed->to, "the new one");

  const auto fixed = std::make_shared<GivenRepair>();
  CLI::App* fix = AddRepair(app, "fix", "Mend references where it is certain what is meant",
                            options, run, &RunFix, fixed);
  fix->add_flag("--wrong-case", fixed->wrongCase, "names in other letter case");
  fix->add_flag("--moved", fixed->moved, "files and URLs that have moved");
}

}  // namespace zvrsit::cli
