#include <windows.h>

#include "platform/folder_search.h"
#include "platform/native_path.h"

namespace zvrsit::platform {

struct FindState {
  HANDLE search;
};

FindHandle FindFirst(const std::string& pattern, FindData& found) {
  std::string native;
  if (!ToNativePath(pattern, native)) return nullptr;
  WIN32_FIND_DATAA data;
  const HANDLE search = ::FindFirstFileA(native.c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) return nullptr;
  found.name = data.cFileName;
  return new FindState{search};
}

bool FindNext(FindHandle handle, FindData& found) {
  WIN32_FIND_DATAA data;
  if (!handle || !::FindNextFileA(handle->search, &data)) return false;
  found.name = data.cFileName;
  return true;
}

void FindClose(FindHandle handle) {
  if (!handle) return;
  ::FindClose(handle->search);
  delete handle;
}

}  // namespace zvrsit::platform
