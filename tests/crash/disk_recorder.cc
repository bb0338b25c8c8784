// Loaded before the program by LD_PRELOAD: sees every call that changes a file below one folder.
//
//   CRASH_ROOT   the folder
//   CRASH_KILL   kill the process by SIGKILL at the call of this number, from 1 on; of a write,
//   half
//                is done first
//   CRASH_STOP   stop it by SIGSTOP before the call of this number
//   CRASH_LOG    append a record of each call to this file, for a power cut that is played later:
//                a line "OP FILE OFFSET LENGTH PATHLENGTH OTHERLENGTH", then both paths, then
//                LENGTH bytes. FILE is the inode.
#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>

namespace {

std::recursive_mutex guard;

std::string Value(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

const std::string& Root() {
  static const std::string root = Value("CRASH_ROOT");
  return root;
}

const std::string& LogPath() {
  static const std::string path = Value("CRASH_LOG");
  return path;
}

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}
#define REAL(name) (Real<decltype(::name)>(#name))

// The absolute path of `name` in the open folder `at`; empty for files that are no concern.
std::string PathOf(int at, const char* name) {
  std::string path = name;
  if (path.empty() || path[0] != '/') {
    char folder[PATH_MAX] = {};
    if (at == AT_FDCWD) {
      if (getcwd(folder, sizeof folder) == nullptr) return {};
    } else {
      const std::string link = "/proc/self/fd/" + std::to_string(at);
      if (readlink(link.c_str(), folder, sizeof folder - 1) < 0) return {};
    }
    path = std::string(folder) + "/" + path;
  }
  for (std::size_t at2; (at2 = path.find("//")) != std::string::npos;) path.erase(at2, 1);
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  const std::string& root = Root();
  return !root.empty() && path.starts_with(root) ? path : std::string();
}

std::string PathOfOpen(int fd) {
  char path[PATH_MAX] = {};
  const std::string link = "/proc/self/fd/" + std::to_string(fd);
  if (readlink(link.c_str(), path, sizeof path - 1) < 0) return {};
  return PathOf(AT_FDCWD, path);
}

unsigned long FileOf(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 ? status.st_ino : 0;
}

void Put(const void* bytes, std::size_t length) {
  static const int log = static_cast<int>(syscall(SYS_openat, AT_FDCWD, LogPath().c_str(),
                                                  O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  const char* at = static_cast<const char*>(bytes);
  while (length > 0) {
    const long count = syscall(SYS_write, log, at, length);
    if (count <= 0) abort();
    at += count;
    length -= static_cast<std::size_t>(count);
  }
}

void Record(char op, unsigned long file, long offset, const std::string& path,
            const std::string& other, const void* bytes, std::size_t length) {
  if (LogPath().empty()) return;
  char line[160];
  const int size = std::snprintf(line, sizeof line, "%c %lu %ld %zu %zu %zu\n", op, file, offset,
                                 length, path.size(), other.size());
  Put(line, static_cast<std::size_t>(size));
  Put(path.data(), path.size());
  Put(other.data(), other.size());
  Put(bytes, length);
}

// Whether this is the call at which the process ends.
bool IsLast() {
  static const long kill = std::atol(Value("CRASH_KILL").c_str());
  static const long stop = std::atol(Value("CRASH_STOP").c_str());
  static long calls = 0;
  ++calls;
  if (calls == stop) syscall(SYS_kill, getpid(), SIGSTOP);
  return calls == kill;
}

void End() {
  syscall(SYS_kill, getpid(), SIGKILL);
}

void Count() {
  if (IsLast()) End();
}

long Write(int fd, const void* bytes, std::size_t length, long offset) {
  const std::lock_guard lock(guard);
  const std::string path = PathOfOpen(fd);
  const auto write = [&](std::size_t part) {
    return offset < 0 ? syscall(SYS_write, fd, bytes, part)
                      : syscall(SYS_pwrite64, fd, bytes, part, offset);
  };
  if (path.empty()) return write(length);
  if (IsLast()) {
    if (length > 1) write(length / 2);
    End();
  }
  const long count = write(length);
  const long begin = offset >= 0 ? offset : lseek(fd, 0, SEEK_CUR) - count;
  if (count > 0) Record('W', FileOf(fd), begin, path, "", bytes, static_cast<std::size_t>(count));
  return count;
}

int Open(int at, const char* name, int flags, mode_t mode) {
  const std::lock_guard lock(guard);
  const auto open = [&] { return static_cast<int>(syscall(SYS_openat, at, name, flags, mode)); };
  const std::string path = (flags & (O_CREAT | O_TRUNC)) != 0 ? PathOf(at, name) : std::string();
  if (path.empty()) return open();
  struct stat before;
  const bool isThere = fstatat(at, name, &before, 0) == 0;
  const bool cuts = (flags & O_TRUNC) != 0 && isThere && before.st_size > 0;
  if (isThere && !cuts) return open();
  Count();
  const int fd = open();
  if (fd < 0) return fd;
  if (cuts) {
    Record('T', FileOf(fd), 0, path, "", "", 0);
  } else {
    Record('C', FileOf(fd), 0, path, "", "", 0);
  }
  return fd;
}

// A call that changes names; `call` makes it.
template <class Call>
int Change(char op, const std::string& path, const std::string& other, Call call) {
  const std::lock_guard lock(guard);
  if (path.empty() && other.empty()) return call();
  Count();
  const int result = call();
  if (result == 0) Record(op, 0, 0, path, other, "", 0);
  return result;
}

template <class Call>
int Sync(char op, int fd, Call call) {
  const std::lock_guard lock(guard);
  const std::string path = PathOfOpen(fd);
  if (!path.empty()) Count();
  const int result = path.empty() ? call() : 0;  // what counts is that it was asked for
  if (!path.empty()) Record(op, FileOf(fd), 0, path, "", "", 0);
  return result;
}

}  // namespace

extern "C" {

ssize_t write(int fd, const void* bytes, size_t length) {
  return Write(fd, bytes, length, -1);
}
ssize_t pwrite64(int fd, const void* bytes, size_t length, off64_t offset) {
  return Write(fd, bytes, length, offset);
}
ssize_t pwrite(int fd, const void* bytes, size_t length, off_t offset) {
  return Write(fd, bytes, length, offset);
}
ssize_t writev(int fd, const iovec* parts, int count) {
  std::string bytes;
  for (int i = 0; i < count; ++i) {
    bytes.append(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
  }
  return Write(fd, bytes.data(), bytes.size(), -1);
}
// Copies of files go through Write.
ssize_t copy_file_range(int, off64_t*, int, off64_t*, size_t, unsigned) {
  errno = EXDEV;
  return -1;
}
ssize_t sendfile(int out, int in, off_t* offset, size_t length) {
  std::string bytes(std::min<size_t>(length, 1 << 20), '\0');
  const ssize_t count = offset != nullptr ? pread(in, bytes.data(), bytes.size(), *offset)
                                          : read(in, bytes.data(), bytes.size());
  if (count <= 0) return count;
  if (offset != nullptr) *offset += count;
  return Write(out, bytes.data(), static_cast<size_t>(count), -1);
}
ssize_t sendfile64(int out, int in, off64_t* offset, size_t length) {
  return sendfile(out, in, offset, length);
}

// Streams of the C++ library open their files so.
FILE* fopen64(const char* name, const char* mode) {
  if (mode[0] == 'r') return REAL(fopen64)(name, mode);
  const int access = std::strchr(mode, '+') != nullptr ? O_RDWR : O_WRONLY;
  const int way = mode[0] == 'w' ? O_TRUNC : O_APPEND;
  const int fd = Open(AT_FDCWD, name, access | O_CREAT | way | O_CLOEXEC, 0666);
  return fd < 0 ? nullptr : fdopen(fd, mode);
}
FILE* fopen(const char* name, const char* mode) {
  return fopen64(name, mode);
}

int open(const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = static_cast<mode_t>(va_arg(rest, int));
  va_end(rest);
  return Open(AT_FDCWD, name, flags, mode);
}
int open64(const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = static_cast<mode_t>(va_arg(rest, int));
  va_end(rest);
  return Open(AT_FDCWD, name, flags, mode);
}
int openat(int at, const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = static_cast<mode_t>(va_arg(rest, int));
  va_end(rest);
  return Open(at, name, flags, mode);
}
int openat64(int at, const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const auto mode = static_cast<mode_t>(va_arg(rest, int));
  va_end(rest);
  return Open(at, name, flags, mode);
}

int ftruncate(int fd, off_t length) {
  const std::lock_guard lock(guard);
  const std::string path = PathOfOpen(fd);
  if (!path.empty()) Count();
  const int result = static_cast<int>(syscall(SYS_ftruncate, fd, length));
  if (!path.empty() && result == 0) Record('T', FileOf(fd), length, path, "", "", 0);
  return result;
}
int ftruncate64(int fd, off64_t length) {
  return ftruncate(fd, length);
}

int rename(const char* from, const char* to) {
  return Change('R', PathOf(AT_FDCWD, from), PathOf(AT_FDCWD, to),
                [&] { return REAL(rename)(from, to); });
}
int unlink(const char* name) {
  return Change('U', PathOf(AT_FDCWD, name), "", [&] { return REAL(unlink)(name); });
}
int remove(const char* name) {
  return Change('U', PathOf(AT_FDCWD, name), "", [&] {
    return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, name, 0)) == 0
               ? 0
               : static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, name, AT_REMOVEDIR));
  });
}
int unlinkat(int at, const char* name, int flags) {
  return Change('U', PathOf(at, name), "", [&] { return REAL(unlinkat)(at, name, flags); });
}
int rmdir(const char* name) {
  return Change('U', PathOf(AT_FDCWD, name), "", [&] { return REAL(rmdir)(name); });
}
int mkdir(const char* name, mode_t mode) {
  return Change('M', PathOf(AT_FDCWD, name), "", [&] { return REAL(mkdir)(name, mode); });
}
int fsync(int fd) {
  return Sync('S', fd, [&] { return REAL(fsync)(fd); });
}
int fdatasync(int fd) {
  return Sync('S', fd, [&] { return REAL(fdatasync)(fd); });
}
int syncfs(int fd) {
  return Sync('A', fd, [&] { return REAL(syncfs)(fd); });
}

}  // extern "C"
