#include "platform/file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/native_path.h"
#include "support/code_page_scope.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

using test::CodePageScope;
using test::TempFolder;

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
  ASSERT_TRUE(WriteAll(path, kOpenDatabase, "twelve bytes"));
  struct stat status;
  ASSERT_EQ(::stat(folder.native("a.db").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  ASSERT_TRUE(WriteAll(path, kOpenDatabase, "TWELVE"));
  EXPECT_EQ(folder.read("a.db"), "TWELVE bytes");
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
  ASSERT_EQ(::pipe(ends), 0);
  const std::string bytes(1 << 20, 'x');
  const pid_t child = ::fork();
  if (child == 0) {
    ::close(ends[0]);
    const bool all = Write(ends[1], bytes.data(), bytes.size()) == 1 << 20;
    ::_exit(all ? 0 : 1);
  }
  ::close(ends[1]);
  std::string got(bytes.size() + 1, '\0');
  EXPECT_EQ(Read(ends[0], got.data(), got.size()), 1 << 20);
  ::close(ends[0]);
}

TEST(File, AFifoWithoutAWriterDoesNotHang) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo(folder.native("pipe").c_str(), 0600), 0);
  const int fd = Open(folder.path("pipe"), kOpenReadOnly);
  char byte;
  EXPECT_EQ(Read(fd, &byte, 1), 0);
  Close(fd);
}

TEST(File, StatTellsKindsAndClampsWhatDoesNotFit) {
  const TempFolder folder;
  FileStat status;
  ASSERT_EQ(Stat(folder.path(), status), 0);
  EXPECT_TRUE(status.isFolder());
  EXPECT_FALSE(status.isRegular());
  folder.write("big", "");
  ASSERT_EQ(::truncate(folder.native("big").c_str(), 0x180000000), 0);
  const timespec times[] = {{-5, 0}, {0x90000000, 7}};
  ASSERT_EQ(::utimensat(AT_FDCWD, folder.native("big").c_str(), times, 0), 0);
  ASSERT_EQ(Stat(folder.path("big"), status), 0);
  EXPECT_TRUE(status.isRegular());
  EXPECT_EQ(status.size, 0xFFFFFFFE);
  EXPECT_EQ(status.modificationTime, 0x7FFFFFFF);
  EXPECT_EQ(status.accessTime, -5);
  EXPECT_EQ(status.modificationNanoseconds, 0x90000000LL * 1000000000 + 7);
  EXPECT_EQ(Stat(folder.path("none"), status), -1);
  EXPECT_EQ(Stat(folder.path("big") + std::string("\0x", 2), status), -1);
}

TEST(File, RenameReplacesAndUnlinkRemoves) {
  const TempFolder folder;
  folder.write("a", "new");
  folder.write("b", "old");
  EXPECT_EQ(Rename(folder.path("a"), folder.path("b")), 0);
  EXPECT_EQ(folder.read("b"), "new");
  EXPECT_EQ(Rename(folder.path("a"), folder.path("b")), -1);
  EXPECT_EQ(Unlink(folder.path("b")), 0);
  EXPECT_EQ(Unlink(folder.path("b")), -1);
  EXPECT_EQ(LastError(), ENOENT);
}

TEST(MakeFolderOfPath, MakesTheWholeChainAboveTheLastSeparator) {
  const TempFolder folder;
  EXPECT_EQ(MakeFolderOfPath(folder.path("x/y/z/file")), 0);
  EXPECT_TRUE(folder.has("x/y/z"));
  EXPECT_FALSE(folder.has("x/y/z/file"));
  EXPECT_EQ(MakeFolderOfPath(folder.path("x/y/z/file")), 0);
  EXPECT_EQ(MakeFolderOfPath(folder.path("w") + "\\"), 0);
  EXPECT_TRUE(folder.has("w"));
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

TEST(FileFault, EachCallOfAnOperationFailsInItsTurn) {
  const TempFolder folder;
  int result = 0;
  std::vector<FileCall> failed;
  std::vector<int> results;
  const int calls = test::FailEachCall([&] { std::filesystem::remove_all(folder.native("a")); },
                                       [&] { result = MakeFolderOfPath(folder.path("a/b/c")); },
                                       [&](const test::FailedRun& run) {
                                         failed.push_back(run.failedCall);
                                         results.push_back(result);
                                         EXPECT_EQ(folder.has("a/b"), result == 0);
                                       });
  EXPECT_EQ(calls, 5);
  using enum FileCall;
  EXPECT_EQ(failed, (std::vector{kStat, kStat, kStat, kMakeFolder, kMakeFolder}));
  // A missing folder that cannot be looked at is made all the same.
  EXPECT_EQ(results, (std::vector{0, 0, -1, -1, -1}));
  EXPECT_EQ(result, 0);
}

TEST(FileFault, AFailedCloseClosesAllTheSame) {
  const TempFolder folder;
  const int fd = Open(folder.path("a"), kOpenDatabase);
  {
    test::FileFault fault(1);
    EXPECT_EQ(Close(fd), -1);
    EXPECT_EQ(LastError(), EIO);
  }
  EXPECT_EQ(::close(fd), -1);
}

TEST(NativePath, SeparatorsAreSwappedAndDrivesLookedUp) {
  std::string native, path;
  ASSERT_TRUE(ToNativePath("\\home\\ann\\a b.htm", native));
  EXPECT_EQ(native, "/home/ann/a b.htm");
  ASSERT_TRUE(FromNativePath(native, path));
  EXPECT_EQ(path, "\\home\\ann\\a b.htm");
  EXPECT_FALSE(FromNativePath("/home/a\\b", path));
  EXPECT_FALSE(ToNativePath("C:\\a", native));
  SetDriveFolder('c', "/mnt/c");
  ASSERT_TRUE(ToNativePath("C:\\sites\\a", native));
  EXPECT_EQ(native, "/mnt/c/sites/a");
  ASSERT_TRUE(ToNativePath("c:\\", native));
  EXPECT_EQ(native, "/mnt/c/");
  SetDriveFolder('C', "");
  EXPECT_FALSE(ToNativePath("C:\\a", native));
}

// U+8868 in code page 932 is 95 5C: its trail byte is no separator.
TEST(NativePath, DoubleByteCharactersStayWhole) {
  const CodePageScope page(932);
  std::string native, path;
  ASSERT_TRUE(ToNativePath("\\a\\\x95\\.htm", native));
  EXPECT_EQ(native, "/a/\x95\\.htm");
  ASSERT_TRUE(FromNativePath(native, path));
  EXPECT_EQ(path, "\\a\\\x95\\.htm");
  const TempFolder folder;
  EXPECT_EQ(MakeFolderOfPath(folder.path() + "\\\x95\\x\\f"), 0);
  EXPECT_TRUE(folder.has("\x95\\x"));
}

}  // namespace
}  // namespace zvrsit::platform
