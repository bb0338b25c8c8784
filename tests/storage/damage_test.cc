// Files that are cut or changed anywhere: opening says -1 or gives a file that can be used.
#include <gtest/gtest.h>

#include <string>

#include "storage/site_fix_rec_db.h"
#include "storage/site_var_rec_db.h"
#include "support/damage.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

using test::TempFolder;
using test::Word;

SiteFixRecDB Fixed(const TempFolder& folder, bool wholeFile) {
  return {folder.path("t"), SiteUrlRec::kSlotLength, SiteUrlRec::kRecordType, wholeFile};
}

// Uses a damaged fixed file in every way; what comes of it does not matter.
void UseFixed(const TempFolder& folder, bool wholeFile) {
  SiteFixRecDB db = Fixed(folder, wholeFile);
  if (db.Open() < 0) return;
  SiteUrlRec record;
  int seen = 0;
  for (int id = db.NextId(0); id >= 0; id = db.NextId(id + 1)) {
    if (db.Get(id, &record) == 0) ++seen;
    (void)db.Update(&record);
  }
  EXPECT_EQ(seen, db.liveCount());
  (void)db.Add(&record);
  if (db.Has(1)) (void)db.Delete(1);
  EXPECT_EQ(db.Pack(), 0);
  (void)db.Add(&record);
  EXPECT_EQ(db.Close(), 0);
}

void UseVariable(const TempFolder& folder, bool wholeFile) {
  SiteVarRecDB db(folder.path("t"), wholeFile);
  if (db.Open() < 0) return;
  std::string text;
  for (int id = 0; id < 8; ++id) {
    if (db.GetString(id, text) == 0) db.FindString(text);
  }
  (void)db.AddString("shared");
  (void)db.ReleaseString(1);
  (void)db.AddString("another");
  (void)db.DeleteData(3);
  (void)db.AddData("block", 5);
  EXPECT_EQ(db.Pack(), 0);
  (void)db.AddString("last");
  (void)db.ReleaseStringUnindexed(0);
  EXPECT_EQ(db.Close(), 0);
}

template <class Use>
void DamageEveryWay(const std::string& bytes, Use use) {
  for (const bool wholeFile : {true, false}) {
    TempFolder folder;
    const auto with = [&](std::string_view damaged, std::size_t = 0) {
      folder.write("t", damaged);
      use(folder, wholeFile);
    };
    test::CutAtEveryByte(bytes, with);
    test::FlipEveryByte(bytes, with);
    test::SpoilEveryWord(bytes, with);
  }
}

TEST(DamagedFile, FixedOnesNeverBreakTheirReader) {
  TempFolder folder;
  SiteFixRecDB db = Fixed(folder, true);
  ASSERT_EQ(db.Open(), 0);
  SiteUrlRec record;
  for (int i = 0; i < 4; ++i) ASSERT_EQ(db.Add(&record), i);
  ASSERT_EQ(db.Delete(2), 0);
  ASSERT_EQ(db.Close(), 0);
  DamageEveryWay(folder.read("t"), UseFixed);
}

TEST(DamagedFile, VariableOnesNeverBreakTheirReader) {
  TempFolder folder;
  SiteVarRecDB db(folder.path("t"), true);
  ASSERT_EQ(db.Open(), 0);
  for (const char* text : {"shared", "one", "two", "shared"}) (void)db.AddString(text);
  (void)db.AddData("\1\0\0\0\2\0\0\0", 8);
  (void)db.ReleaseString(2);
  ASSERT_EQ(db.Close(), 0);
  DamageEveryWay(folder.read("t"), UseVariable);
}

// What the file cannot hold is refused; many numbers without entries cost nothing until they are
// used.
TEST(DamagedFile, ClaimsOfItsHeadAreComparedWithItsSize) {
  const std::string magic = "ZVR4.00-SITE0.01";
  const struct {
    std::string bytes;
    std::uintmax_t size;  // zeros follow the bytes
    int result;
  } rows[] = {
      {magic + Word(0xFFFFFFFF) + Word(0), 24, -1},
      {magic + Word(0x04000001) + Word(0), 24, -1},
      {magic + Word(1) + Word(0xFFFFFFFF), 24, -1},
      {magic + Word(1) + Word(2), 24 + 39, -1},
      {magic + Word(0x7FFFFFFF) + Word(0x7FFFFFFF), 24, -1},
      {magic + Word(100) + Word(0x7FFFFFFF / 20 + 1), std::uintmax_t{3} << 30, -1},
      {magic + Word(1 << 26) + Word(0), 24, 0},
  };
  for (const auto& row : rows) {
    for (const bool wholeFile : {true, false}) {
      const TempFolder folder;
      folder.write("t", row.bytes);
      std::filesystem::resize_file(folder.native("t"), row.size);
      SiteFixRecDB fixed = Fixed(folder, wholeFile);
      EXPECT_EQ(fixed.Open(), row.result);
      EXPECT_EQ(fixed.isOpen(), row.result == 0);
      SiteUrlRec record;
      EXPECT_EQ(fixed.Add(&record), -1);
      SiteVarRecDB variable(folder.path("t"), wholeFile);
      EXPECT_EQ(variable.Open(), row.result);
      EXPECT_EQ(variable.AddString("a"), row.result);
    }
  }
}

}  // namespace
}  // namespace zvrsit
