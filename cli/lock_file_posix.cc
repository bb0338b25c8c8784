#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "cli/exit_code.h"
#include "cli/lock_file.h"

namespace zvrsit::cli {

LockFile::LockFile(const std::string& nativePath, std::chrono::milliseconds patience)
    : handle_(-1) {
  const int fd = open(nativePath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) throw Failure(kFileSystem, nativePath + ": " + std::strerror(errno));
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      const std::string reason = std::strerror(errno);
      close(fd);
      throw Failure(kFileSystem, nativePath + ": " + reason);
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      close(fd);
      throw Failure(kDatabase, nativePath + ": the database is in use by another process");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  handle_ = fd;
}

LockFile::~LockFile() {
  close(static_cast<int>(handle_));
}

}  // namespace zvrsit::cli
