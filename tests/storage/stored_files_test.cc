// Files written once and kept as hex under tests/data/storage: today's code writes the same bytes,
// and reads from them what was put in.
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
  static std::string Stored(const std::string& name) {
    return test::FromHex(
        test::ReadWhole(std::string(ZVRSIT_SOURCE_DIR) + "/tests/data/storage/" + name + ".hex"));
  }
  void ExpectStored(const std::string& name) const {
    ASSERT_FALSE(Stored(name).empty()) << name;
    EXPECT_EQ(test::ToHex(folder_.read("t")), test::ToHex(Stored(name))) << name;
  }
  // Opens a stored file, hands it to `read`, and expects it to stay as it is.
  template <class File, class Read>
  void ReadStored(const std::string& name, File& db, Read read) {
    folder_.write("t", Stored(name));
    ASSERT_EQ(db.Open(), 0) << name;
    read();
    ASSERT_EQ(db.Close(), 0);
    ExpectStored(name);
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
TEST_P(StoredFile, OfFixedRecordsIsWrittenAndReadAsEver) {
  SiteFixRecDB db(folder_.path("t"), SiteUrlRec::kSlotLength, SiteUrlRec::kRecordType, GetParam());
  ASSERT_EQ(db.Open(), 0);
  for (int i = 0; i < 4; ++i) {
    SiteUrlRec record = Url(i * 3, 200 + i, 0x01020304);
    db.Add(&record);
  }
  db.Delete(1);
  SiteUrlRec record = Url(6, 404, -1);
  record.id = 2;
  db.Update(&record);
  ASSERT_EQ(db.Flush(), 0);
  ExpectStored("fixed-unpacked");
  ASSERT_EQ(db.Pack(), 0);
  record = Url(9, 301, 1);
  ASSERT_EQ(db.Add(&record), 1);
  ASSERT_EQ(db.Close(), 0);
  ExpectStored("fixed-packed");

  for (const std::string name : {"fixed-unpacked", "fixed-packed"}) {
    ReadStored(name, db, [&] {
      EXPECT_EQ(db.Get(1, &record), name == "fixed-packed" ? 0 : -1);
      ASSERT_EQ(db.Get(2, &record), 0);
      EXPECT_EQ(record.state, 404);
      EXPECT_EQ(record.lastChecked, -1);
      ASSERT_EQ(db.Get(3, &record), 0);
      EXPECT_EQ(record.name, 9);
      EXPECT_EQ(record.lastChecked, 0x01020304);
      EXPECT_EQ(db.idCount(), 4);
    });
  }
}

// Number 0 shared three times, 1 dead, 2 a block that names 0 and 3, 4 a deleted block.
TEST_P(StoredFile, OfVariableRecordsIsWrittenAndReadAsEver) {
  SiteVarRecDB db(folder_.path("t"), GetParam());
  ASSERT_EQ(db.Open(), 0);
  const std::string block = test::Word(0) + test::Word(3);
  for (const char* text : {"shared text", "gone"}) db.AddString(text);
  db.AddData(block.data(), 8);
  db.AddString("caf\xC3\xA9");
  db.AddData("old block", 9);
  for (int i = 0; i < 2; ++i) db.AddString("shared text");
  db.ReleaseString(1);
  db.DeleteData(4);
  ASSERT_EQ(db.Flush(), 0);
  ExpectStored("variable-unpacked");
  ASSERT_EQ(db.Pack(), 0);
  ASSERT_EQ(db.AddString("new in 1"), 1);
  ASSERT_EQ(db.Close(), 0);
  ExpectStored("variable-packed");

  for (const std::string name : {"variable-unpacked", "variable-packed"}) {
    ReadStored(name, db, [&] {
      const bool packed = name == "variable-packed";
      EXPECT_EQ(db.View(0), "shared text");
      EXPECT_EQ(db.View(1), packed ? "new in 1" : "");
      EXPECT_EQ(db.ViewData(2), block);
      EXPECT_EQ(db.View(3), "caf\xC3\xA9");
      EXPECT_EQ(db.DataLength(4), -1);
      EXPECT_EQ(db.FindString("shared text"), 0);
      EXPECT_EQ(db.FindString("gone"), -1);
      EXPECT_EQ(db.entryCount(), packed ? 4 : 5);
    });
  }
}

}  // namespace
}  // namespace zvrsit
