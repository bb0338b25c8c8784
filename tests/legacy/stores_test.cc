// The files of entries and of strings, and the numbers that they hand out.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "legacy/sit_block_db.h"
#include "legacy/sit_error.h"
#include "legacy/sit_id_set.h"
#include "legacy/sit_str_db.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

SitUrlRec Entry(const std::string& key, const std::string& title = "") {
  SitUrlRec record;
  record.key = key;
  record.title = title;
  return record;
}

TEST(BlockFile, DeletedEntriesAreToldFromTheEnd) {
  TempFolder folder;
  SitBlockDB db;
  db.Open(folder.path("url"), SitBlockDB::kUrlFile, SitBlockDB::kBuckets);
  for (const char* key : {"a", "b", "c"}) db.Add(Entry(key));
  EXPECT_EQ(db.Delete(1), kSitOk);
  SitUrlRec record;
  EXPECT_EQ(db.Read(1, record), kSitNotFound);
  EXPECT_EQ(db.Read(3, record), kSitPastEnd);
  EXPECT_EQ(db.Read(-1, record), kSitPastEnd);
  EXPECT_EQ(db.Add(Entry("a")), -1) << "the key is taken";
  EXPECT_EQ(db.Add(Entry("")), -1);
  EXPECT_EQ(db.Add(Entry("b")), 3) << "no number is used twice";
  EXPECT_EQ(db.Find("A"), -1);
  ASSERT_EQ(db.Pack(true), 3);
  EXPECT_EQ(db.State(1), kSitNotFound);
  EXPECT_EQ(db.Find("c"), 2);
  EXPECT_EQ(db.Find("b"), 3);
  EXPECT_EQ(db.State(4), kSitPastEnd);
}

// Against a map, through rewrites that fit and that move, deletions, packing and reopening.
TEST(BlockFile, HoldsWhatAMapWouldHold) {
  TempFolder folder;
  SitBlockDB db;
  db.Open(folder.path("url"), SitBlockDB::kUrlFile, 2);
  std::map<int, SitUrlRec> expected;
  std::mt19937 random(7);
  for (int i = 0; i < 3000; ++i) {
    const int index =
        expected.empty()
            ? -1
            : std::next(expected.begin(), static_cast<int>(random() % expected.size()))->first;
    const unsigned action = random() % 100;
    if (action < 50 || index < 0) {
      const SitUrlRec record = Entry("key" + std::to_string(i), std::string(random() % 60, 't'));
      expected[db.Add(record)] = record;
    } else if (action < 80) {
      SitUrlRec& record = expected[index];
      record.title.assign(random() % 200, 'u');
      if (random() % 4 == 0) record.key += "'";
      ASSERT_EQ(db.Write(index, record), kSitOk);
    } else if (action < 97) {
      ASSERT_EQ(db.Delete(index), kSitOk);
      expected.erase(index);
    } else if (action < 99) {
      ASSERT_EQ(db.Pack(true), static_cast<int>(expected.size()));
    } else {
      db.Close();
      ASSERT_EQ(db.Open(folder.path("url"), SitBlockDB::kUrlFile, 2), 0);
    }
  }
  ASSERT_EQ(db.LiveNum(), static_cast<int>(expected.size()));
  for (const auto& [index, record] : expected) {
    SitUrlRec stored;
    ASSERT_EQ(db.Read(index, stored), kSitOk);
    ASSERT_EQ(stored, record);
    ASSERT_EQ(db.Find(record.key), index);
  }
}

// Keys whose ELF hashes are all equal.
TEST(ElfKeyIndex, KeysThatCollideOnPurposeStayFast) {
  ElfKeyIndex keys;
  keys.Reset(10067);
  const auto key = [](int i) {
    // "\x01\x20" and "\x02\x10" add the same to the hash.
    std::string text;
    for (int bit = 0; bit < 17; ++bit) text += (i >> bit & 1) != 0 ? "\x01\x20" : "\x02\x10";
    return text;
  };
  constexpr int kKeys = 100000;
  for (int i = 0; i < kKeys; ++i) keys.Insert(i, key(i));
  for (int i = 0; i < kKeys; ++i) ASSERT_EQ(keys.Find(key(i)), i);
  for (int i = 0; i < kKeys; i += 2) keys.Erase(i);
  EXPECT_EQ(keys.Find(key(4)), ElfKeyIndex::kNone);
  EXPECT_EQ(keys.Find(key(5)), 5);
}

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
      {"all of it cut off", 0, "", whole.size() - 18},
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
