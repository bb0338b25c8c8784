#include "legacy/sit_block_db.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "legacy/sit_error.h"
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

TEST(BlockFile, AFileOfAnotherKindIsRefused) {
  TempFolder folder;
  SitBlockDB db;
  db.Open(folder.path("url"), SitBlockDB::kUrlFile, 5);
  EXPECT_EQ(db.Open(folder.path("url"), SitBlockDB::kJunkFile, 5), -1);
  EXPECT_FALSE(db.IsOpen());
  folder.write("text", "no database at all, but long enough");
  EXPECT_EQ(db.Open(folder.path("text"), SitBlockDB::kUrlFile, 5), -1);
  EXPECT_EQ(db.Add(Entry("x")), -1);
  EXPECT_EQ(folder.read("text"), "no database at all, but long enough");
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

}  // namespace
}  // namespace zvrsit::test
