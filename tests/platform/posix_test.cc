// Folders and paths of POSIX, and a kind of file that only it has.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "platform/file.h"
#include "platform/folder_search.h"
#include "platform/native_path.h"
#include "support/code_page_scope.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

using test::CodePageScope;
using test::TempFolder;
using Names = std::vector<std::string>;

Names Find(const std::string& pattern) {
  Names names;
  FindData found;
  const FindHandle handle = FindFirst(pattern, found);
  if (!handle) return names;
  do {
    names.push_back(found.name);
  } while (FindNext(handle, found));
  FindClose(handle);
  return names;
}

TEST(FolderSearch, ListsEveryEntryInBytewiseOrder) {
  const TempFolder folder;
  for (const char* name : {"b.htm", "B.htm", "a#1.htm", "!x", "\xC3\xA4.gif", "has\\backslash"}) {
    folder.write(name, "");
  }
  folder.makeFolder("sub");
  ASSERT_EQ(::symlink("nowhere", folder.native("dangling").c_str()), 0);
  EXPECT_EQ(Find(folder.path() + "\\*.*"), (Names{"!x", ".", "..", "B.htm", "a#1.htm", "b.htm",
                                                  "dangling", "sub", "\xC3\xA4.gif"}));
  EXPECT_EQ(Find(folder.path("sub") + "\\*.*"), (Names{".", ".."}));
}

TEST(FolderSearch, FindsNothingInWhatIsNoFolder) {
  const TempFolder folder;
  folder.write("file", "");
  EXPECT_EQ(Find(folder.path("none") + "\\*.*"), Names{});
  EXPECT_EQ(Find(folder.path("file") + "\\*.*"), Names{});
  EXPECT_EQ(Find("Q:\\*.*"), Names{});
  EXPECT_EQ(Find(folder.path() + "\\"), Names{});
  EXPECT_EQ(Find(""), Names{});
  FindData found;
  EXPECT_FALSE(FindNext(nullptr, found));
  FindClose(nullptr);
}

TEST(FolderSearch, ANameIsFoundAsItIsSpelledOnDisk) {
  const TempFolder folder;
  for (const char* name : {"Index.HTM", "INDEX.htm", "x.GIF", "X.GIF", "*", "12"}) {
    folder.write(name, "");
  }
  ASSERT_EQ(::symlink("nowhere", folder.native("Dangling").c_str()), 0);
  ASSERT_EQ(::link(folder.native("12").c_str(), folder.native("Twin").c_str()), 0);
  ASSERT_EQ(::link(folder.native("12").c_str(), folder.native("twin").c_str()), 0);
  const struct {
    const char* asked;
    Names found;
  } kCases[] = {
      {"Index.HTM", {"Index.HTM"}},
      {"index.htm", {"INDEX.htm"}},
      {"x.GIF", {"x.GIF"}},
      {"x.gif", {"X.GIF"}},
      {"*", {"*"}},
      {"?", {}},
      {"12", {"12"}},
      {"13", {}},
      {"dangling", {"Dangling"}},
      {"twin", {"twin"}},
      {"Twin", {"Twin"}},
      {"TWIN", {"Twin"}},
      {"none", {}},
      {"none/x", {}},
  };
  for (const auto& c : kCases) EXPECT_EQ(Find(folder.path() + "\\" + c.asked), c.found) << c.asked;
}

TEST(FolderSearch, ATrailByteIsNeitherSeparatorNorLetter) {
  const test::CodePageScope page(932);
  const TempFolder folder;
  folder.write("\x95\\.htm", "");
  EXPECT_EQ(Find(folder.path() + "\\*.*"), (Names{".", "..", "\x95\\.htm"}));
  EXPECT_EQ(Find(folder.path() + "\\\x95\\.HTM"), Names{"\x95\\.htm"});
  folder.write("\203a.htm", "");
  EXPECT_EQ(Find(folder.path() + "\\\203A.htm"), Names{});  // another character
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
