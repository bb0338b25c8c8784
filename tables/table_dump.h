// The records of a table, word by word, as they lie on the disk.
#pragma once

#include <string>

#include "tables/table_faults.h"

namespace zvrsit {

// Called for each record; `context` is the caller's.
using DumpHook = void (*)(const DumpedRecord& record, void* context);

// Calls `hook` for each record of the table whose record file has that `\` path, in the order of
// the file; with `dead` for dead slots too. A damaged file is read as far as it goes; `stopped`
// gets, for each file that does not go to its end, where and why. Nothing is changed.
void DumpRecords(TableKind kind, const std::string& recordFile, bool dead, DumpHook hook,
                 void* context, std::vector<TableFault>& stopped);

}  // namespace zvrsit
