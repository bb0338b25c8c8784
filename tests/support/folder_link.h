// Links among folders, where the system has them.
#pragma once

#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace zvrsit::test {

// Makes a link to a folder; both names are native, `target` may be relative to the link. On Windows
// false where the user has no right to make one, or the system does not know them.
inline bool LinkFolder(const std::string& target, const std::string& link) {
#if defined(_WIN32)
  constexpr DWORD kFolderWithoutPrivilege = 1 | 2;
  ::CreateSymbolicLinkA(link.c_str(), target.c_str(), kFolderWithoutPrivilege);
  std::error_code ignored;
  return std::filesystem::exists(link, ignored);
#else
  std::filesystem::create_directory_symlink(target, link);
  return true;
#endif
}

}  // namespace zvrsit::test
