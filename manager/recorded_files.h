// Whether the files of a site are still as its path table has them.
#pragma once

#include <cstdint>

#include "platform/file.h"
#include "storage/records.h"
#include "tables/site_path_db.h"

namespace zvrsit {

// A record holds the size of its file and the second of its last change. A file of the same size
// that was changed in that very second is told from the one that was read where the table was
// written in that second, too: it is younger than the table. What was changed while the table was
// being made, or was given its old time back, is not noticed.
class RecordedFiles {
 public:
  // `paths` is open; when it was last written is asked now. With `isAsWritten` nothing in it was
  // read later.
  RecordedFiles(const SitePathDB& paths, bool isAsWritten) {
    platform::FileStat table;
    // A time in whole seconds is too early.
    if (!isAsWritten || platform::Stat(paths.records()->filePath(), table) < 0 ||
        table.modificationNanoseconds % kSecond == 0) {
      return;
    }
    writtenIn_ = table.modificationTime;
    written_ = table.modificationNanoseconds;
  }

  bool Has(const SitePathRec& rec, const platform::FileStat& found) const {
    return static_cast<std::int32_t>(found.size) == rec.size &&
           found.modificationTime == rec.modificationTime &&
           (found.modificationTime != writtenIn_ || found.modificationNanoseconds <= written_);
  }

 private:
  static constexpr std::int64_t kSecond = 1'000'000'000;

  std::int64_t writtenIn_ = -1;  // the second; -1 not known
  std::int64_t written_ = 0;     // in nanoseconds
};

}  // namespace zvrsit
