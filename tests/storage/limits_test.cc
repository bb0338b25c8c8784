// Files that are as long as they can be. They are sparse: nothing but their ends is on the disk.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "storage/record_file.h"
#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"

namespace zvrsit {
namespace {

using test::Words;

constexpr std::int64_t kMostBytes = 0x7FFFFFFF;

// A process of 32 bits has no room for them in memory.
bool HasRoom(bool wholeFile) {
  return !wholeFile || sizeof(void*) > 4;
}

template <class File>
class LargestFile : public test::RecordFile<File> {
 protected:
  using Base = test::RecordFile<File>;

  // Makes the file: `head`, and zeros up to `length` bytes. By the end of the wait a write gets
  // another time, so that closing writes only what has changed.
  void Extend(const std::string& head, std::int64_t length) {
    Base::folder_.write("t", head);
    std::filesystem::resize_file(Base::folder_.native("t"), static_cast<std::uintmax_t>(length));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  std::int64_t Length() const {
    return static_cast<std::int64_t>(std::filesystem::file_size(Base::folder_.native("t")));
  }
};

using LargestFixedFile = LargestFile<SiteFixRecDB>;
INSTANTIATE_TEST_SUITE_P(Modes, LargestFixedFile, testing::Bool(), test::ModeName);

// The next record but one would end just one byte beyond the longest file: 2^31 - 24 bytes are
// slots of 1,144 bytes, as they are slots of links.
TEST_P(LargestFixedFile, RefusesWhatHasNoRoomAndKeepsTheRest) {
  if (!HasRoom(GetParam())) GTEST_SKIP();
  const int length = GetParam() ? 1144 : 1 << 16;
  const auto slots = static_cast<int>((kMostBytes + 1 - 24) / length - (GetParam() ? 2 : 1));
  Extend(Head({1, slots}), 24 + std::int64_t{slots} * length);
  Reopen(length, SiteLinkRec::kRecordType);
  SiteLinkRec link;
  link.type = 7;
  ASSERT_EQ(db_->Add(&link), 1);
  for (int again = 0; again < 3; ++again) EXPECT_EQ(db_->Add(&link), -1);
  EXPECT_EQ(db_->Close(), 0);
  EXPECT_LE(Length(), kMostBytes);
  Reopen(length, SiteLinkRec::kRecordType);
  ASSERT_EQ(db_->Get(1, &link), 0);
  EXPECT_EQ(link.type, 7);
  EXPECT_EQ(db_->slotCount(), slots + 1);
  EXPECT_EQ(db_->Delete(0), 0);
  // Only two of the slots were live, so packing makes room.
  ASSERT_EQ(db_->Pack(), 0);
  EXPECT_EQ(db_->Get(1, &link), 0);
  EXPECT_EQ(db_->Add(&link), 0);
}

using LargestTextFile = LargestFile<SiteVarRecDB>;
INSTANTIATE_TEST_SUITE_P(Modes, LargestTextFile, testing::Bool(), test::ModeName);

TEST_P(LargestTextFile, RefusesWhatHasNoRoomAndKeepsTheRest) {
  if (!HasRoom(GetParam())) GTEST_SKIP();
  // Behind a dead entry there is room for one of three letters.
  const auto end = static_cast<int>(kMostBytes - 16 - 4);
  Extend(Head({0, 1, end}) + Words({-1, end - 28 - 16, 0, 2}), end);
  Reopen();
  EXPECT_EQ(db_->AddString("four"), -1);
  ASSERT_EQ(db_->AddString("abc"), 0);
  EXPECT_EQ(db_->AddString("d"), -1);
  EXPECT_EQ(db_->AddData("d", 1), -1);
  EXPECT_EQ(db_->AddString("abc"), 0);
  EXPECT_EQ(db_->Close(), 0);
  EXPECT_EQ(Length(), kMostBytes);
  Reopen();
  EXPECT_EQ(db_->FindString("abc"), 0);
  EXPECT_EQ(db_->FindString("d"), -1);
  ASSERT_EQ(db_->Pack(), 0);
  EXPECT_EQ(db_->AddString("d"), 1);
  EXPECT_EQ(db_->View(0), "abc");
}

}  // namespace
}  // namespace zvrsit
