// Files written once and kept as hex under tests/data/storage: today's code writes the same bytes.
#include <gtest/gtest.h>

#include <string>

#include "storage/record_file.h"
#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

class StoredFile : public testing::TestWithParam<bool> {
 protected:
  void ExpectStored(const std::string& name) const {
    const std::string hex =
        test::ReadWhole(std::string(ZVRSIT_SOURCE_DIR) + "/tests/data/storage/" + name + ".hex");
    ASSERT_FALSE(hex.empty()) << name;
    EXPECT_EQ(test::ToHex(folder_.read("t")), test::ToHex(test::FromHex(hex))) << name;
  }

  test::TempFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Modes, StoredFile, testing::Bool(), test::ModeName);

SiteUrlRec Url(int name, int state, int lastChecked) {
  SiteUrlRec record;
  record.name = name;
  record.state = state;
  record.lastChecked = lastChecked;
  return record;
}

// Numbers 0, 2 and 3 live, 1 dead and handed out again after the pack.
TEST_P(StoredFile, OfFixedRecordsIsWrittenAsEver) {
  SiteFixRecDB db(folder_.path("t"), SiteUrlRec::kSlotLength, SiteUrlRec::kRecordType, GetParam());
  ASSERT_EQ(db.Open(), 0);
  for (int i = 0; i < 4; ++i) {
    SiteUrlRec record = Url(i * 3, 200 + i, 0x01020304);
    EXPECT_GE(db.Add(&record), 0);
  }
  EXPECT_GE(db.Delete(1), 0);
  SiteUrlRec record = Url(6, 404, -1);
  record.id = 2;
  EXPECT_GE(db.Update(&record), 0);
  ASSERT_EQ(db.Flush(), 0);
  ExpectStored("fixed-unpacked");
  ASSERT_EQ(db.Pack(), 0);
  record = Url(9, 301, 1);
  ASSERT_EQ(db.Add(&record), 1);
  ASSERT_EQ(db.Close(), 0);
  ExpectStored("fixed-packed");
}

// Number 0 shared three times, 1 dead, 2 a block that names 0 and 3, 4 a deleted block.
TEST_P(StoredFile, OfVariableRecordsIsWrittenAsEver) {
  SiteVarRecDB db(folder_.path("t"), GetParam());
  ASSERT_EQ(db.Open(), 0);
  const std::string block = test::Word(0) + test::Word(3);
  for (const char* text : {"shared text", "gone"}) EXPECT_GE(db.AddString(text), 0);
  EXPECT_GE(db.AddData(block.data(), 8), 0);
  EXPECT_GE(db.AddString("caf\xC3\xA9"), 0);
  EXPECT_GE(db.AddData("old block", 9), 0);
  for (int i = 0; i < 2; ++i) EXPECT_GE(db.AddString("shared text"), 0);
  EXPECT_GE(db.ReleaseString(1), 0);
  EXPECT_GE(db.DeleteData(4), 0);
  ASSERT_EQ(db.Flush(), 0);
  ExpectStored("variable-unpacked");
  ASSERT_EQ(db.Pack(), 0);
  ASSERT_EQ(db.AddString("new in 1"), 1);
  ASSERT_EQ(db.Close(), 0);
  ExpectStored("variable-packed");
}

}  // namespace
}  // namespace zvrsit
