// Searching a folder, in the manner of the find-first calls.
#pragma once

#include <string>
#include <vector>

namespace zvrsit::platform {

struct FileStat;

struct FindData {
  std::string name;       // last component only, spelled as on disk
  bool mayBeLink = true;  // false where the listing of a folder says that it is no link
};

struct FindState;
using FindHandle = FindState*;

// Starts a search; null when nothing is found. Two kinds of pattern are known:
//   FOLDER\*.*  every entry of the folder, "." and ".." among them; on POSIX in bytewise order,
//               without names that hold a `\`;
//   any other   the one entry that the path names. Where only another spelling of the last
//               component (letter case) is there, that one is found. `*` and `?` are literal on
//               POSIX, and in no name on Windows.
FindHandle FindFirst(const std::string& pattern, FindData& found);
// The next entry of the search; false at its end.
bool FindNext(FindHandle handle, FindData& found);
// Stat (platform/file.h) of an entry that the search has found. Where the system can look a name up
// in an open folder, this costs less than Stat by the path.
int StatFound(FindHandle handle, const FindData& found, FileStat& result);
// The names in the searched folder that no `\` path can name: on POSIX those that hold a `\`. Only
// a search of a whole folder has them. FindNext does not give them, but StatFound takes them.
const std::vector<std::string>& FindNamesWithBackslash(FindHandle handle);
// Ends a search; a null handle is allowed.
void FindClose(FindHandle handle);

}  // namespace zvrsit::platform
