#include "tables/site_path_db.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace zvrsit {
namespace {

class PathTable : public testing::Test {
 protected:
  PathTable() {
    EXPECT_EQ(table_.Open(folder_.path("PR")), 0);
    number_ = table_.Add("\\s\\a.htm");
    table_.Get(number_, record_);
  }
  int Text(const char* text) { return table_.strings()->AddString(text); }
  bool Has(const char* text) { return table_.strings()->FindString(text) >= 0; }

  test::TempFolder folder_;
  SitePathDB table_;
  int number_;
  SitePathRec record_;
};

TEST_F(PathTable, KeepsAListOfAnchorNames) {
  std::vector<std::int32_t> ids = {9};
  EXPECT_EQ(table_.GetList(record_, ids), 0);
  EXPECT_TRUE(ids.empty());
  const std::vector<std::int32_t> first = {Text("top"), Text("end"), Text("top")};
  ASSERT_EQ(table_.SetList(record_, first), 0);
  EXPECT_EQ(record_.listCount, 3);
  ASSERT_EQ(table_.GetList(record_, ids), 0);
  EXPECT_EQ(ids, first);
  ASSERT_EQ(table_.SetList(record_, {Text("top"), Text("new")}), 0);
  EXPECT_TRUE(Has("top"));
  EXPECT_FALSE(Has("end"));
  ASSERT_EQ(table_.SetList(record_, {}), 0);
  EXPECT_FALSE(Has("top"));
  EXPECT_EQ(record_.listData, -1);
  record_.listCount = 1 << 30;
  record_.listData = record_.name;
  EXPECT_EQ(table_.GetList(record_, ids), -1);
}

// Only the block goes with the record; what a record without a block claims is cleared first.
TEST_F(PathTable, DeletesTheListBlockWithTheRecord) {
  const int anchor = Text("anchor");
  ASSERT_EQ(table_.SetList(record_, {anchor}), 0);
  ASSERT_EQ(table_.Update(record_), 0);
  ASSERT_EQ(table_.Delete(number_), 0);
  EXPECT_EQ(table_.strings()->DataLength(record_.listData), -1);
  EXPECT_TRUE(Has("anchor"));

  const int bad = table_.Add("b");
  ASSERT_EQ(table_.Get(bad, record_), 0);
  record_.listCount = 5;
  ASSERT_EQ(table_.Update(record_), 0);
  EXPECT_EQ(table_.Delete(bad), 0);
  const int worse = table_.Add("c");
  ASSERT_EQ(table_.Get(worse, record_), 0);
  record_.listCount = 5;
  record_.listData = 1000;
  ASSERT_EQ(table_.Update(record_), 0);
  EXPECT_EQ(table_.Delete(worse), -1);
  EXPECT_EQ(table_.Find("c"), worse);
}

TEST_F(PathTable, SetsATextFieldBeforeItGivesBackTheOldOne) {
  ASSERT_EQ(table_.SetText(number_, &SitePathRec::title, "one"), 0);
  ASSERT_EQ(table_.SetText(number_, &SitePathRec::title, "one"), 0);
  std::string title;
  ASSERT_EQ(table_.GetText(number_, &SitePathRec::title, title), 0);
  EXPECT_EQ(title, "one");
  ASSERT_EQ(table_.SetText(number_, &SitePathRec::title, ""), 0);
  EXPECT_EQ(table_.GetText(number_, &SitePathRec::title, title), -1);
  EXPECT_FALSE(Has("one"));
  EXPECT_EQ(table_.SetText(7, &SitePathRec::title, "x"), -1);
  EXPECT_EQ(table_.SetNumber(number_, &SitePathRec::membership, 8), 0);
  std::int32_t value = 0;
  EXPECT_EQ(table_.GetNumber(number_, &SitePathRec::membership, value), 0);
  EXPECT_EQ(value, 8);
}

}  // namespace
}  // namespace zvrsit
