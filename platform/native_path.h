// Between the `\` paths of the library and the paths of the operating system.
//
// On Windows the two are the same. On POSIX `\home\ann\a.htm` is `/home/ann/a.htm`: single-byte
// separators are swapped, double-byte characters stay whole. A drive letter is looked up in the
// drive map.
#pragma once

#include <string>

#include "platform/api.h"

namespace zvrsit::platform {

// Whether names that differ in letter case alone are one file.
#if defined(_WIN32)
inline constexpr bool kNamesIgnoreCase = true;
#else
inline constexpr bool kNamesIgnoreCase = false;
#endif

// Maps drive `letter` (any case) to a native folder; an empty folder takes the mapping away.
ZVRSIT_API void SetDriveFolder(char letter, const std::string& nativeFolder);

// The native path of a `\` path; false for a drive that is not mapped. This and the next give
// false, too, when there is no memory.
ZVRSIT_API bool ToNativePath(const std::string& path, std::string& native);
// The `\` path of a native one; false when the native name holds a `\`.
ZVRSIT_API bool FromNativePath(const std::string& native, std::string& path);

}  // namespace zvrsit::platform
