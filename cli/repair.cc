#include "cli/repair.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>
#include <utility>

#include "cli/exit_code.h"
#include "cli/interrupts.h"
#include "cli/native_name.h"
#include "cli/output.h"
#include "cli/unified_diff.h"
#include "manager/family_marks.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

std::string WordsOf(const DiskFault& fault) {
  const std::string file = NativePath(fault.path);
  if (fault.reason == 0) return file + " has changed meanwhile";
  if (fault.reason == EEXIST) return file + " is there already";
  if (fault.reason == EMLINK) {
    return file + " is a symbolic link that would be wrong: remove it, and make it anew afterwards";
  }
  if (fault.reason == EXDEV) return file + ": the other place lies on another file system";
  return file + ": " + std::generic_category().message(fault.reason);
}

// The path after the moves; the same if it does not move.
std::string MovedPath(std::string path, const std::vector<PathChange>& moves) {
  for (const PathChange& move : moves) {
    if (LiesAt(path, move.from)) path = move.to + path.substr(move.from.size());
  }
  return path;
}

// The home page may be among what moves.
void MoveTopFile(SiteMgr& manager, int number, const std::vector<PathChange>& moves) {
  const std::string top = Take(manager.GetSiteProfTopFile(number));
  const std::string moved = MovedPath(top, moves);
  if (moved != top && manager.SetSiteProfTopFile(moved, number) != 0)
    FailToWriteProfile("the site");
}

// The marks that the user has set move with their files. Gives the paths of these.
std::vector<std::string> MoveMarks(SiteMgr& manager, const std::vector<PathChange>& moves) {
  std::vector<std::pair<std::string, unsigned>> marks;
  for (const int number : manager.ListMarkedByUser()) {
    const std::string before = Take(manager.UrlPath(number));
    const std::string path = MovedPath(before, moves);
    if (path == before) continue;
    const UrlID id(kKindPath, number);
    marks.emplace_back(path, static_cast<unsigned>(manager.GetUrlFtpMember(id) & kUserMarks));
    manager.SetFtpFamily(id, 0);
  }
  std::vector<std::string> paths;
  for (const auto& [path, mark] : marks) {
    if (manager.Save(path, nullptr) == 0) {
      manager.SetFtpFamily({kKindPath, manager.FindPath(path)}, mark);
    }
    paths.push_back(path);
  }
  return paths;
}

// The same for a site that is not open. Tables that cannot be opened have none any more.
int MoveMarksOf(SiteMgr& manager, int number, const std::vector<PathChange>& moves) {
  if (manager.OpenSite(number, 0) != 0) return 0;
  int result = 0;
  if (manager.GetPathDB() != nullptr) {
    const std::vector<std::string> paths = MoveMarks(manager, moves);
    if (!paths.empty()) result = manager.FlushSaved(paths);
  }
  manager.SiteClose();
  return result;
}

std::string ReadBytes(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(NativePath(path), std::ios::binary).rdbuf();
  return std::move(bytes).str();
}

// The files below a folder, or the file itself, as `\` paths in their order.
std::vector<std::string> FilesAt(const std::string& path) {
  std::vector<std::string> files;
  std::error_code error;
  if (!path.ends_with('\\')) return {path};
  // A link to a folder has no files of its own.
  if (std::string bare = path.substr(0, path.size() - 1);
      fs::is_symlink(PathOf(NativePath(bare)), error)) {
    return {bare};
  }
  const fs::recursive_directory_iterator end;
  for (fs::recursive_directory_iterator entry(PathOf(NativePath(path)), error);
       !error && entry != end; entry.increment(error)) {
    std::error_code unknown;
    if (!entry->is_directory(unknown)) files.push_back(AbsolutePath(NameOf(entry->path())));
  }
  std::ranges::sort(files);
  return files;
}

std::string RemovalAt(const std::string& path, const std::string& shown) {
  std::error_code error;
  const fs::path native = PathOf(NativePath(path));
  if (fs::is_symlink(native)) {
    return RemovalDiff(shown, NameOf(fs::read_symlink(native, error)), "120000");
  }
  const bool runs =
      (fs::status(native, error).permissions() & fs::perms::owner_exec) != fs::perms::none;
  return RemovalDiff(shown, ReadBytes(path), runs ? "100755" : "100644");
}

}  // namespace

bool LiesAt(const std::string& path, const std::string& place) {
  return path == place || (place.ends_with('\\') && path.starts_with(place));
}

bool LiesAtAny(const std::string& path, const std::vector<std::string>& places) {
  return std::ranges::any_of(places, [&](const std::string& place) { return LiesAt(path, place); });
}

std::string JournalIn(const std::string& tables) {
  return FolderPath(tables) + "repair";
}

bool HasJournal(const std::string& tables) {
  std::error_code error;
  return fs::exists(PathOf(NativePath(JournalIn(tables))), error);
}

void RecoverChange(SiteMgr& manager, int number, const std::string& tables) {
  if (!HasJournal(tables)) return;
  const Interrupts interrupts;
  const std::string journal = JournalIn(tables);
  RecoveryReport report;
  switch (RecoverRepair(journal, report)) {
    case Recovery::kNone:
      return;
    case Recovery::kFailed:
      throw Failure(kFileSystem,
                    "a change that had stopped half-way cannot be undone yet: " +
                        (report.fault.path == journal && report.fault.reason == 0
                             ? NativePath(journal) + " is damaged: look at the site and remove it"
                             : WordsOf(report.fault)));
    case Recovery::kUndone:
      Warn("a change of the site's files had stopped half-way: it was undone");
      break;
    case Recovery::kFinished:
      MoveTopFile(manager, number, report.moves);
      if (MoveMarksOf(manager, number, report.moves) != 0 || manager.KeepProfiles() != 0) {
        throw Failure(kFileSystem, tables + ": cannot be written" + SystemReason());
      }
      if (EndRepair(journal) != 0) throw Failure(kFileSystem, NativePath(journal) + " stays");
      Warn("a change of the site's files had stopped at its end: it is complete");
  }
  for (const std::string& path : report.left) {
    Warn(NativePath(path) + " was changed since, and stays as it is");
  }
}

SiteRepair::SiteRepair(const Options& options, const RepairOptions& wanted)
    : options_(options),
      wanted_(wanted),
      found_(UpdateSite(options, wanted.site, true)),
      session_(options, Database::kMustExist) {
  session_.Open(wanted_.site);
}

int SiteRepair::Run() {
  change_.files = plan_.files;
  LeaveOutside();
  // What goes need not be mended.
  std::erase_if(change_.files,
                [&](const FileEdits& file) { return LiesAtAny(file.path, change_.removals); });
  if (wanted_.dryRun) {
    if (options_.json) {
      PrintDone();
    } else {
      PrintDiff();
      TellKept();
    }
    return Result();
  }
  const Interrupts interrupts;
  ChangeFiles();
  ChangeTables();
  PrintDone();
  Interrupts::Check();
  return Result();
}

// A site can hold links of the file system to any file of the user: what lies elsewhere is not
// changed through them.
void SiteRepair::LeaveOutside() {
  for (const PathChange& move : change_.moves) {
    NeedInside(move.from);
    NeedInside(move.to);
  }
  for (const std::string& path : change_.removals) NeedInside(path);
  std::erase_if(change_.files, [&](const FileEdits& file) {
    std::error_code error;
    if (IsInside(fs::canonical(PathOf(NativePath(file.path)), error))) return false;
    for (const TextEdit& edit : file.edits) {
      plan_.kept.push_back({file.path, edit.line, edit.column, edit.before,
                            "a symbolic link leads to this file, outside of the site"});
    }
    return true;
  });
}

bool SiteRepair::IsInside(const fs::path& real) {
  std::error_code error;
  const fs::path site = fs::canonical(PathOf(session_.names().nativeFolder()), error);
  const fs::path inside = real.lexically_relative(site);
  return !error && !inside.empty() && *inside.begin() != "..";
}

// The name itself may be that of a link, which moves or goes as a link.
void SiteRepair::NeedInside(const std::string& path) {
  std::error_code error;
  fs::path native = PathOf(NativePath(path));
  if (!native.has_filename()) native = native.parent_path();
  if (IsInside(fs::weakly_canonical(native.parent_path(), error))) return;
  throw Failure(kUsage, Shown(path) + " lies outside of the site, where a symbolic link leads");
}

void SiteRepair::ChangeFiles() {
  DiskFault fault;
  const std::string journal = JournalIn(session_.FolderOfTables(wanted_.site));
  const int result = ChangeDisk(change_, journal, nullptr, fault);
  if (result == 0) return;
  throw Failure(kFileSystem,
                WordsOf(fault) + (result == -1 ? ": nothing was changed"
                                               : ": not everything could be undone; the next "
                                                 "command tries again"));
}

void SiteRepair::ChangeTables() {
  MoveTopFile(manager(), session_.number(), change_.moves);
  const std::vector<std::string> paths = MoveMarks(manager(), change_.moves);
  const std::string journal = JournalIn(session_.FolderOfTables(wanted_.site));
  session_.CloseSaved(paths);
  if (EndRepair(journal) != 0) Warn("what was removed could not be deleted as a whole");
  session_.Discard();
  UpdateSite(options_, wanted_.site, true);
}

void SiteRepair::PrintDiff() {
  std::map<std::string, const FileEdits*> files;  // what is said of each, by path
  for (const FileEdits& file : change_.files) files[file.path] = &file;
  for (const PathChange& move : change_.moves) {
    for (const std::string& path : FilesAt(move.from)) files.try_emplace(path, nullptr);
  }
  for (const std::string& path : change_.removals) {
    for (const std::string& file : FilesAt(path)) Print("{}", RemovalAt(file, Shown(file)));
  }
  for (const auto& [path, edits] : files) {
    const std::string bytes = edits != nullptr ? ReadBytes(path) : std::string();
    Print("{}", UnifiedDiff(Shown(path), Shown(MovedPath(path, change_.moves)), bytes, edits));
  }
}

void SiteRepair::TellKept() {
  for (const KeptReference& kept : plan_.kept) {
    Warn(fmt::format("{}:{}:{}: {} stays as it is: {}", Shown(kept.path), kept.line, kept.column,
                     kept.text, kept.why));
  }
}

void SiteRepair::PrintDone() {
  std::size_t edits = 0;
  for (const FileEdits& file : change_.files) edits += file.edits.size();
  if (!options_.json) {
    for (const PathChange& move : change_.moves) {
      Print("{} is now {}\n", LineText(Shown(move.from)), LineText(Shown(move.to)));
    }
    for (const std::string& path : change_.removals)
      Print("{} is removed\n", LineText(Shown(path)));
    Print("{} changed in {}\n", Counted(static_cast<long>(edits), "reference", "references"),
          Counted(static_cast<long>(change_.files.size()), "file", "files"));
    return TellKept();
  }
  Json answer;
  Json& moved = answer["moved"] = Json::array();
  for (const PathChange& move : change_.moves) {
    moved.push_back({{"from", JsonText(Shown(move.from))}, {"to", JsonText(Shown(move.to))}});
  }
  Json& removed = answer["removed"] = Json::array();
  for (const std::string& path : change_.removals) removed.push_back(JsonText(Shown(path)));
  Json& files = answer["files"] = Json::array();
  for (const FileEdits& file : change_.files) {
    Json rows = Json::array();
    for (const TextEdit& edit : file.edits) {
      rows.push_back({{"line", edit.line},
                      {"column", edit.column},
                      {"before", JsonText(edit.before)},
                      {"after", JsonText(edit.after)}});
    }
    files.push_back({{"file", JsonText(Shown(file.path))}, {"edits", rows}});
  }
  Json& kept = answer["kept"] = Json::array();
  for (const KeptReference& one : plan_.kept) {
    kept.push_back({{"file", JsonText(Shown(one.path))},
                    {"line", one.line},
                    {"column", one.column},
                    {"reference", JsonText(one.text)},
                    {"why", one.why}});
  }
  PrintJson(answer);
}

}  // namespace zvrsit::cli
