#include "legacy/sit_str_db.h"

#include <gtest/gtest.h>

#include "legacy/sit_id_set.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

TEST(StringFile, EntriesAreStoredByteForByte) {
  TempFolder folder;
  SitStrDB db;
  ASSERT_EQ(db.Open(folder.path("strings")), 0);
  EXPECT_EQ(db.Add("ab", 0), 0);
  EXPECT_EQ(db.Add("", 0), 1);
  EXPECT_EQ(db.Add("xyz", 7), 7);
  EXPECT_EQ(db.Delete(0), 0);
  EXPECT_EQ(db.Delete(0), -1);
  EXPECT_EQ(db.Add(nullptr, 0), -1);
  ASSERT_EQ(db.Close(), 0);
  // Deleting "ab" leaves the live bytes (3 + 1 + 4) as they were.
  EXPECT_EQ(ToHex(folder.read("strings")), ToHex(FromHex("08000000 03000000"
                                                         "08000000 ffffffff 03000000 2a2a00"
                                                         "17000000 01000000 01000000 00"
                                                         "24000000 07000000 04000000 78797a00")));
  ASSERT_EQ(db.Open(folder.path("strings")), 0);
  EXPECT_EQ(db.Get(0), std::nullopt);
  EXPECT_EQ(db.Get(1), "");
  EXPECT_EQ(db.Get(7), "xyz");
  EXPECT_EQ(db.Get(-1), std::nullopt);
  EXPECT_EQ(db.Add("new", 0), 0) << "the id of the deleted string is free";
}

TEST(StringFile, UpdateStaysInPlaceWhenItFitsAndElseMovesToTheEnd) {
  TempFolder folder;
  SitStrDB db;
  db.Open(folder.path("strings"));
  db.Add("long", 0);
  db.Add("second", 0);
  EXPECT_EQ(db.Update(0, "x"), 0);
  EXPECT_EQ(db.Get(0), "x");
  EXPECT_EQ(db.Update(1, "much longer"), 1);
  EXPECT_EQ(db.Get(1), "much longer");
  EXPECT_EQ(db.Update(5, "unknown"), -1);
  db.Close();
  const std::string bytes = folder.read("strings");
  EXPECT_EQ(ToHex(bytes.substr(8, 17)), ToHex(FromHex("08000000 00000000 05000000 78006e6700")))
      << "a shorter text keeps the length, and bytes of the old one follow its NUL";
  EXPECT_EQ(ToHex(bytes.substr(8 + 17 + 19 + 4, 4)), "01 00 00 00") << "the id at the end";
}

// The counters of the header are written on closing.
TEST(StringFile, ACrashBeforeClosingLosesNoString) {
  TempFolder folder;
  SitStrDB db;
  db.Open(folder.path("strings"));
  db.Add("ab", 0);
  folder.write("crashed", folder.read("strings"));
  SitStrDB after;
  after.Open(folder.path("crashed"));
  EXPECT_EQ(after.liveBytes(), 3);
  EXPECT_EQ(after.Add("xyz", 0), 1);
  EXPECT_EQ(after.Get(0), "ab");
  EXPECT_EQ(after.liveBytes(), 7);
}

TEST(StringFile, ADamagedEntryIsSteppedOverAndNothingIsOverwritten) {
  TempFolder folder;
  {
    SitStrDB db;
    db.Open(folder.path("strings"));
    for (const char* text : {"first", "second", "third"}) db.Add(text, 0);
  }
  const std::string whole = folder.read("strings");
  constexpr std::size_t kSecond = 8 + 12 + 6;
  const struct {
    const char* what;
    std::size_t offset;
    std::string word;  // in the place of what is there
    std::size_t size;
  } rows[] = {
      {"a length that is negative", kSecond + 8, Word(0xFFFFFFF0), whole.size()},
      {"a length behind the end", kSecond + 8, Word(0x01000007), whole.size()},
      {"a length that leads into another entry", kSecond + 8, Word(3), whole.size()},
      {"the last entry cut off", 0, "", whole.size() - 3},
      {"its head cut off", 0, "", whole.size() - 10},
  };
  for (const auto& row : rows) {
    std::string damaged = whole.substr(0, row.size);
    damaged.replace(row.offset, row.word.size(), row.word);
    folder.write("strings", damaged);
    SitStrDB db;
    db.Open(folder.path("strings"));
    EXPECT_FALSE(db.IsWhole()) << row.what;
    EXPECT_EQ(db.Get(0), "first") << row.what;
    if (row.size == whole.size()) {
      EXPECT_EQ(db.Get(2), "third") << row.what;
    }
    const int added = db.Add("new", 50);
    EXPECT_EQ(db.Pack(true), -1) << row.what;
    db.Close();
    EXPECT_EQ(folder.read("strings").substr(8, row.size - 8), damaged.substr(8)) << row.what;
    db.Open(folder.path("strings"));
    EXPECT_EQ(db.Get(added), "new") << row.what;
  }
}

TEST(StringFile, PackingKeepsIdsAndDropsDeadBytes) {
  TempFolder folder;
  SitStrDB db;
  db.Open(folder.path("strings"));
  for (int i = 0; i < 250; ++i) EXPECT_EQ(db.Add(("text " + std::to_string(i)).c_str(), 0), i);
  for (int i = 0; i < 250; i += 2) db.Delete(i);
  ASSERT_EQ(db.Pack(true), 0);
  EXPECT_EQ(db.deadBytes(), 0);
  EXPECT_EQ(db.Get(1), "text 1");
  EXPECT_EQ(db.Get(249), "text 249");
  EXPECT_EQ(db.Get(2), std::nullopt);
  EXPECT_EQ(db.Add("again", 0), 0);
  EXPECT_FALSE(folder.has("strings_pack"));
}

// The order in which ids are looked for: the wanted one, its block, the other blocks, a new one.
TEST(SitIdSet, LooksForAFreeIdInOrder) {
  SitIdSet ids;
  EXPECT_EQ(ids.Allocate(250), 250);
  EXPECT_EQ(ids.Allocate(250), 200) << "the first free id of its block";
  EXPECT_EQ(ids.Allocate(205), 205);
  for (int i = 200; i < 300; ++i) ids.SetUsed(i);
  EXPECT_EQ(ids.Allocate(250), 300) << "no other block is there";
  EXPECT_EQ(ids.Allocate(0), 0);
  EXPECT_EQ(ids.Allocate(250), 1) << "the lowest block that has room";
  ids.SetFree(222);
  EXPECT_EQ(ids.Allocate(299), 222);
  EXPECT_EQ(ids.Allocate(2147483647), 2147483647);
  for (int i = 2147483600; i > 0 && i < 2147483647; ++i) ids.SetUsed(i);
  EXPECT_EQ(ids.Allocate(2147483647), 2) << "ids do not wrap";
  EXPECT_EQ(ids.Allocate(-1), -1);
}

}  // namespace
}  // namespace zvrsit::test
