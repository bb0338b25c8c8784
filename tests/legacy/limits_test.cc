// Stores whose files are as long as they can be. They are sparse: little but their ends is on the
// disk.
#include <gtest/gtest.h>

#include <filesystem>

#include "legacy/sit_block_db.h"
#include "legacy/sit_error.h"
#include "legacy/sit_str_db.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

constexpr std::uint32_t kMostBytes = 0x7FFFFFFF;

// Puts `head` behind the bytes of a file, and as many zeros that `room` bytes are left.
void FillUp(const TempFolder& folder, const std::string& bytes, const std::string& head,
            std::uint32_t room) {
  folder.write("store", bytes + head);
  std::filesystem::resize_file(folder.native("store"), kMostBytes - room);
}

std::uint32_t BytesOf(const TempFolder& folder) {
  return static_cast<std::uint32_t>(std::filesystem::file_size(folder.native("store")));
}

TEST(LargestStore, OfTextsRefusesWhatHasNoRoom) {
  const TempFolder folder;
  constexpr std::uint32_t kRoom = 12 + 4;  // a head and "abc"
  const std::uint32_t dead = kMostBytes - kRoom - 8 - 12;
  FillUp(folder, Word(0) + Word(dead), Word(8) + Word(0xFFFFFFFF) + Word(dead), kRoom);
  SitStrDB db;
  ASSERT_EQ(db.Open(folder.path("store")), 0);
  EXPECT_TRUE(db.IsWhole());
  EXPECT_EQ(db.Add("four", 0), -1);
  const int id = db.Add("abc", 0);
  ASSERT_GE(id, 0);
  EXPECT_EQ(db.Add("", 0), -1);
  EXPECT_EQ(db.failedWrites(), 2);
  EXPECT_EQ(db.Close(), 0);
  EXPECT_EQ(BytesOf(folder), kMostBytes);
  ASSERT_EQ(db.Open(folder.path("store")), 0);
  EXPECT_TRUE(db.IsWhole());
  EXPECT_EQ(db.Get(id), "abc");
  ASSERT_EQ(db.Pack(true), 0);
  EXPECT_EQ(db.Get(id), "abc");
  EXPECT_GE(db.Add("four", 0), 0);
}

TEST(LargestStore, OfEntriesRefusesWhatHasNoRoom) {
  const TempFolder folder;
  SitBlockDB db;
  const auto open = [&] {
    return db.Open(folder.path("store"), SitBlockDB::kUrlFile, SitBlockDB::kBuckets);
  };
  const auto add = [&](const char* key) {
    SitUrlRec record;
    record.key = key;
    return db.Add(record);
  };
  ASSERT_EQ(open(), 0);
  ASSERT_EQ(add("a"), 0);
  ASSERT_EQ(db.Close(), 0);
  const std::string one = folder.read("store");
  const auto block = static_cast<std::uint32_t>(one.size()) - 24;
  const auto size = static_cast<std::uint32_t>(one.size());
  FillUp(folder, one, Word(0) + Word(kMostBytes - block - size - 12) + Word(0xFFFFFFFF), block);
  ASSERT_EQ(open(), 0);
  EXPECT_TRUE(db.IsWhole());
  ASSERT_EQ(add("b"), 1);
  EXPECT_EQ(add("c"), -1);
  EXPECT_EQ(db.failedWrites(), 1);
  EXPECT_EQ(db.Close(), 0);
  EXPECT_EQ(BytesOf(folder), kMostBytes);
  ASSERT_EQ(open(), 0);
  EXPECT_TRUE(db.IsWhole());
  SitUrlRec record;
  EXPECT_EQ(db.Read(1, record), kSitOk);
  EXPECT_EQ(record.key, "b");
  EXPECT_EQ(db.Find("c"), -1);
}

}  // namespace
}  // namespace zvrsit::test
