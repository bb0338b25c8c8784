// File calls, as they are on every system.
#include "platform/file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "platform/folder_search.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

using test::TempFolder;

// What each system has its own calls for. Times are in nanoseconds since 1970.
#if defined(_WIN32)
bool OpenPipe(int (&ends)[2]) {
  return ::_pipe(ends, 4096, _O_BINARY) == 0;
}
FILETIME TimeOf(std::int64_t nanoseconds) {
  const std::int64_t ticks = 116'444'736'000'000'000 + nanoseconds / 100;
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
bool SetTimes(const std::string& native, std::int64_t, std::int64_t modification) {
  const HANDLE file =
      ::CreateFileA(native.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const FILETIME time = TimeOf(modification);
  const bool set = ::SetFileTime(file, nullptr, nullptr, &time) != 0;
  ::CloseHandle(file);
  return set;
}
#else
bool OpenPipe(int (&ends)[2]) {
  return ::pipe(ends) == 0;
}
timespec TimeOf(std::int64_t nanoseconds) {
  return {nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
}
bool SetTimes(const std::string& native, std::int64_t access, std::int64_t modification) {
  const timespec times[] = {TimeOf(access), TimeOf(modification)};
  return ::utimensat(AT_FDCWD, native.c_str(), times, 0) == 0;
}
#endif

// Opens, writes and closes; false when any of it fails.
bool WriteAll(const std::string& path, int flags, const std::string& bytes) {
  const int fd = Open(path, flags);
  if (fd < 0) return false;
  const auto size = static_cast<std::int64_t>(bytes.size());
  const bool written = Write(fd, bytes.data(), bytes.size()) == size;
  return Close(fd) == 0 && written;
}

TEST(File, OpenFlagsCreateKeepOrTruncate) {
  const TempFolder folder;
  const std::string path = folder.path("a.db");
  EXPECT_EQ(Open(path, kOpenExisting), -1);
  EXPECT_EQ(LastError(), ENOENT);
  ASSERT_TRUE(WriteAll(path, kOpenDatabase, "twelve\n\x1A\r\nbytes"));
#if !defined(_WIN32)
  struct stat status;
  ASSERT_EQ(::stat(folder.native("a.db").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
#endif
  ASSERT_TRUE(WriteAll(path, kOpenDatabase, "TWELVE"));
  EXPECT_EQ(folder.read("a.db"), "TWELVE\n\x1A\r\nbytes");
  ASSERT_TRUE(WriteAll(path, kOpenPack, "new"));
  EXPECT_EQ(folder.read("a.db"), "new");
  EXPECT_FALSE(WriteAll(path, kOpenReadOnly, "x"));
  EXPECT_EQ(LastError(), EBADF);
}

TEST(File, ReadsUpToTheEndAndSeeksAnywhere) {
  const TempFolder folder;
  folder.write("a", "0123456789");
  const int fd = Open(folder.path("a"), kOpenReadOnly);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(SeekEnd(fd), 10);
  EXPECT_EQ(Seek(fd, 7), 7);
  char buffer[8] = {};
  EXPECT_EQ(Read(fd, buffer, sizeof buffer), 3);
  EXPECT_STREQ(buffer, "789");
  EXPECT_EQ(Read(fd, buffer, sizeof buffer), 0);
  EXPECT_EQ(Seek(fd, -1), -1);
  FileStat status;
  EXPECT_EQ(StatOpen(fd, status), 0);
  EXPECT_EQ(status.size, 10u);
  EXPECT_EQ(Close(fd), 0);
  EXPECT_EQ(Close(fd), -1);
}

// A pipe hands its bytes over in small pieces.
TEST(File, PartialTransfersAreContinued) {
  int ends[2];
  ASSERT_TRUE(OpenPipe(ends));
  const std::string bytes(1 << 20, 'x');
  std::int64_t written = 0;
  std::thread writer([&] {
    written = Write(ends[1], bytes.data(), bytes.size());
    Close(ends[1]);
  });
  std::string got(bytes.size() + 1, '\0');
  EXPECT_EQ(Read(ends[0], got.data(), got.size()), 1 << 20);
  writer.join();
  EXPECT_EQ(written, 1 << 20);
  Close(ends[0]);
}

TEST(File, StatTellsKindsAndClampsWhatDoesNotFit) {
  const TempFolder folder;
  FileStat status;
  ASSERT_EQ(Stat(folder.path(), status), 0);
  EXPECT_TRUE(status.isFolder());
  EXPECT_FALSE(status.isRegular());
  folder.write("big", "");
  std::filesystem::resize_file(folder.native("big"), 0x180000000);
  constexpr std::int64_t kSecond = 1'000'000'000;
  ASSERT_TRUE(SetTimes(folder.native("big"), -5 * kSecond, 0x90000000 * kSecond + 700));
  ASSERT_EQ(Stat(folder.path("big"), status), 0);
  EXPECT_TRUE(status.isRegular());
  EXPECT_EQ(status.size, 0xFFFFFFFE);
  EXPECT_EQ(status.modificationTime, 0x7FFFFFFF);
#if !defined(_WIN32)
  EXPECT_EQ(status.accessTime, -5);  // Windows need not keep it
#endif
  EXPECT_EQ(status.modificationNanoseconds, 0x90000000 * kSecond + 700);
  EXPECT_EQ(Stat(folder.path("none"), status), -1);
  EXPECT_EQ(Stat(folder.path("big") + std::string("\0x", 2), status), -1);
}

TEST(File, AFoundEntryHasTheStatusOfItsPath) {
  const TempFolder folder;
  folder.write("sub/a", "12345");
  folder.makeFolder("sub/b");
  for (const std::string& pattern : {folder.path("sub") + "\\*.*", folder.path("sub/a")}) {
    FindData found;
    const FindHandle search = FindFirst(pattern, found);
    ASSERT_NE(search, nullptr);
    do {
      FileStat status, ofPath;
      ASSERT_EQ(StatFound(search, found, status), 0) << found.name;
      ASSERT_EQ(Stat(folder.path("sub/" + found.name), ofPath), 0);
      EXPECT_EQ(status.file, ofPath.file);
      EXPECT_EQ(status.mode, ofPath.mode);
      EXPECT_EQ(status.size, ofPath.size);
      EXPECT_EQ(status.modificationNanoseconds, ofPath.modificationNanoseconds);
      test::FileFault fault(1);
      EXPECT_EQ(StatFound(search, found, status), -1);
      EXPECT_EQ(LastError(), EIO);
    } while (FindNext(search, found));
    FileStat status;
    found.name = "none";
    EXPECT_EQ(StatFound(search, found, status), -1);
    EXPECT_EQ(LastError(), ENOENT);
    FindClose(search);
  }
}

TEST(File, RenameMovesReplaceReplacesAndUnlinkRemoves) {
  const TempFolder folder;
  folder.write("a", "new");
  folder.write("b", "old");
  EXPECT_EQ(Replace(folder.path("a"), folder.path("b")), 0);
  EXPECT_EQ(folder.read("b"), "new");
  EXPECT_EQ(Replace(folder.path("a"), folder.path("b")), -1);
  EXPECT_EQ(Rename(folder.path("a"), folder.path("b")), -1);
  EXPECT_EQ(LastError(), ENOENT);
  EXPECT_EQ(folder.read("b"), "new");
  EXPECT_EQ(Rename(folder.path("b"), folder.path("c")), 0);
  EXPECT_EQ(folder.read("c"), "new");
  EXPECT_EQ(Unlink(folder.path("c")), 0);
  EXPECT_EQ(Unlink(folder.path("c")), -1);
  EXPECT_EQ(LastError(), ENOENT);
}

TEST(MakeFolderOfPath, FailsWhereNoFolderCanBe) {
  const TempFolder folder;
  EXPECT_EQ(MakeFolderOfPath("name"), -1);
  EXPECT_EQ(MakeFolderOfPath(""), -1);
  EXPECT_EQ(MakeFolderOfPath("no such folder here\\name"), -1);
  EXPECT_EQ(MakeFolderOfPath("Q:\\a\\b"), -1);
  EXPECT_EQ(MakeFolderOfPath("\\name"), 0);
  folder.write("file", "");
  EXPECT_EQ(MakeFolderOfPath(folder.path("file/a/b")), -1);
}

}  // namespace
}  // namespace zvrsit::platform
