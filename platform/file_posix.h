// File calls by a name in an open folder, for the other POSIX sources of platform/.
#pragma once

#include "platform/file.h"

namespace zvrsit::platform {

// Stat of the entry `name` of the folder that the descriptor is open on.
int StatIn(int folder, const char* name, FileStat& result);

}  // namespace zvrsit::platform
