// Locks of the operating system on single bytes of a file. The system ends a lock when its process
// ends, in whatever way. So no lock is ever left behind.
#pragma once

#include <cstdint>
#include <string>

#include "platform/file.h"

namespace zvrsit::platform {

class FileLock {
 public:
  FileLock() = default;
  // Gives the lock back.
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  // Locks the byte at `offset` of the file `path`, which is made when it is missing. Waits up to
  // `patience` milliseconds while others hold the byte. 0, or -1 (with LastError kInUse when others
  // still held it). To be called once for each object.
  //
  // A shared lock needs only a file that can be read. When the file is missing and cannot be made,
  // or lies on a read-only medium without locks, the result is 0 without a lock: nobody can write
  // there.
  [[nodiscard]] int Take(const std::string& path, std::int64_t offset, LockKind kind, int patience);

 private:
  int fd_ = -1;
};

}  // namespace zvrsit::platform
