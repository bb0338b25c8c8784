// Files and folders that another program of Windows holds.
#pragma once

#include <windows.h>

#include <string>

namespace zvrsit::test {

// While it lives, nobody else can open what is at the native path but in the ways that are shared,
// and to ask for its attributes.
class Lock {
 public:
  explicit Lock(const std::string& native, DWORD share = 0)
      : handle_(::CreateFileA(native.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS, nullptr)) {}
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;
  ~Lock() { ::CloseHandle(handle_); }

  bool holds() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

}  // namespace zvrsit::test
