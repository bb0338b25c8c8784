#include "platform/file_lock.h"

#include <cerrno>
#include <chrono>
#include <thread>

namespace zvrsit::platform {
namespace {

bool CannotBeWritten(int error) {
  return error == EROFS || error == EACCES || error == EPERM;
}

}  // namespace

FileLock::~FileLock() {
  if (fd_ >= 0) Close(fd_);
}

int FileLock::Take(const std::string& path, std::int64_t offset, LockKind kind, int patience) {
  fd_ = Open(path, kOpenDatabase);
  const bool onlyReads = fd_ < 0 && kind == LockKind::kShared && CannotBeWritten(LastError());
  if (onlyReads) fd_ = Open(path, kOpenReadOnly);
  if (fd_ < 0) return onlyReads && LastError() == ENOENT ? 0 : -1;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patience);
  int result = LockByte(fd_, offset, kind);
  while (result < 0 && LastError() == kInUse && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    result = LockByte(fd_, offset, kind);
  }
  return onlyReads && LastError() != kInUse ? 0 : result;
}

}  // namespace zvrsit::platform
