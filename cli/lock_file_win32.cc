#include <windows.h>

#include <thread>

#include "cli/exit_code.h"
#include "cli/lock_file.h"

namespace zvrsit::cli {

LockFile::LockFile(const std::string& nativePath, std::chrono::milliseconds patience)
    : handle_(-1) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  for (;;) {
    // Shared with nobody: a second opening fails while the first is open.
    const HANDLE file = CreateFileA(nativePath.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
      handle_ = reinterpret_cast<std::intptr_t>(file);
      return;
    }
    if (GetLastError() != ERROR_SHARING_VIOLATION) {
      throw Failure(kFileSystem, nativePath + ": cannot be opened");
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      throw Failure(kDatabase, nativePath + ": the database is in use by another process");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

LockFile::~LockFile() {
  CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace zvrsit::cli
