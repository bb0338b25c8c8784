#include "platform/nearby_files.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>

#include "platform/file.h"
#include "support/file_fault.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

using test::TempFolder;

// What the file begins with, or a text for why it cannot be opened.
std::string Content(NearbyFiles& files, const std::string& path) {
  const int fd = files.OpenToRead(path);
  if (fd < 0) return LastError() == ENOENT ? "none" : "error";
  std::array<char, 16> bytes;
  const std::int64_t count = Read(fd, bytes.data(), bytes.size());
  Close(fd);
  return {bytes.data(), static_cast<std::size_t>(count)};
}

TEST(NearbyFiles, FilesOfOneFolderAndOfOthersAreOpened) {
  const TempFolder folder;
  for (const char* name : {"x/a", "x/b", "x/c", "x/sub/a", "xx/a"}) folder.write(name, name);
  NearbyFiles files;
  for (const char* name : {"x/a", "x/b", "x/c", "xx/a", "x/a", "x/b", "x/sub/a", "x/c"}) {
    EXPECT_EQ(Content(files, folder.path(name)), name);
  }
  for (const char* name : {"x/a", "x/b", "x/none", "none/a", "none/b", "x/b"}) {
    EXPECT_EQ(Content(files, folder.path(name)), folder.has(name) ? name : "none");
  }
  EXPECT_LT(files.OpenToRead(""), 0);
  EXPECT_LT(files.OpenToRead(folder.path("x/a") + std::string("\0", 1)), 0);
}

TEST(NearbyFiles, EachOpenIsOneCallThatMayFail) {
  const TempFolder folder;
  folder.write("a", "a");
  NearbyFiles files;
  for (int i = 0; i < 4; ++i) {
    test::FileFault fault(1);
    EXPECT_LT(files.OpenToRead(folder.path("a")), 0);
    EXPECT_EQ(LastError(), EIO);
    EXPECT_EQ(Content(files, folder.path("a")), "a");
  }
}

#if !defined(_WIN32)  // which lets nobody rename a folder with open files

TEST(NearbyFiles, AReplacedFolderGivesWhatTheOldOneDoesNotBear) {
  const TempFolder folder;
  folder.write("x/a", "old a");
  folder.write("x/b", "old b");
  NearbyFiles files;
  EXPECT_EQ(Content(files, folder.path("x/a")), "old a");
  EXPECT_EQ(Content(files, folder.path("x/b")), "old b");
  std::filesystem::rename(folder.native("x"), folder.native("y"));
  folder.write("x/a", "new a");
  folder.write("x/c", "new c");
  EXPECT_EQ(Content(files, folder.path("x/c")), "new c");
  files.Forget();
  EXPECT_EQ(Content(files, folder.path("x/a")), "new a");
  EXPECT_EQ(Content(files, folder.path("x/b")), "none");
}

// What is taken from the current folder, and a path that is too long although the way there is not.
TEST(NearbyFiles, APathMeansWhatItMeansToEveryCall) {
  const TempFolder folder;
  folder.write("x/a", "a");
  folder.write("y/x/a", "another");
  const std::filesystem::path before = std::filesystem::current_path();
  NearbyFiles files;
  for (const char* from : {".", "y", "."}) {
    std::filesystem::current_path(folder.native(from));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Content(files, "x\\a"), *from == 'y' ? "another" : "a");
  }
  std::filesystem::current_path(before);
  const std::string longWay = folder.path("x").append(4094 - folder.path("x").size(), '\\');
  for (int i = 0; i < 3; ++i) EXPECT_EQ(Content(files, longWay + "a"), "a") << i;
  EXPECT_EQ(Content(files, longWay + "\\a"), "error");
}

#endif

}  // namespace
}  // namespace zvrsit::platform
