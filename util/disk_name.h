// How the name of a file is spelled on the disk.
#pragma once

#include <string>

namespace zvrsit {

// Whether the last component of `path` is there, spelled with these very bytes. A search finds a
// file of another letter case too.
bool IsSpelledAsOnDisk(const std::string& path);

}  // namespace zvrsit
