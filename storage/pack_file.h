// PackFile: the file beside a database file that a compaction writes and then puts in its place.
#pragma once

#include <string>

#include "storage/site_db.h"

namespace zvrsit {

class PackFile : public SiteDB {
 public:
  // The file is `target` followed by "_pack". One that is there is opened as it is, not
  // emptied, on purpose: what it held beyond the packed part stays behind that.
  explicit PackFile(const std::string& target) : SiteDB(PathFor(target), true) {}
  static std::string PathFor(const std::string& target) { return target + "_pack"; }

  int WriteWord(int offset, std::int32_t word);
  // Sets the 24 bytes of the header and writes the file out; 0 or -1.
  int Finish(const char* headerBytes, std::int32_t word1, std::int32_t word2);
};

}  // namespace zvrsit
