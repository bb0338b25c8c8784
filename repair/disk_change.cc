#include "repair/disk_change.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <random>
#include <set>
#include <utility>

#include "platform/file.h"
#include "platform/native_path.h"
#include "repair/journal.h"
#include "util/mb_string.h"
#include "util/whole_file.h"

namespace zvrsit {

namespace {

// Without the `\` at the end of a folder.
std::string Bare(std::string path) {
  if (!path.empty() && FindLastBackslashMB(path) + 1 == path.size()) path.pop_back();
  return path;
}

std::string FolderAround(const std::string& path) {
  return std::string(FolderOf(Bare(path)));
}

bool IsMissing(int error) {
  return error == ENOENT || error == ENOTDIR;
}

enum class Presence { kThere, kMissing, kUnknown };

Presence PresenceOf(const std::string& path) {
  platform::FileStat found;
  if (platform::Stat(Bare(path), found) == 0 || platform::IsLink(Bare(path))) {
    return Presence::kThere;
  }
  return IsMissing(platform::LastError()) ? Presence::kMissing : Presence::kUnknown;
}

bool IsThere(const std::string& path) {
  return PresenceOf(path) == Presence::kThere;
}

// Whether both are one file, such as where names differ in letter case only.
bool AreOne(const std::string& path, const std::string& other) {
  platform::FileStat a;
  platform::FileStat b;
  return platform::Stat(Bare(path), a) == 0 && platform::Stat(Bare(other), b) == 0 && a.file != 0 &&
         a.file == b.file && a.device == b.device;
}

// The file that a path leads to: to put a new one in the place of a link would end the link.
std::string RealPath(const std::string& path) {
  std::string native;
  std::string real;
  if (!platform::IsLink(path) || !platform::ToNativePath(path, native)) return path;
  std::error_code error;
  const std::filesystem::path found = std::filesystem::canonical(native, error);
  return !error && platform::FromNativePath(found.string(), real) ? real : path;
}

// Whether it is a link whose text counts from the folder in which it lies.
bool IsRelativeLink(const std::string& path) {
  std::string native;
  if (!platform::IsLink(path) || !platform::ToNativePath(path, native)) return false;
  std::error_code error;
  return std::filesystem::read_symlink(native, error).is_relative();
}

// The path after the moves.
std::string Moved(std::string path, const std::vector<JournalRename>& renames) {
  for (const JournalRename& rename : renames) {
    const bool isFolder = rename.from.ends_with('\\') && Bare(rename.from) != rename.from;
    if (path == rename.from || (isFolder && path.starts_with(rename.from))) {
      path = rename.to + path.substr(rename.from.size());
    }
  }
  return path;
}

// A beginning for names that nothing else has.
std::string UniqueName() {
  std::random_device random;
  char text[32];
  std::snprintf(text, sizeof text, ".zvrsit-%08x%08x-", static_cast<unsigned>(random()),
                static_cast<unsigned>(random()));
  return text;
}

// Does what a journal says, or undoes it.
class Work {
 public:
  Work(const Journal& journal, DiskFault& fault) : journal_(journal), fault_(fault) {}

  bool Do() {
    for (const std::string& folder : journal_.folders) {
      if (platform::MakeFolder(Bare(folder)) != 0) return Fail(folder);
    }
    if (!WriteNewContents() || !PutInPlace()) return false;
    for (const JournalRename& rename : journal_.renames) {
      if (platform::Rename(Bare(rename.from), Bare(rename.to)) != 0) return Fail(rename.from);
    }
    return SyncFolders();
  }

  // Goes on after a failure, so that as much as possible is undone. Files that somebody has changed
  // since are added to `left`.
  bool Undo(std::vector<std::string>& left) {
    bool isWhole = true;
    for (auto rename = journal_.renames.rbegin(); rename != journal_.renames.rend(); ++rename) {
      if (!UndoRename(*rename)) isWhole = false;
    }
    for (const JournalFile& file : journal_.files) {
      if (!UndoFile(file, left)) isWhole = false;
    }
    for (auto folder = journal_.folders.rbegin(); folder != journal_.folders.rend(); ++folder) {
      if (platform::RemoveFolder(Bare(*folder)) == 0) continue;
      const int reason = platform::LastError();
      // It stays when somebody has put something in it.
      const bool isUsed = reason == ENOTEMPTY || reason == EEXIST;
      if (!isUsed && !IsMissing(reason)) isWhole = Fail(*folder);
    }
    return SyncFolders() && isWhole;
  }

  // Whether all of it is done.
  bool IsDone() {
    for (const JournalRename& rename : journal_.renames) {
      const bool isOver = !IsThere(rename.from) || AreOne(rename.from, rename.to);
      // What is removed may be deleted already.
      if (!isOver || (!rename.isRemoval && !IsThere(rename.to))) return false;
    }
    for (const JournalFile& file : journal_.files) {
      std::string bytes;
      if (ReadWholeFile(Moved(file.path, journal_.renames), bytes) != 0 ||
          ContentMark::Of(bytes) != file.after) {
        return false;
      }
    }
    return true;
  }

 private:
  bool Fail(const std::string& path, int reason = platform::LastError()) {
    if (fault_.path.empty()) fault_ = {path, reason};
    return false;
  }

  bool WriteNewContents() {
    std::vector<std::string> temporaries;
    for (const JournalFile& file : journal_.files) {
      std::string bytes;
      std::string changed;
      if (ReadWholeFile(file.path, bytes) != 0) return Fail(file.path);
      if (!file.Apply(bytes, changed)) return Fail(file.path, 0);
      if (!WriteBeside(file, changed)) return false;
      temporaries.push_back(file.temporary);
    }
    return platform::SyncFiles(temporaries) == 0 || Fail(temporaries.front());
  }

  bool WriteBeside(const JournalFile& file, const std::string& bytes) {
    return (WriteWholeFile(file.temporary, bytes) == 0 &&
            platform::CopyPermissions(file.path, file.temporary) == 0) ||
           Fail(file.path);
  }

  bool PutInPlace() {
    for (const JournalFile& file : journal_.files) {
      if (platform::Replace(file.temporary, file.path) != 0) return Fail(file.path);
    }
    return true;
  }

  bool UndoRename(const JournalRename& rename) {
    const Presence from = PresenceOf(rename.from);
    if (from == Presence::kThere) return true;
    if (from == Presence::kUnknown) return Fail(rename.from);
    const Presence to = PresenceOf(rename.to);
    if (to == Presence::kMissing) return true;
    return (to == Presence::kThere && platform::Rename(Bare(rename.to), Bare(rename.from)) == 0) ||
           Fail(rename.from);
  }

  bool UndoFile(const JournalFile& file, std::vector<std::string>& left) {
    std::string bytes;
    std::string before;
    if (platform::Unlink(file.temporary) != 0 && !IsMissing(platform::LastError())) {
      return Fail(file.path);
    }
    if (ReadWholeFile(file.path, bytes) != 0) {
      if (!IsMissing(platform::LastError())) return Fail(file.path);
      left.push_back(file.path);
      return true;
    }
    if (ContentMark::Of(bytes) == file.before) return true;
    if (!file.Undo(bytes, before)) {
      left.push_back(file.path);
      return true;
    }
    return WriteBeside(file, before) && ((platform::SyncFiles({file.temporary}) == 0 &&
                                          platform::Replace(file.temporary, file.path) == 0) ||
                                         Fail(file.path));
  }

  bool SyncFolders() {
    std::set<std::string> folders;
    for (const JournalFile& file : journal_.files) {
      folders.insert(Moved(FolderAround(file.path), journal_.renames));
    }
    for (const JournalRename& rename : journal_.renames) {
      folders.insert(FolderAround(rename.from));
      folders.insert(FolderAround(rename.to));
    }
    for (const std::string& folder : folders) {
      if (platform::SyncFolder(Bare(folder)) != 0 && !IsMissing(platform::LastError())) {
        return Fail(folder);
      }
    }
    return true;
  }

  const Journal& journal_;
  DiskFault& fault_;
};

// Makes the journal of a change, and looks whether the disk is as the change wants it.
class Preparation {
 public:
  Preparation(Journal& journal, DiskFault& fault, const std::vector<PathChange>& moves)
      : journal_(journal), fault_(fault) {
    for (const PathChange& move : moves) moves_.push_back({move.from, move.to, false});
  }

  bool Add(const FileEdits& edits) {
    JournalFile file;
    file.path = RealPath(edits.path);
    file.temporary = FolderAround(file.path) + unique_ + std::to_string(journal_.files.size());
    if (file.path != edits.path && IsParted(edits.path, file.path)) {
      return Fail(edits.path, EMLINK);
    }
    std::string bytes;
    std::string changed;
    if (ReadWholeFile(file.path, bytes) != 0) return Fail(edits.path, platform::LastError());
    if (!ApplyEdits(bytes, edits, changed)) return Fail(edits.path, 0);
    file.before = ContentMark::Of(bytes);
    file.after = ContentMark::Of(changed);
    for (const TextEdit& edit : edits.edits) {
      file.edits.push_back({static_cast<std::uint64_t>(edit.offset),
                            bytes.substr(static_cast<std::size_t>(edit.offset),
                                         static_cast<std::size_t>(edit.length)),
                            edit.text});
    }
    if (!known_.insert(file.path).second) return IsKnown(file) || Fail(edits.path, EMLINK);
    journal_.files.push_back(std::move(file));
    return true;
  }

  bool Add(const PathChange& move) {
    if (!IsThere(move.from)) return Fail(move.from, ENOENT);
    if (IsThere(move.to) && !AreOne(move.from, move.to)) return Fail(move.to, EEXIST);
    if (FolderAround(move.from) != FolderAround(move.to) && IsRelativeLink(Bare(move.from))) {
      return Fail(move.from, EMLINK);
    }
    AddFolders(move.to);
    journal_.renames.push_back({move.from, move.to, false});
    return true;
  }

  bool AddRemoval(const std::string& path) {
    if (!IsThere(path)) return Fail(path, ENOENT);
    const std::string parked =
        FolderAround(path) + unique_ + "gone-" + std::to_string(journal_.renames.size());
    journal_.renames.push_back({path, parked + path.substr(Bare(path).size()), true});
    return true;
  }

 private:
  bool Fail(const std::string& path, int reason) {
    fault_ = {path, reason};
    return false;
  }

  // Whether a link moves away from its file, or the file from it.
  bool IsParted(const std::string& link, const std::string& file) const {
    return (Moved(link, moves_) == link) != (Moved(file, moves_) == file);
  }

  // Whether the file has the same change under another name.
  bool IsKnown(const JournalFile& file) const {
    return std::ranges::any_of(journal_.files, [&](const JournalFile& known) {
      return known.path == file.path && known.after == file.after;
    });
  }

  // Those around `path` that are not there.
  void AddFolders(const std::string& path) {
    std::vector<std::string> missing;
    for (std::string folder = FolderAround(path); !folder.empty() && !IsThere(folder);
         folder = FolderAround(folder)) {
      if (!known_.insert(folder).second) break;
      missing.push_back(folder);
    }
    journal_.folders.insert(journal_.folders.end(), missing.rbegin(), missing.rend());
  }

  Journal& journal_;
  DiskFault& fault_;
  std::vector<JournalRename> moves_;
  const std::string unique_ = UniqueName();
  std::set<std::string> known_;  // real paths of files, and folders to be made
};

bool Prepare(const DiskChange& change, OpenFiles* open, Journal& journal, DiskFault& fault) {
  Preparation preparation(journal, fault, change.moves);
  for (const FileEdits& edits : change.files) {
    if (open != nullptr && open->IsOpen(edits.path)) continue;
    if (!preparation.Add(edits)) return false;
  }
  for (const PathChange& move : change.moves) {
    if (!preparation.Add(move)) return false;
  }
  for (const std::string& path : change.removals) {
    if (!preparation.AddRemoval(path)) return false;
  }
  return true;
}

// Deletes what a journal removes for good, and waits until this is on the disk: without the journal
// nobody would do it again.
bool DeleteRemoved(const Journal& journal) {
  bool isGone = true;
  std::set<std::string> folders;
  for (const JournalRename& rename : journal.renames) {
    std::string native;
    std::error_code error;
    if (!rename.isRemoval || !platform::ToNativePath(Bare(rename.to), native)) continue;
    std::filesystem::remove_all(native, error);
    if (error) isGone = false;
    folders.insert(Bare(FolderAround(Bare(rename.to))));
  }
  for (const std::string& folder : folders) {
    if (platform::SyncFolder(folder) != 0 && !IsMissing(platform::LastError())) isGone = false;
  }
  return isGone;
}

int RemoveJournal(const std::string& path) {
  if (platform::Unlink(path) != 0) return -1;
  return platform::SyncFolder(Bare(FolderAround(path)));
}

}  // namespace

int ChangeDisk(const DiskChange& change, const std::string& journal, OpenFiles* open,
               DiskFault& fault) {
  fault = {};
  if (IsThere(journal)) {
    fault = {journal, EEXIST};
    return -1;
  }
  Journal steps;
  if (!Prepare(change, open, steps, fault)) return -1;
  if (WriteJournal(journal, steps) != 0) {
    fault = {journal, platform::LastError()};
    return -1;
  }
  Work work(steps, fault);
  if (work.Do()) {
    for (const FileEdits& edits : change.files) {
      if (open != nullptr && open->IsOpen(edits.path)) open->Change(edits);
    }
    return 0;
  }
  std::vector<std::string> left;
  return work.Undo(left) && RemoveJournal(journal) == 0 ? -1 : -2;
}

int EndRepair(const std::string& journal) {
  Journal steps;
  if (ReadJournal(journal, steps) != JournalState::kWhole) return -1;
  const bool isGone = DeleteRemoved(steps);
  return RemoveJournal(journal) == 0 && isGone ? 0 : -1;
}

Recovery RecoverRepair(const std::string& journal, RecoveryReport& report) {
  report = {};
  Journal steps;
  const JournalState state = ReadJournal(journal, steps);
  if (state == JournalState::kNone) return Recovery::kNone;
  if (state != JournalState::kWhole) {
    const int reason = state == JournalState::kDamaged ? 0 : platform::LastError();
    report.fault = {journal, reason};
    return Recovery::kFailed;
  }
  Work work(steps, report.fault);
  if (work.IsDone()) {
    for (const JournalRename& rename : steps.renames) {
      if (!rename.isRemoval) report.moves.push_back({rename.from, rename.to});
    }
    return Recovery::kFinished;
  }
  if (!work.Undo(report.left)) return Recovery::kFailed;
  if (RemoveJournal(journal) == 0) return Recovery::kUndone;
  report.fault = {journal, platform::LastError()};
  return Recovery::kFailed;
}

}  // namespace zvrsit
