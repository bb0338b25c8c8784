// File calls by a name in an open folder, for the other POSIX sources of platform/.
#pragma once

#include "platform/file.h"

namespace zvrsit::platform {

// Stat of the entry `name` of the folder that the descriptor is open on.
int StatIn(int folder, const char* name, FileStat& result);
// Opens the entry `name` of a folder for reading; where that fails, the file at `nativePath`, which
// then decides: the folder may have been replaced since it was opened.
int OpenToReadIn(int folder, const char* name, const char* nativePath);

}  // namespace zvrsit::platform
