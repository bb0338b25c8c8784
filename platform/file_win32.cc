#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <limits>

#include "platform/file.h"
#include "platform/file_fault_check.h"
#include "platform/native_path.h"

namespace zvrsit::platform {
namespace {

// What one call of the runtime is asked for at most; its counts are 32 bits.
constexpr std::size_t kMostAtOnce = 1u << 30;

std::atomic<bool> syncs = true;
thread_local int lastError = 0;
thread_local std::string nativePath;
thread_local std::string otherNativePath;

int Fail(int error) {
  lastError = error;
  return -1;
}

template <class Result>
Result Noted(Result result) {
  if (result < 0) lastError = errno;
  return result;
}

int SystemFlags(int flags) {
  int result = (flags & kOpenReadWrite)   ? _O_RDWR
               : (flags & kOpenWriteOnly) ? _O_WRONLY
                                          : _O_RDONLY;
  if (flags & kOpenCreate) result |= _O_CREAT;
  if (flags & kOpenTruncate) result |= _O_TRUNC;
  return result | _O_BINARY | _O_NOINHERIT;
}

// Counts of 100 nanoseconds between 1601 and 1970, and in a second.
constexpr std::int64_t kUnixEpoch = 116'444'736'000'000'000;
constexpr std::int64_t kTicksPerSecond = 10'000'000;

std::int64_t TicksSince1970(const FILETIME& time) {
  const auto ticks = static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
  return static_cast<std::int64_t>(ticks) - kUnixEpoch;
}

// When the file or what is known about it last changed; 0 where that is not kept.
std::int64_t ChangeNanoseconds(HANDLE file) {
  FILE_BASIC_INFO basic;
  if (!::GetFileInformationByHandleEx(file, FileBasicInfo, &basic, sizeof basic)) return 0;
  const std::int64_t ticks = basic.ChangeTime.QuadPart;
  return ticks == 0 ? 0 : (ticks - kUnixEpoch) * 100;
}

std::int32_t ClampTime(const FILETIME& time) {
  using Limits = std::numeric_limits<std::int32_t>;
  const std::int64_t ticks = TicksSince1970(time);
  const std::int64_t seconds = ticks / kTicksPerSecond - (ticks % kTicksPerSecond < 0 ? 1 : 0);
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(seconds, Limits::min(), Limits::max()));
}

// What the runtime's _stat gives, and the identity of the file, which it does not. Anything but a
// file on a disk (a pipe, a device) is of no kind.
bool StatHandle(HANDLE file, FileStat& result) {
  constexpr std::uint64_t kMostSize = 0xFFFFFFFE;
  BY_HANDLE_FILE_INFORMATION found;
  result = {};
  if (::GetFileType(file) != FILE_TYPE_DISK) return true;
  if (!::GetFileInformationByHandle(file, &found)) return false;
  const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  result.mode = isFolder ? kModeFolder : kModeRegular;
  const auto size = static_cast<std::uint64_t>(found.nFileSizeHigh) << 32 | found.nFileSizeLow;
  result.size = static_cast<std::uint32_t>(isFolder ? 0 : std::min(size, kMostSize));
  result.creationTime = ClampTime(found.ftCreationTime);
  result.modificationTime = ClampTime(found.ftLastWriteTime);
  result.accessTime = ClampTime(found.ftLastAccessTime);
  result.modificationNanoseconds = TicksSince1970(found.ftLastWriteTime) * 100;
  result.changeNanoseconds = ChangeNanoseconds(file);
  result.device = found.dwVolumeSerialNumber;
  result.file = static_cast<std::uint64_t>(found.nFileIndexHigh) << 32 | found.nFileIndexLow;
  return true;
}

// The runtime's error number of the system's last error.
int ErrorOfSystem() {
  switch (::GetLastError()) {
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
      return EACCES;
    case ERROR_NOT_ENOUGH_MEMORY:
      return ENOMEM;
    default:
      return ENOENT;
  }
}

}  // namespace

int Open(const std::string& path, int flags, int permission) {
  if (MustFail(FileCall::kOpen)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(_open(nativePath.c_str(), SystemFlags(flags), permission));
}

int Close(int fd) {
  const bool fault = MustFail(FileCall::kClose);
  if (_close(fd) != 0) return Fail(errno);
  return fault ? Fail(EIO) : 0;
}

std::int64_t Read(int fd, void* destination, std::size_t length) {
  if (MustFail(FileCall::kRead)) return Fail(EIO);
  auto* bytes = static_cast<char*>(destination);
  std::size_t done = 0;
  while (done < length) {
    const auto wanted = static_cast<unsigned>(std::min(length - done, kMostAtOnce));
    const int count = _read(fd, bytes + done, wanted);
    if (count < 0) return Fail(errno);
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return static_cast<std::int64_t>(done);
}

std::int64_t Write(int fd, const void* source, std::size_t length) {
  if (MustFail(FileCall::kWrite)) return Fail(EIO);
  const auto* bytes = static_cast<const char*>(source);
  std::size_t done = 0;
  while (done < length) {
    const auto wanted = static_cast<unsigned>(std::min(length - done, kMostAtOnce));
    const int count = _write(fd, bytes + done, wanted);
    if (count <= 0) {
      lastError = count == 0 ? ENOSPC : errno;
      return done > 0 ? static_cast<std::int64_t>(done) : -1;
    }
    done += static_cast<std::size_t>(count);
  }
  return static_cast<std::int64_t>(done);
}

std::int64_t Seek(int fd, std::int64_t offset) {
  if (MustFail(FileCall::kSeek)) return Fail(EIO);
  return Noted(_lseeki64(fd, offset, SEEK_SET));
}

std::int64_t SeekEnd(int fd) {
  if (MustFail(FileCall::kSeek)) return Fail(EIO);
  return Noted(_lseeki64(fd, 0, SEEK_END));
}

int SetLength(int fd, std::int64_t length) {
  if (MustFail(FileCall::kWrite)) return Fail(EIO);
  const errno_t error = _chsize_s(fd, length);
  return error == 0 ? 0 : Fail(error);
}

int Stat(const std::string& path, FileStat& result) {
  if (MustFail(FileCall::kStat)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file = ::CreateFileA(nativePath.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return Fail(ErrorOfSystem());
  const bool known = StatHandle(file, result);
  ::CloseHandle(file);
  return known ? 0 : Fail(ErrorOfSystem());
}

int StatOpen(int fd, FileStat& result) {
  if (MustFail(FileCall::kStat)) return Fail(EIO);
  const auto file = reinterpret_cast<HANDLE>(_get_osfhandle(fd));
  if (file == INVALID_HANDLE_VALUE) return Fail(EBADF);
  return StatHandle(file, result) ? 0 : Fail(ErrorOfSystem());
}

bool IsLink(const std::string& path) {
  if (!ToNativePath(path, nativePath)) return false;
  WIN32_FIND_DATAA found;
  const HANDLE search = ::FindFirstFileA(nativePath.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  ::FindClose(search);
  // Other reparse points, such as files kept in a cloud, are files and folders in their own right.
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK ||
          found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

int MakeFolder(const std::string& path, int) {
  if (MustFail(FileCall::kMakeFolder)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(_mkdir(nativePath.c_str()));
}

int Unlink(const std::string& path) {
  if (MustFail(FileCall::kUnlink)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(_unlink(nativePath.c_str()));
}

int RemoveFolder(const std::string& path) {
  if (MustFail(FileCall::kUnlink)) return Fail(EIO);
  if (!ToNativePath(path, nativePath)) return Fail(ENOENT);
  return Noted(_rmdir(nativePath.c_str()));
}

int Rename(const std::string& from, const std::string& to) {
  if (MustFail(FileCall::kRename)) return Fail(EIO);
  if (!ToNativePath(from, nativePath) || !ToNativePath(to, otherNativePath)) return Fail(ENOENT);
  return Noted(std::rename(nativePath.c_str(), otherNativePath.c_str()));
}

int Replace(const std::string& from, const std::string& to) {
  if (MustFail(FileCall::kRename)) return Fail(EIO);
  if (!ToNativePath(from, nativePath) || !ToNativePath(to, otherNativePath)) return Fail(ENOENT);
  const BOOL moved =
      ::MoveFileExA(nativePath.c_str(), otherNativePath.c_str(), MOVEFILE_REPLACE_EXISTING);
  return moved ? 0 : Fail(ErrorOfSystem());
}

void SetSyncing(bool wanted) {
  syncs = wanted;
}

int SyncFiles(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    if (MustFail(FileCall::kSync)) return Fail(EIO);
    if (!syncs) continue;
    const int fd = Open(path, kOpenExisting);
    if (fd < 0) return -1;
    const int result = Noted(_commit(fd));
    Close(fd);
    if (result != 0) return -1;
  }
  return 0;
}

int SyncFolder(const std::string&) {
  return MustFail(FileCall::kSync) ? Fail(EIO) : 0;
}

int CopyPermissions(const std::string&, const std::string&) {
  return 0;
}

int LockByte(int fd, std::int64_t offset, LockKind kind) {
  const auto file = reinterpret_cast<HANDLE>(_get_osfhandle(fd));
  if (file == INVALID_HANDLE_VALUE) return Fail(EBADF);
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  const DWORD exclusive = kind == LockKind::kExclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0;
  if (::LockFileEx(file, exclusive | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place)) return 0;
  const DWORD error = ::GetLastError();
  const bool inUse = error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING;
  return Fail(inUse ? kInUse : ErrorOfSystem());
}

int FlushAll() {
  return _flushall() < 0 ? Fail(errno) : 0;
}

int LastError() {
  return lastError;
}

}  // namespace zvrsit::platform
