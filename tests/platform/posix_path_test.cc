// Paths of POSIX, and a kind of file that only it has.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "platform/file.h"
#include "platform/native_path.h"
#include "support/code_page_scope.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

using test::CodePageScope;
using test::TempFolder;

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

TEST(File, AFifoWithoutAWriterDoesNotHang) {
  const TempFolder folder;
  ASSERT_EQ(::mkfifo(folder.native("pipe").c_str(), 0600), 0);
  const int fd = Open(folder.path("pipe"), kOpenReadOnly);
  char byte;
  EXPECT_EQ(Read(fd, &byte, 1), 0);
  Close(fd);
}

}  // namespace
}  // namespace zvrsit::platform
