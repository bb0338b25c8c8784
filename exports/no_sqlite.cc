// In place of sqlite_rows.cc where there is no SQLite.
#include "exports/rows.h"

namespace zvrsit {

std::unique_ptr<ExportRows> MakeSqlite(const OutputPath& file) {
  throw ExportError(file.name + ": this program was built without SQLite");
}

}  // namespace zvrsit
