// What is put after the name of a database file for the files beside it.
#pragma once

namespace zvrsit {

inline constexpr const char* kBackupSuffix = "_bak";
inline constexpr const char* kPackSuffix = "_pack";

}  // namespace zvrsit
