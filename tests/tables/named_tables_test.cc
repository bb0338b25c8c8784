// Tables that are found by name, and what only that of the files has.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "support/temp_folder.h"
#include "tables/site_folder_db.h"
#include "tables/site_path_db.h"
#include "tables/site_url_db.h"

namespace zvrsit {
namespace {

using test::TempFolder;

template <class Table>
class TableByName : public testing::Test {
 protected:
  TableByName() { Reopen(); }
  void Reopen() {
    if (table_ != nullptr) {
      EXPECT_EQ(table_->Close(), 0);
    }
    table_ = std::make_unique<Table>();
    ASSERT_EQ(table_->Open(folder_.path("TR")), 0);
  }

  TempFolder folder_;
  std::unique_ptr<Table> table_;
};
using Tables = testing::Types<SiteUrlDB, SitePathDB, SiteFolderDB>;
TYPED_TEST_SUITE(TableByName, Tables);

TYPED_TEST(TableByName, FindsTheLaterOfTwoEqualNames) {
  EXPECT_EQ(this->table_->Add("twice"), 0);
  EXPECT_EQ(this->table_->Add("once"), 1);
  EXPECT_EQ(this->table_->Add("twice"), 2);
  EXPECT_EQ(this->table_->Add(""), -1);
  EXPECT_EQ(this->table_->Find("twice"), 2);
  EXPECT_EQ(this->table_->Find("TWICE"), -1);
  this->Reopen();
  EXPECT_EQ(this->table_->Find("twice"), 2);
  EXPECT_EQ(this->table_->Delete(0), 0);  // takes the text out of the index, whoever has it
  EXPECT_EQ(this->table_->Find("twice"), -1);
  EXPECT_EQ(this->table_->NameView(2), "twice");
  this->Reopen();
  EXPECT_EQ(this->table_->Find("twice"), 2);
}

TYPED_TEST(TableByName, StillFindsAfterCloseAndIsNotOpenedAgain) {
  auto& table = *this->table_;
  EXPECT_GE(table.Add("a"), 0);
  EXPECT_EQ(table.Open(this->folder_.path("TR")), -1);
  ASSERT_EQ(table.Close(), 0);
  EXPECT_EQ(table.Close(), 0);
  EXPECT_NE(this->folder_.read("TS").find("a"), std::string::npos);
  EXPECT_EQ(table.Find("a"), 0);
  EXPECT_EQ(table.Open(this->folder_.path("TR")), -1);
  EXPECT_EQ(table.Add("b"), -1);
  EXPECT_EQ(table.Delete(0), -1);
  EXPECT_EQ(table.Pack(), -1);
  if constexpr (!std::is_same_v<TypeParam, SitePathDB>) {
    EXPECT_EQ(table.Clear(), -1);
  }
  EXPECT_EQ(table.Count(), -1);
  TypeParam fresh;
  EXPECT_EQ(fresh.Find("a"), -1);
  EXPECT_EQ(fresh.Open(""), -1);
  EXPECT_EQ(fresh.Open(this->folder_.path("missing\\TR")), -1);
  EXPECT_EQ(fresh.Open(this->folder_.path("TR")), 0);
}

TYPED_TEST(TableByName, DeletesARecordWithItsName) {
  auto& table = *this->table_;
  EXPECT_GE(table.Add("a"), 0);
  EXPECT_GE(table.Add("b"), 0);
  EXPECT_EQ(table.Delete(-1), -1);
  EXPECT_EQ(table.Delete(2), -1);
  EXPECT_EQ(table.Delete(0), 0);
  EXPECT_EQ(table.Delete(0), -1);
  EXPECT_EQ(table.Find("a"), -1);
  EXPECT_EQ(table.Find("b"), 1);
  EXPECT_EQ(table.strings()->FindString("a"), -1);
  EXPECT_EQ(table.Add("c"), 2);
  EXPECT_EQ(table.Count(), 3);
  EXPECT_TRUE(table.IsWorthPacking());
  EXPECT_EQ(table.Pack(), 0);
  EXPECT_FALSE(table.IsWorthPacking());
  EXPECT_EQ(table.Find("c"), 2);
  EXPECT_EQ(table.Add("d"), 0);
}

TYPED_TEST(TableByName, ClearLeavesTheBytesThatSingleDeletesLeave) {
  if constexpr (!std::is_same_v<TypeParam, SitePathDB>) {
    std::string left[2];
    for (const bool atOnce : {true, false}) {
      TempFolder folder;
      TypeParam table;
      ASSERT_EQ(table.Open(folder.path("TR")), 0);
      for (const char* name : {"a", "b", "a", "c", "d"}) EXPECT_GE(table.Add(name), 0);
      ASSERT_EQ(table.Delete(3), 0);
      if (atOnce) {
        ASSERT_EQ(table.Clear(), 0);
      } else {
        for (int number = 0; number < table.Count(); ++number) (void)table.Delete(number);
      }
      EXPECT_EQ(table.Find("a"), -1);
      for (const char* name : {"e", "a"}) EXPECT_GE(table.Add(name), 0);
      EXPECT_EQ(table.Find("a"), 6);
      ASSERT_EQ(table.Close(), 0);
      left[atOnce] = test::ToHex(folder.read("TR") + folder.read("TS"));
    }
    EXPECT_EQ(left[0], left[1]);
  }
}

TYPED_TEST(TableByName, FindsEveryOneOfManyNamesAfterManyRemovals) {
  auto& table = *this->table_;
  const auto name = [](int i) { return "\\site\\folder\\page-" + std::to_string(i) + ".html"; };
  for (int i = 0; i < 5000; ++i) ASSERT_EQ(table.Add(name(i)), i);
  for (int i = 0; i < 5000; i += 3) ASSERT_EQ(table.Delete(i), 0);
  const auto check = [&] {
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(table.Find(name(i)), i % 3 == 0 ? -1 : i);
  };
  check();
  ASSERT_EQ(table.Close(), 0);
  check();
  this->Reopen();
  ASSERT_EQ(this->table_->Pack(), 0);
  ASSERT_EQ(this->table_->Delete(1), 0);
  ASSERT_EQ(this->table_->Add(name(1)), 0);
  EXPECT_EQ(this->table_->Find(name(4999)), 4999);
}

class PathTable : public testing::Test {
 protected:
  PathTable() {
    EXPECT_EQ(table_.Open(folder_.path("PR")), 0);
    number_ = table_.Add("\\s\\a.htm");
    EXPECT_GE(table_.Get(number_, record_), 0);
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
  EXPECT_EQ(table_.ReleaseTexts(record_), -1);
  EXPECT_EQ(table_.Delete(worse), -1);
  EXPECT_EQ(table_.Find("c"), worse);
}

}  // namespace
}  // namespace zvrsit
