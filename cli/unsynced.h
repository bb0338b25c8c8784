// Tables that were written without waiting until they are on the disk.
//
// Waiting for the disk takes as long as all else that an update of a large site does
// (docs/durability.md has figures). A process that is killed loses nothing if nobody waits; a power
// cut may leave tables that hold anything. So before the first such change after the machine was
// started, a file says so, and this is waited for: `unsynced` in the folder of the tables. It names
// the start of the machine, and the user's marks, which the pages do not tell. As long as the
// machine runs, the file means nothing. Once the machine was started anew, the tables are made
// anew, with the marks of the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "manager/site_mgr.h"

namespace zvrsit::cli {

// A file that the user has marked, by its `\` path.
struct Mark {
  std::string path;
  std::int32_t marks;

  friend bool operator==(const Mark&, const Mark&) = default;
};

// Those of the open site, by path; and into the open site: 0 or -1.
std::vector<Mark> ListMarks(SiteMgr& manager);
[[nodiscard]] int SetMarks(SiteMgr& manager, const std::vector<Mark>& marks);

// The argument is the native folder of the tables of a site that the caller has locked.

// Whether the machine was started anew since the tables were written without waiting.
bool MayBeTorn(const std::string& tables);
// The marks that were noted then.
std::vector<Mark> NotedMarks(const std::string& tables);
// Notes that the tables are about to be written without waiting, and the marks that they will have.
// False when this cannot be noted: then nothing may be written so.
[[nodiscard]] bool NoteUnsynced(const std::string& tables, const std::vector<Mark>& marks);
// Waits until all tables are on the disk, and takes the note away. False when that failed; then the
// note is still there.
[[nodiscard]] bool EndUnsynced(const std::string& tables);

// Takes the note of tables away that are gone.
void ForgetUnsynced(const std::string& tables);

// While an object lives, this process does not wait for the disk.
class NoWaiting {
 public:
  NoWaiting();
  ~NoWaiting();
  NoWaiting(const NoWaiting&) = delete;
  NoWaiting& operator=(const NoWaiting&) = delete;
};
// From now on it never waits, and notes nothing.
void NeverWait();

}  // namespace zvrsit::cli
