#include <windows.h>

#include "platform/file.h"
#include "platform/folder_search.h"
#include "platform/native_path.h"
#include "platform/single_byte.h"

namespace zvrsit::platform {

struct FindState {
  HANDLE search;
  std::string folder;  // as it stood in the pattern
};

namespace {

// No name on Windows holds a wildcard. So a path with one, from a link in some page, names nothing.
bool IsAsked(const std::string& pattern) {
  const std::size_t separator = FindLastSingleByte(pattern, '\\');
  if (separator != std::string::npos && pattern.substr(separator + 1) == "*.*") return true;
  return FindLastSingleByte(pattern, '*') == std::string::npos &&
         FindLastSingleByte(pattern, '?') == std::string::npos;
}

}  // namespace

FindHandle FindFirst(const std::string& pattern, FindData& found) {
  std::string native;
  if (!IsAsked(pattern) || !ToNativePath(pattern, native)) return nullptr;
  WIN32_FIND_DATAA data;
  const HANDLE search = ::FindFirstFileA(native.c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return nullptr;
  found = {data.cFileName, (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0};
  return new FindState{search, pattern.substr(0, LastComponent(pattern))};
}

bool FindNext(FindHandle handle, FindData& found) {
  WIN32_FIND_DATAA data;
  if (!handle || !::FindNextFileA(handle->search, &data)) return false;
  found = {data.cFileName, (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0};
  return true;
}

// Of a link, FindFirstFile describes the link itself; and it gives no number of the file.
int StatFound(FindHandle handle, const FindData& found, FileStat& result) {
  return Stat(handle->folder + found.name, result);
}

// A `\` separates folders there, and is in no name.
const std::vector<std::string>& FindNamesWithBackslash(FindHandle) {
  static const std::vector<std::string> kNone;
  return kNone;
}

void FindClose(FindHandle handle) {
  if (!handle) return;
  ::FindClose(handle->search);
  delete handle;
}

}  // namespace zvrsit::platform
