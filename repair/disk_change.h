// Carries out a plan on the disk: all of it, or nothing, also when the machine stops half-way.
//
// Before anything changes, a journal says what will: the changed parts of each file before and
// after, and what gets another path. Then the new contents are written beside their files, put in
// place one by one, each in one step, and at last the files and folders are renamed. When a step
// fails, everything is undone. When the process or the machine stops, the next one that finds the
// journal finishes or undoes (RecoverRepair). A file that gets new content keeps its permissions
// and its owner, and has the time of the change; one that is only moved keeps its time.
//
// Paths are `\` paths in the code page. The disk must keep what it was told to keep (fsync).
#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "repair/file_edits.h"

namespace zvrsit {

// A file, or a folder with all that is in it; both paths of a folder end in `\`.
struct PathChange {
  std::string from;
  std::string to;  // nothing may be there yet; missing folders above it are made
};

struct DiskChange {
  std::vector<FileEdits> files;
  std::vector<PathChange> moves;      // after the edits, in this order
  std::vector<std::string> removals;  // files, or folders, which end in `\`
};

// What kept a change from being made. A `reason` of the system is an errno number; 0: the file is
// not the one that the change was planned for; EMLINK: a symbolic link would lead elsewhere, or its
// file would need another text under each of its names.
struct DiskFault {
  std::string path;
  int reason = 0;
};

// The files that an application has open, and changes itself.
class OpenFiles {
 public:
  virtual ~OpenFiles() = default;
  // Whether the file is open; on disk it then stays as it is.
  virtual bool IsOpen(const std::string& path) = 0;
  // Makes the edits in the application's copy. Called for each of these files when all else is
  // done.
  virtual void Change(const FileEdits& edits) = 0;
};

// Makes the change. `journal` is the path of a file that is not there; its folder is. The tables of
// the site are not touched: bring them up to date, and call EndRepair. `open` may be null.
//
// 0; -1 with everything as it was before; -2 when it could not be undone either: the journal stays,
// for RecoverRepair. `fault` says what failed first.
ZVRSIT_API int ChangeDisk(const DiskChange& change, const std::string& journal, OpenFiles* open,
                          DiskFault& fault);

// Deletes what was removed, and the journal. 0 or -1.
ZVRSIT_API int EndRepair(const std::string& journal);

enum class Recovery {
  kNone,      // there was no journal
  kFinished,  // the change is on the disk as a whole: bring the tables up to date, call EndRepair
  kUndone,    // everything is as it was; the journal is gone
  kFailed,    // not yet: `fault` says why; the journal stays
};

struct RecoveryReport {
  DiskFault fault;
  std::vector<PathChange> moves;  // that are finished
  // Files that somebody has changed since. They stay as they are.
  std::vector<std::string> left;
};

// Looks for a journal that was left behind, and brings the disk in order.
ZVRSIT_API Recovery RecoverRepair(const std::string& journal, RecoveryReport& report);

}  // namespace zvrsit
