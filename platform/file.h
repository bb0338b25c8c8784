// File calls of the operating system. Every path is a `\` path; platform/native_path.h says what
// that means here. No call throws.
#pragma once

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

namespace zvrsit::platform {

// Flag words of Open, one bit each.
inline constexpr int kOpenWriteOnly = 0x0001;
inline constexpr int kOpenReadWrite = 0x0002;
inline constexpr int kOpenCreate = 0x0100;
inline constexpr int kOpenTruncate = 0x0200;
inline constexpr int kOpenBinary = 0x8000;

// How database files are opened for use, copied from, and written again while packing.
inline constexpr int kOpenDatabase = kOpenBinary | kOpenCreate | kOpenReadWrite;
inline constexpr int kOpenExisting = kOpenBinary | kOpenReadWrite;
inline constexpr int kOpenPack = kOpenBinary | kOpenCreate | kOpenTruncate | kOpenWriteOnly;
// Read-only: no flag but the binary one.
inline constexpr int kOpenReadOnly = kOpenBinary;

inline constexpr int kOwnerReadWrite = 0600;
inline constexpr int kOwnerFolder = 0700;
inline constexpr int kEveryone = 0777;  // but for what the user's mask takes away

// Opens `path`; a descriptor (0 or above) or -1.
int Open(const std::string& path, int flags, int permission = kOwnerReadWrite);
int Close(int fd);

// Reads `length` bytes, or fewer at the end of the file; gives their count or -1. A call of the
// system that was interrupted, or that read only a part, is continued.
std::int64_t Read(int fd, void* destination, std::size_t length);
// Writes all of `length` bytes; the count, short when the disk is full, or -1.
std::int64_t Write(int fd, const void* source, std::size_t length);

// Moves to an absolute offset, or to the end and gives the offset there; -1 on failure.
[[nodiscard]] std::int64_t Seek(int fd, std::int64_t offset);
[[nodiscard]] std::int64_t SeekEnd(int fd);

inline constexpr unsigned kModeFolder = 0x4000;
inline constexpr unsigned kModeRegular = 0x8000;

// Cuts an open file to `length` bytes, or makes it longer by zeros; 0 or -1.
[[nodiscard]] int SetLength(int fd, std::int64_t length);

// What `_stat` gives. Sizes and times that do not fit are clamped (0xFFFFFFFE, 0x7FFFFFFF).
struct FileStat {
  unsigned mode = 0;  // kModeFolder, kModeRegular, neither for anything else
  std::uint32_t size = 0;
  std::int32_t creationTime = 0;  // on POSIX, of the last change of the file's status
  std::int32_t modificationTime = 0;
  std::int32_t accessTime = 0;
  std::int64_t modificationNanoseconds = 0;  // since the epoch, for caches
  // The time of the last change of the content or of the file's status (such as a new modification
  // time). 0 if the file system does not keep it.
  std::int64_t changeNanoseconds = 0;
  std::uint64_t device = 0;  // with `file`: the same real file or folder
  std::uint64_t file = 0;
  bool hasOtherNames = false;  // hard links; of a folder without meaning

  bool isFolder() const { return (mode & kModeFolder) != 0; }
  bool isRegular() const { return (mode & kModeRegular) != 0; }
};

// All of these give 0 or -1. Links are followed by Stat. Rename replaces an existing file on POSIX
// and fails on Windows.
int Stat(const std::string& path, FileStat& result);
int StatOpen(int fd, FileStat& result);
// Whether the last component of `path` is itself a link (on Windows a symbolic link or a junction)
// to somewhere else. False also when there is nothing of that name.
bool IsLink(const std::string& path);
// `permission` as of mkdir; no effect on Windows, where a folder has those of the one above it.
int MakeFolder(const std::string& path, int permission = kEveryone);
int Unlink(const std::string& path);
// Removes a folder that is empty.
int RemoveFolder(const std::string& path);
int Rename(const std::string& from, const std::string& to);
// As Rename, but replaces an existing file on every system, in one step: at every moment either the
// old or the new file is there.
[[nodiscard]] int Replace(const std::string& from, const std::string& to);

// What these have done is there after a power cut; each gives 0 or -1. After SetSyncing(false) they
// do nothing, in this process: for tests, and where speed counts more.
void SetSyncing(bool syncs);
// The content of closed files:
[[nodiscard]] int SyncFiles(const std::vector<std::string>& paths);
// Which names are in a folder. No effect on Windows.
[[nodiscard]] int SyncFolder(const std::string& path);
// Gives `to` the permissions of `from`; and its owner and group, as far as the user may. No effect
// on Windows, where a file has those of its folder.
[[nodiscard]] int CopyPermissions(const std::string& from, const std::string& to);

// An exclusive lock needs a file that is open for writing.
enum class LockKind { kShared, kExclusive };
// LastError() when a lock was refused because the file is locked through another descriptor, of
// this process or of another.
inline constexpr int kInUse = EAGAIN;
// Tries to lock the byte at `offset`, which need not be there, until `fd` is closed; 0 or -1.
[[nodiscard]] int LockByte(int fd, std::int64_t offset, LockKind kind);

// Flushes what the process holds in buffers of its own to the system. The calls above keep none,
// so this is a hook that always succeeds on POSIX.
int FlushAll();

// The error number of the last failing call of this thread.
int LastError();

// Makes, for this user alone, every missing folder above `path` (the part before its last `\`, the
// whole chain from the top down); 0 or -1. A path without a `\` gives -1; so does a parent that
// equals the path.
int MakeFolderOfPath(const std::string& path);

}  // namespace zvrsit::platform
