// Tables over files that are cut or changed anywhere.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/damage.h"
#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"

namespace zvrsit {
namespace {

using test::TempFolder;

// Hands each damaged form of one of the table's two files to `use`.
template <class Use>
void DamageBothFiles(const TempFolder& good, const std::string& records, Use use) {
  const std::string strings = records.substr(0, records.size() - 1) + "S";
  const std::string bytes[] = {good.read(records), good.read(strings)};
  for (const bool first : {true, false}) {
    TempFolder folder;
    const auto with = [&](std::string_view damaged, std::size_t = 0) {
      folder.write(records, first ? damaged : std::string_view(bytes[0]));
      folder.write(strings, first ? std::string_view(bytes[1]) : damaged);
      use(folder);
    };
    test::CutAtEveryByte(bytes[first ? 0 : 1], with);
    test::SpoilEveryWord(bytes[first ? 0 : 1], with);
  }
}

TEST(DamagedTable, PathsWithListsNeverBreak) {
  TempFolder good;
  {
    SitePathDB table;
    ASSERT_EQ(table.Open(good.path("PR")), 0);
    for (const char* name : {"a", "b"}) {
      SitePathRec record;
      ASSERT_EQ(table.Get(table.Add(name), record), 0);
      ASSERT_EQ(table.SetList(record, {table.strings()->AddString("anchor")}), 0);
      record.title = table.strings()->AddString("title");
      ASSERT_EQ(table.Update(record), 0);
    }
    ASSERT_EQ(table.Close(), 0);
  }
  DamageBothFiles(good, "PR", [](const TempFolder& folder) {
    SitePathDB table;
    if (table.Open(folder.path("PR")) < 0) return;
    for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
      SitePathRec record;
      std::vector<std::int32_t> ids;
      if (table.Get(number, record) < 0) continue;
      table.GetList(record, ids);
      if (number == 0 && table.ReleaseTexts(record) == 0) table.Update(record);
      table.Delete(number);
    }
    EXPECT_GE(table.Add("c"), 0);
    EXPECT_EQ(table.Pack(), 0);
    EXPECT_EQ(table.Close(), 0);
  });
}

TEST(DamagedTable, LinksNeverBreak) {
  TempFolder good;
  {
    SiteLinkDB table;
    ASSERT_EQ(table.Open(good.path("LR")), 0);
    for (int i = 0; i < 3; ++i) table.Add("text", {2, 0}, {2, i}, "alt", 1);
    ASSERT_EQ(table.Close(), 0);
  }
  DamageBothFiles(good, "LR", [](const TempFolder& folder) {
    SiteLinkDB table;
    if (table.Open(folder.path("LR")) < 0) return;
    std::vector<int> numbers;
    EXPECT_GE(table.Query({2, 0}, {2, 1}, numbers), 0);
    EXPECT_GE(table.Query(kAnyUrlID, {2, 1}, numbers), 0);
    EXPECT_GE(table.Add("text", {2, 0}, {2, 1}, "alt", 1), 0);
    table.DeleteAll(table.NextNumber(0));
    EXPECT_EQ(table.Clear(), 0);
    EXPECT_EQ(table.NextNumber(0), -1);
    EXPECT_GE(table.Add("text", {2, 0}, {2, 1}, 1), 0);
    EXPECT_EQ(table.Close(), 0);
  });
}

}  // namespace
}  // namespace zvrsit
