// One process at a time on one database: a lock file of the program's own in the database folder.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zvrsit::cli {

class LockFile {
 public:
  // Takes the lock at `nativePath`, waiting up to `patience` for another process to leave it.
  // Throws Failure: kDatabase when the other stays, kFileSystem when the file cannot be made.
  LockFile(const std::string& nativePath, std::chrono::milliseconds patience);
  ~LockFile();
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

 private:
  std::intptr_t handle_;
};

}  // namespace zvrsit::cli
