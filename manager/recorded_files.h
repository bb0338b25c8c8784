// Whether the files of a site are still as its path table has them.
#pragma once

#include <cstdint>

#include "platform/file.h"
#include "storage/records.h"
#include "tables/site_path_db.h"

namespace zvrsit {

// A record holds the size of its file and the second of its last change. When a file of the same
// size was changed in this very second, the time of the table decides: if the table was written in
// the same second and the file is younger than the table, the file has changed. Not noticed is a
// file that was changed while the table was being made, or that was given its old time again.
class RecordedFiles {
 public:
  // `paths` must be open; the constructor asks when its file was written. `isAsWritten`: nothing
  // was put into the table after that.
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
