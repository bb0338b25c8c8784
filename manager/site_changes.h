// How the files of a site differ from what its tables know of them.
#pragma once

#include <string>
#include <vector>

namespace zvrsit {

// Paths are `\` paths, those of folders end in `\`.
struct SiteChanges {
  std::vector<std::string> changed;  // pages and sheets of another size or time of modification
  std::vector<std::string> gone;     // files of the site that are no longer there
  std::vector<std::string> added;    // files of the site that are not known, or known as missing

  // Files that have not changed since, but whose links the tables do not know:
  std::vector<std::string> unread;  // pages and sheets that could not be read, or not to their end
  std::vector<std::string> unlisted;  // folders that cannot be read
  // Native paths: pages, sheets and folders that are left out because their names hold a "#" or a
  // `\`. With RuleFlags::readsWhatIsLinked a page with a "#" is read when something links to it.
  std::vector<std::string> leftOut;
};

// What an update has done. Paths as above.
struct SiteUpdates {
  std::vector<std::string> added;    // files that were not known, or known as missing
  std::vector<std::string> changed;  // of another size or time of modification
  std::vector<std::string> gone;
  int read = 0;  // how many pages and sheets were read
  // The record numbers of the files of these lists, of the pages and sheets that were read, and of
  // files outside of the site that have come, changed or gone; ascending. An entry that nothing
  // needs any more is gone, and a new file may have its number.
  std::vector<int> touched;
};

}  // namespace zvrsit
