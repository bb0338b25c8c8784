// Files of Windows: what its calls do where other systems differ, and what must not go wrong there.
#include <gtest/gtest.h>
#include <windows.h>

#include <cerrno>
#include <ctime>
#include <vector>

#include "platform/code_page.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "support/code_page_scope.h"
#include "support/temp_folder.h"

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

TEST(WindowsFile, OpenFlagsCreateKeepOrTruncateWithoutTranslation) {
  const TempFolder folder;
  const std::string path = folder.path("a.db");
  EXPECT_EQ(Open(path, kOpenExisting), -1);
  EXPECT_EQ(LastError(), ENOENT);
  int fd = Open(path, kOpenDatabase);
  EXPECT_EQ(Write(fd, "1\n2\x1A\r\n", 7), 7);
  EXPECT_EQ(Seek(fd, 0), 0);
  char buffer[16] = {};
  EXPECT_EQ(Read(fd, buffer, sizeof buffer), 7);
  EXPECT_EQ(Close(fd), 0);
  EXPECT_EQ(folder.read("a.db"), std::string("1\n2\x1A\r\n\0", 7));
  fd = Open(path, kOpenPack);
  EXPECT_EQ(Close(fd), 0);
  EXPECT_EQ(folder.read("a.db"), "");
}

TEST(WindowsFile, StatTellsKindsTimesAndIdentity) {
  const TempFolder folder;
  folder.write("a", "12345");
  folder.write("b", "");
  FileStat a, b, again, dir;
  ASSERT_EQ(Stat(folder.path("a"), a), 0);
  ASSERT_EQ(Stat(folder.path("b"), b), 0);
  ASSERT_EQ(Stat(folder.path("A"), again), 0);
  ASSERT_EQ(Stat(folder.path() + "\\", dir), 0);
  EXPECT_TRUE(a.isRegular());
  EXPECT_EQ(a.size, 5u);
  EXPECT_TRUE(dir.isFolder());
  EXPECT_EQ(a.file, again.file);
  EXPECT_NE(a.file, b.file);
  EXPECT_NEAR(static_cast<double>(a.modificationTime), static_cast<double>(std::time(nullptr)), 60);
  EXPECT_EQ(a.modificationNanoseconds / 1'000'000'000, a.modificationTime);
  EXPECT_EQ(Stat(folder.path("none"), a), -1);
  EXPECT_EQ(Stat("Q:\\a", a), -1);
}

TEST(WindowsFile, WhatTheSystemRefusesIsMinusOneAndLosesNothing) {
  const TempFolder folder;
  const std::string longPath = folder.path(std::string(300, 'x'));
  FileStat status;
  EXPECT_EQ(Open(longPath, kOpenDatabase), -1);
  EXPECT_EQ(Stat(longPath, status), -1);
  EXPECT_EQ(MakeFolder(longPath), -1);
  EXPECT_EQ(Open("Q:\\a.db", kOpenDatabase), -1);
  EXPECT_EQ(MakeFolderOfPath("Q:\\a\\b"), -1);

  folder.write("read only", "kept");
  ::SetFileAttributesA(folder.native("read only").c_str(), FILE_ATTRIBUTE_READONLY);
  // An emulated Windows whose user is root refuses root nothing.
  const HANDLE probe = ::CreateFileA(folder.native("read only").c_str(), GENERIC_WRITE, 0, nullptr,
                                     OPEN_EXISTING, 0, nullptr);
  if (probe == INVALID_HANDLE_VALUE) {
    EXPECT_EQ(Open(folder.path("read only"), kOpenExisting), -1);
    EXPECT_EQ(LastError(), EACCES);
  }
  ::CloseHandle(probe);
  EXPECT_EQ(Unlink(folder.path("read only")), -1);
  EXPECT_EQ(folder.read("read only"), "kept");
  ::SetFileAttributesA(folder.native("read only").c_str(), FILE_ATTRIBUTE_NORMAL);

  folder.write("locked", "kept");
  const HANDLE lock = ::CreateFileA(folder.native("locked").c_str(), GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(lock, INVALID_HANDLE_VALUE);
  EXPECT_EQ(Open(folder.path("locked"), kOpenPack), -1);
  EXPECT_EQ(Unlink(folder.path("locked")), -1);
  ::CloseHandle(lock);
  EXPECT_EQ(folder.read("locked"), "kept");

  folder.write("other", "old");
  EXPECT_EQ(Rename(folder.path("locked"), folder.path("other")), -1);
  EXPECT_EQ(folder.read("other"), "old");
}

TEST(WindowsFile, ASearchTellsTheSpellingOnDisk) {
  const TempFolder folder;
  folder.write("Index.HTM", "");
  EXPECT_EQ(Find(folder.path("index.htm")), std::vector<std::string>{"Index.HTM"});
  EXPECT_EQ(Find(folder.path() + "\\*.*").size(), 3u);
  EXPECT_TRUE(Find("Q:\\*.*").empty());
  EXPECT_TRUE(Find(folder.path("none") + "\\*.*").empty());
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
  EXPECT_EQ(Unlink(table), 0);
}

}  // namespace
}  // namespace zvrsit::platform
