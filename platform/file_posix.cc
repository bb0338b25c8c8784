#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <set>

#include "platform/file.h"
#include "platform/file_fault_check.h"
#include "platform/file_posix.h"
#include "platform/native_path.h"

namespace zvrsit::platform {
namespace {

static_assert(sizeof(off_t) == 8, "files above 2 GB need 64-bit offsets");

std::atomic<bool> syncs = true;
thread_local int lastError = 0;
// Native paths are made here, so that a call allocates nothing once the longest path was seen.
thread_local std::string nativePath;
thread_local std::string otherNativePath;

int Fail(int error) {
  lastError = error;
  return -1;
}

// Notes the error of a system call that gave -1, and passes the result on.
template <class Result>
Result Noted(Result result) {
  if (result < 0) lastError = errno;
  return result;
}

int SystemFlags(int flags) {
  int result = (flags & kOpenReadWrite) ? O_RDWR : (flags & kOpenWriteOnly) ? O_WRONLY : O_RDONLY;
  if (flags & kOpenCreate) result |= O_CREAT;
  if (flags & kOpenTruncate) result |= O_TRUNC;
  // A pipe that nobody writes to must not hang the caller; regular files take no notice.
  return result | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
}

int OpenNative(const char* name, int flags, int permission) {
  int fd;
  do {
    fd = ::open(name, SystemFlags(flags), static_cast<mode_t>(permission));
  } while (fd < 0 && errno == EINTR);
  return fd;
}

#if defined(__linux__)
constexpr bool kSyncsSystems = true;
int SyncSystem(int fd) {
  return ::syncfs(fd);
}
#else
constexpr bool kSyncsSystems = false;
int SyncSystem(int fd) {
  return ::fsync(fd);
}
#endif

// Waits until a file or folder, or with `all` its whole file system, is on the disk.
int SyncOne(const std::string& path, bool all) {
  if (MustFail(FileCall::kSync)) return Fail(EIO);
  if (!syncs) return 0;
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  const int fd = ::open(nativePath.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) return Fail(errno);
  const int result = Noted(all ? SyncSystem(fd) : ::fsync(fd));
  ::close(fd);
  return result;
}

std::int32_t ClampTime(std::int64_t time) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(time, Limits::min(), Limits::max()));
}

std::int64_t Nanoseconds(const timespec& time) {
  constexpr std::int64_t kPerSecond = 1'000'000'000;
  constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int64_t>::max() / kPerSecond - 1;
  return std::clamp<std::int64_t>(time.tv_sec, -kMostSeconds, kMostSeconds) * kPerSecond +
         time.tv_nsec;
}

timespec ModificationTime(const struct stat& status) {
#if defined(__APPLE__)
  return status.st_mtimespec;
#else
  return status.st_mtim;
#endif
}

timespec ChangeTime(const struct stat& status) {
#if defined(__APPLE__)
  return status.st_ctimespec;
#else
  return status.st_ctim;
#endif
}

void Fill(const struct stat& status, FileStat& result) {
  constexpr off_t kMostSize = 0xFFFFFFFE;
  result.mode = S_ISDIR(status.st_mode) ? kModeFolder : S_ISREG(status.st_mode) ? kModeRegular : 0;
  result.size = static_cast<std::uint32_t>(std::clamp<off_t>(status.st_size, 0, kMostSize));
  result.creationTime = ClampTime(status.st_ctime);
  result.modificationTime = ClampTime(status.st_mtime);
  result.accessTime = ClampTime(status.st_atime);
  result.modificationNanoseconds = Nanoseconds(ModificationTime(status));
  result.changeNanoseconds = Nanoseconds(ChangeTime(status));
  result.device = static_cast<std::uint64_t>(status.st_dev);
  result.file = static_cast<std::uint64_t>(status.st_ino);
  result.hasOtherNames = status.st_nlink > 1;
}

int FilledAt(int folder, const char* name, FileStat& result) {
  struct stat status;
  if (::fstatat(folder, name, &status, 0) != 0) return Fail(errno);
  Fill(status, result);
  return 0;
}

}  // namespace

int Open(const std::string& path, int flags, int permission) {
  if (MustFail(FileCall::kOpen)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(OpenNative(nativePath.c_str(), flags, permission));
}

int Close(int fd) {
  const bool fault = MustFail(FileCall::kClose);
  // After an interrupted close the descriptor is free already. Closing it again could close another
  // file.
  if (::close(fd) != 0 && errno != EINTR) return Fail(errno);
  return fault ? Fail(EIO) : 0;
}

std::int64_t Read(int fd, void* destination, std::size_t length) {
  if (MustFail(FileCall::kRead)) return Fail(EIO);
  auto* bytes = static_cast<char*>(destination);
  std::size_t done = 0;
  while (done < length) {
    const ssize_t count = ::read(fd, bytes + done, length - done);
    if (count == 0) break;
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      return Fail(errno);
    }
  }
  return static_cast<std::int64_t>(done);
}

std::int64_t Write(int fd, const void* source, std::size_t length) {
  if (MustFail(FileCall::kWrite)) return Fail(EIO);
  const auto* bytes = static_cast<const char*>(source);
  std::size_t done = 0;
  while (done < length) {
    const ssize_t count = ::write(fd, bytes + done, length - done);
    if (count > 0) {
      done += static_cast<std::size_t>(count);
    } else if (count == 0 || errno != EINTR) {
      lastError = count == 0 ? ENOSPC : errno;
      return done > 0 ? static_cast<std::int64_t>(done) : -1;
    }
  }
  return static_cast<std::int64_t>(done);
}

std::int64_t Seek(int fd, std::int64_t offset) {
  if (MustFail(FileCall::kSeek)) return Fail(EIO);
  return Noted(::lseek(fd, offset, SEEK_SET));
}

std::int64_t SeekEnd(int fd) {
  if (MustFail(FileCall::kSeek)) return Fail(EIO);
  return Noted(::lseek(fd, 0, SEEK_END));
}

int SetLength(int fd, std::int64_t length) {
  if (MustFail(FileCall::kWrite)) return Fail(EIO);
  return Noted(::ftruncate(fd, length));
}

int Stat(const std::string& path, FileStat& result) {
  if (MustFail(FileCall::kStat)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return FilledAt(AT_FDCWD, nativePath.c_str(), result);
}

int StatIn(int folder, const char* name, FileStat& result) {
  return MustFail(FileCall::kStat) ? Fail(EIO) : FilledAt(folder, name, result);
}

int StatOpen(int fd, FileStat& result) {
  if (MustFail(FileCall::kStat)) return Fail(EIO);
  struct stat status;
  if (::fstat(fd, &status) != 0) return Fail(errno);
  Fill(status, result);
  return 0;
}

bool IsLink(const std::string& path) {
  struct stat status;
  return ToNativePath(path, nativePath) && ::lstat(nativePath.c_str(), &status) == 0 &&
         S_ISLNK(status.st_mode);
}

int MakeFolder(const std::string& path, int permission) {
  if (MustFail(FileCall::kMakeFolder)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(::mkdir(nativePath.c_str(), static_cast<mode_t>(permission)));
}

int Unlink(const std::string& path) {
  if (MustFail(FileCall::kUnlink)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(::unlink(nativePath.c_str()));
}

int RemoveFolder(const std::string& path) {
  if (MustFail(FileCall::kUnlink)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(::rmdir(nativePath.c_str()));
}

int Rename(const std::string& from, const std::string& to) {
  if (MustFail(FileCall::kRename)) return Fail(EIO);
  if (!ToNativePath(from, nativePath) || !ToNativePath(to, otherNativePath)) return Fail(ENOENT);
  return Noted(std::rename(nativePath.c_str(), otherNativePath.c_str()));
}

int Replace(const std::string& from, const std::string& to) {
  return Rename(from, to);
}

void SetSyncing(bool wanted) {
  syncs = wanted;
}

int SyncFiles(const std::vector<std::string>& paths) {
  // Of more files than these, writing out all that is waiting is less work than one by one.
  constexpr std::size_t kFew = 16;
  const bool all = kSyncsSystems && paths.size() > kFew;
  std::set<std::uint64_t> systems;
  for (const std::string& path : paths) {
    FileStat stat;
    if (all && Stat(path, stat) == 0 && !systems.insert(stat.device).second) continue;
    if (SyncOne(path, all) != 0) return -1;
  }
  return 0;
}

int SyncFolder(const std::string& path) {
  return SyncOne(path, false);
}

int CopyPermissions(const std::string& from, const std::string& to) {
  if (MustFail(FileCall::kStat)) return Fail(EIO);
  if (!ToNativePath(from, nativePath) || !ToNativePath(to, otherNativePath)) return Fail(ENOENT);
  struct stat status;
  struct stat now;
  if (::stat(nativePath.c_str(), &status) != 0 || ::stat(otherNativePath.c_str(), &now) != 0) {
    return Fail(errno);
  }
  const char* const name = otherNativePath.c_str();
  // Not everybody may give a file away.
  if (now.st_gid != status.st_gid && ::chown(name, uid_t(-1), status.st_gid) != 0) errno = 0;
  if (now.st_uid != status.st_uid && ::chown(name, status.st_uid, gid_t(-1)) != 0) errno = 0;
  return Noted(::chmod(name, status.st_mode & 07777));
}

// The lock belongs to the open file, not to the process, and ends with it.
int LockByte(int fd, std::int64_t offset, LockKind kind) {
  struct flock range = {};
  range.l_type = kind == LockKind::kShared ? F_RDLCK : F_WRLCK;
  range.l_whence = SEEK_SET;
  range.l_start = offset;
  range.l_len = 1;
  if (::fcntl(fd, F_OFD_SETLK, &range) == 0) return 0;
  return Fail(errno == EACCES ? kInUse : errno);
}

int FlushAll() {
  return 0;
}

int LastError() {
  return lastError;
}

}  // namespace zvrsit::platform
