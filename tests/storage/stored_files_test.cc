// Files written once and kept as hex under tests/data/storage: today's code writes the same bytes,
// and reads from them what was put in.
#include <gtest/gtest.h>

#include <string>

#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"
#include "support/temp_folder.h"
#include "util/little_endian.h"

namespace zvrsit {
namespace {

using test::TempFolder;

std::string Stored(const std::string& name) {
  return test::FromHex(
      test::ReadWhole(std::string(ZVRSIT_SOURCE_DIR) + "/tests/data/storage/" + name + ".hex"));
}

SiteFixRecDB Fixed(const TempFolder& folder, bool wholeFile) {
  return {folder.path("t"), SiteUrlRec::kSlotLength, SiteUrlRec::kRecordType, wholeFile};
}

SiteUrlRec Url(int name, int state, int lastChecked) {
  SiteUrlRec record;
  record.name = name;
  record.state = state;
  record.lastChecked = lastChecked;
  return record;
}

// Numbers 0, 2 and 3 live, 1 dead.
void WriteFixed(SiteFixRecDB& db) {
  for (int i = 0; i < 4; ++i) {
    SiteUrlRec record = Url(i * 3, 200 + i, 0x01020304);
    db.Add(&record);
  }
  db.Delete(1);
  SiteUrlRec changed = Url(6, 404, -1);
  changed.id = 2;
  db.Update(&changed);
}

// Number 0 shared three times, 1 dead, 2 a block that names 0 and 3, 4 a deleted block.
void WriteVariable(SiteVarRecDB& db) {
  db.AddString("shared text");
  db.AddString("gone");
  char block[8];
  StoreLE32(block, 0);
  StoreLE32(block + 4, 3);
  db.AddData(block, 8);
  db.AddString("caf\xC3\xA9");
  db.AddData("old block", 9);
  db.AddString("shared text");
  db.AddString("shared text");
  db.ReleaseString(1);
  db.DeleteData(4);
}

void ExpectStored(const std::string& name, const std::string& written) {
  const std::string stored = Stored(name);
  ASSERT_FALSE(stored.empty()) << name;
  EXPECT_EQ(test::ToHex(written), test::ToHex(stored)) << name;
}

// Hands the stored file to `read` in both modes, and expects its bytes to stay as they are.
template <class Read>
void ReadStored(const std::string& name, Read read) {
  for (const bool wholeFile : {true, false}) {
    TempFolder folder;
    ASSERT_FALSE(Stored(name).empty()) << name;
    folder.write("t", Stored(name));
    read(folder, wholeFile);
    EXPECT_EQ(test::ToHex(folder.read("t")), test::ToHex(Stored(name))) << name;
  }
}

TEST(StoredFiles, FixedOnesAreWrittenAsEver) {
  for (const bool wholeFile : {true, false}) {
    TempFolder folder;
    SiteFixRecDB db = Fixed(folder, wholeFile);
    ASSERT_EQ(db.Open(), 0);
    WriteFixed(db);
    ASSERT_EQ(db.Flush(), 0);
    ExpectStored("fixed-unpacked", folder.read("t"));
    ASSERT_EQ(db.Pack(), 0);
    SiteUrlRec reused = Url(9, 301, 1);
    ASSERT_EQ(db.Add(&reused), 1);
    ASSERT_EQ(db.Close(), 0);
    ExpectStored("fixed-packed", folder.read("t"));
  }
}

TEST(StoredFiles, FixedOnesAreReadAsEver) {
  for (const std::string name : {"fixed-unpacked", "fixed-packed"}) {
    ReadStored(name, [&](const TempFolder& folder, bool wholeFile) {
      SiteFixRecDB db = Fixed(folder, wholeFile);
      ASSERT_EQ(db.Open(), 0);
      SiteUrlRec record;
      EXPECT_EQ(db.Get(1, &record), name == "fixed-packed" ? 0 : -1);
      ASSERT_EQ(db.Get(2, &record), 0);
      EXPECT_EQ(record.state, 404);
      EXPECT_EQ(record.lastChecked, -1);
      ASSERT_EQ(db.Get(3, &record), 0);
      EXPECT_EQ(record.name, 9);
      EXPECT_EQ(record.lastChecked, 0x01020304);
      EXPECT_EQ(db.idCount(), 4);
      EXPECT_EQ(db.Close(), 0);
    });
  }
}

TEST(StoredFiles, VariableOnesAreWrittenAsEver) {
  for (const bool wholeFile : {true, false}) {
    TempFolder folder;
    SiteVarRecDB db(folder.path("t"), wholeFile);
    ASSERT_EQ(db.Open(), 0);
    WriteVariable(db);
    ASSERT_EQ(db.Flush(), 0);
    ExpectStored("variable-unpacked", folder.read("t"));
    ASSERT_EQ(db.Pack(), 0);
    ASSERT_EQ(db.AddString("new in 1"), 1);
    ASSERT_EQ(db.Close(), 0);
    ExpectStored("variable-packed", folder.read("t"));
  }
}

TEST(StoredFiles, VariableOnesAreReadAsEver) {
  for (const std::string name : {"variable-unpacked", "variable-packed"}) {
    ReadStored(name, [&](const TempFolder& folder, bool wholeFile) {
      const bool packed = name == "variable-packed";
      SiteVarRecDB db(folder.path("t"), wholeFile);
      ASSERT_EQ(db.Open(), 0);
      EXPECT_EQ(db.View(0), "shared text");
      EXPECT_EQ(db.View(1), packed ? "new in 1" : "");
      EXPECT_EQ(test::ToHex(db.ViewData(2)), "00 00 00 00 03 00 00 00");
      EXPECT_EQ(db.View(3), "caf\xC3\xA9");
      EXPECT_EQ(db.DataLength(4), -1);
      EXPECT_EQ(db.FindString("shared text"), 0);
      EXPECT_EQ(db.FindString("gone"), -1);
      EXPECT_EQ(db.entryCount(), packed ? 4 : 5);
      EXPECT_EQ(db.Close(), 0);
    });
  }
}

}  // namespace
}  // namespace zvrsit
