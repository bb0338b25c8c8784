#include "platform/folder_search.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "platform/file.h"
#include "support/code_page_scope.h"
#include "support/temp_folder.h"

namespace zvrsit::platform {
namespace {

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

TEST(FolderSearch, TheStatusOfALinkIsThatOfWhatItLeadsTo) {
  const TempFolder folder;
  folder.write("target", "12345");
  folder.makeFolder("links");
  ASSERT_EQ(::symlink("../target", folder.native("links/a").c_str()), 0);
  ASSERT_EQ(::symlink("nowhere", folder.native("links/b").c_str()), 0);
  FindData found;
  const FindHandle search = FindFirst(folder.path("links") + "\\*.*", found);
  ASSERT_NE(search, nullptr);
  FileStat status;
  EXPECT_EQ(StatFound(search, {"a"}, status), 0);
  EXPECT_EQ(status.size, 5u);
  EXPECT_EQ(StatFound(search, {"b"}, status), -1);
  FindClose(search);
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

}  // namespace
}  // namespace zvrsit::platform
