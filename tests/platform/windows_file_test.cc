// Files of Windows: what its calls do where other systems differ, and what must not go wrong there.
#include <gtest/gtest.h>
#include <windows.h>

#include <cerrno>
#include <vector>

#include "platform/code_page.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "platform/native_path.h"
#include "support/code_page_scope.h"
#include "support/temp_folder.h"
#include "support/windows_lock.h"

namespace zvrsit::platform {
namespace {

using test::TempFolder;

std::vector<std::string> Find(const std::string& pattern) {
  std::vector<std::string> names;
  FindData found;
  const FindHandle search = FindFirst(pattern, found);
  for (bool more = search != nullptr; more; more = FindNext(search, found)) {
    names.push_back(found.name);
  }
  FindClose(search);
  return names;
}

TEST(WindowsFile, PathsReachTheSystemAsTheyAre) {
  std::string native, path;
  for (const std::string text : {"C:\\a\\b.htm", "c:/a", "\\\\server\\share\\\x95\\", "Q:x", ""}) {
    ASSERT_TRUE(ToNativePath(text, native));
    EXPECT_EQ(native, text);
    ASSERT_TRUE(FromNativePath(text, path));
    EXPECT_EQ(path, text);
  }
  EXPECT_FALSE(ToNativePath(std::string("C:\\a\0b", 6), native));
}

// A name too long for any system, in a folder that is there, and a drive that is not there.
TEST(WindowsFile, NoFileIsMadeWhereThereCanBeNone) {
  const TempFolder folder;
  const std::string longName = folder.path(std::string(300, 'y'));
  for (const std::string& path : {longName, std::string("Q:\\a")}) {
    FileStat status;
    EXPECT_EQ(Open(path, kOpenDatabase), -1);
    EXPECT_EQ(Open(path, kOpenReadOnly), -1);
    EXPECT_EQ(LastError(), ENOENT);
    EXPECT_EQ(Stat(path, status), -1);
    EXPECT_EQ(MakeFolder(path), -1);
    EXPECT_EQ(Unlink(path), -1);
    EXPECT_EQ(Rename(path, path + "x"), -1);
    EXPECT_EQ(Replace(path, path + "x"), -1);
    EXPECT_FALSE(IsLink(path));
    EXPECT_TRUE(Find(path).empty());
    EXPECT_TRUE(Find(path + "\\*.*").empty());
  }
  EXPECT_EQ(MakeFolderOfPath("Q:\\a\\b"), -1);
  EXPECT_EQ(MakeFolderOfPath(longName + "\\z"), -1);
}

TEST(WindowsFile, ALockedFileKeepsWhatItHolds) {
  const TempFolder folder;
  folder.write("a", "kept");
  folder.write("other", "old");
  {
    const test::Lock lock(folder.native("a"));
    ASSERT_TRUE(lock.holds());
    for (const int flags : {kOpenDatabase, kOpenExisting, kOpenPack, kOpenReadOnly}) {
      EXPECT_EQ(Open(folder.path("a"), flags), -1);
      EXPECT_EQ(LastError(), EACCES);
    }
    EXPECT_EQ(Unlink(folder.path("a")), -1);
    EXPECT_EQ(Replace(folder.path("other"), folder.path("a")), -1);
    FileStat status;
    EXPECT_EQ(Stat(folder.path("a"), status), 0);
    EXPECT_EQ(status.size, 4u);
  }
  EXPECT_EQ(folder.read("a"), "kept");
  EXPECT_EQ(Rename(folder.path("a"), folder.path("other")), -1);
  EXPECT_EQ(folder.read("other"), "old");
}

TEST(WindowsFile, ASearchTellsTheSpellingOnDisk) {
  const TempFolder folder;
  folder.write("Index.HTM", "");
  EXPECT_EQ(Find(folder.path("index.htm")), std::vector<std::string>{"Index.HTM"});
  EXPECT_EQ(Find(folder.path() + "\\*.*"), (std::vector<std::string>{".", "..", "Index.HTM"}));
  EXPECT_TRUE(Find(folder.path("Index.HTM") + "\\*.*").empty());
  EXPECT_TRUE(Find(folder.path("none") + "\\*.*").empty());
  EXPECT_TRUE(Find(folder.path("*")).empty()) << "a name in a link, no pattern";
  EXPECT_TRUE(Find(folder.path("Index.HT?")).empty());
  EXPECT_TRUE(Find("").empty());
  FindData found;
  EXPECT_FALSE(FindNext(nullptr, found));
  FindClose(nullptr);
}

// In Shift_JIS U+8868 is 95 5C and U+30BD 83 5C: trail bytes that look like separators.
TEST(WindowsFile, NamesInShiftJisReachTheSystemWhole) {
  if (::GetACP() != 932) GTEST_SKIP() << "the system's code page is " << ::GetACP() << ", not 932";
  const test::CodePageScope page(932);
  EXPECT_TRUE(::IsDBCSLeadByte(0x95));
  const TempFolder folder;
  const std::string table = folder.path() + "\\\x95\\\\\x83\\.htm";
  ASSERT_EQ(MakeFolderOfPath(table), 0);
  const int fd = Open(table, kOpenDatabase);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(Write(fd, "x", 1), 1);
  EXPECT_EQ(Close(fd), 0);
  const std::wstring wide =
      std::filesystem::path(folder.native()).wstring() + L"\\\u8868\\\u30BD.htm";
  EXPECT_NE(::GetFileAttributesW(wide.c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(Find(folder.path() + "\\\x95\\\\*.*"),
            (std::vector<std::string>{".", "..", "\x83\\.htm"}));
  EXPECT_EQ(Find(folder.path() + "\\\x95\\\\\x83\\.HTM"), std::vector<std::string>{"\x83\\.htm"});
  EXPECT_EQ(Unlink(table), 0);
  // The trail bytes of U+30A2 and U+30C2 are one letter in two cases: other characters all the
  // same.
  folder.write("\203A.htm", "");
  EXPECT_TRUE(Find(folder.path() + "\\\203a.htm").empty());
  EXPECT_EQ(Find(folder.path() + "\\\203A.HTM"), std::vector<std::string>{"\203A.htm"});
}

}  // namespace
}  // namespace zvrsit::platform
