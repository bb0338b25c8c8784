// Locks of the operating system on single bytes of a file. A lock ends with the process that holds
// it, however that ends, so none is ever stale.
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

  // Locks the byte at `offset` of the file `path`, which is made when it is missing; waits up to
  // `patience` milliseconds for others to leave it. 0, or -1 (LastError kInUse: they did not).
  // Called once an object.
  //
  // A shared lock is taken on a file that can only be read too. Where there is none and none can be
  // made, or a read-only medium knows no locks, 0 is the answer without a lock: nobody writes
  // there.
  int Take(const std::string& path, std::int64_t offset, LockKind kind, int patience);

 private:
  int fd_ = -1;
};

}  // namespace zvrsit::platform
