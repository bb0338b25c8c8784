// Tables that get no memory, and tables over files that are cut or changed anywhere: whatever comes
// of an operation, nothing is thrown and nothing breaks, and what a table answers from its indexes
// is what its records say.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/damage.h"
#include "support/memory_fault.h"
#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_serv_prof_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"

namespace zvrsit {
namespace {

// Longer than what a string holds without memory of its own.
const std::string kFirst = "the first of several names";
const std::string kSecond = "the second of several names";
const std::string kThird = "the third of several names";
const std::string kText = "a text that a name does not have";
const std::vector<std::int32_t> kIds = {0};
const UrlID kPage(kKindPath, 5), kTarget(kKindPath, 900);

// What is done with a table: it is opened, filled, and used while an allocation fails.
int Open(auto& table, const std::string& path) {
  if constexpr (requires { table.Open(path, kOpenRestore); }) {
    return table.Open(path, kOpenRestore);
  } else {
    return table.Open(path);
  }
}

void Fill(auto& table) {
  ASSERT_EQ(table.Add(kFirst), 0);
}
void Fill(SitePathDB& table) {
  SitePathRec record;
  ASSERT_EQ(table.Get(table.Add(kFirst), record), 0);
  ASSERT_EQ(table.SetList(record, {table.strings()->AddString(kSecond)}), 0);
  record.title = table.strings()->AddString(kText);
  ASSERT_EQ(table.Update(record), 0);
}
void Fill(SiteLinkDB& table) {
  for (int i = 0; i < 5; ++i) ASSERT_EQ(table.Add(kText, kPage, {kKindPath, i}, 1), i);
}

void Use(SiteUrlDB& table) {
  (void)table.Add(kSecond);
  (void)table.Delete(0);
  (void)table.Pack();
  (void)table.Add(kThird);
  (void)table.Clear();
  (void)table.Add(kSecond);
}
void Use(SitePathDB& table) {
  SitePathRec record;
  std::string text;
  std::vector<std::int32_t> ids;
  (void)table.SetText(0, &SitePathRec::title, kText);
  (void)table.GetText(0, &SitePathRec::title, text);
  if (table.Get(0, record) < 0 || table.SetList(record, kIds) < 0) return;
  (void)table.Update(record);
  (void)table.GetList(record, ids);
  (void)table.Name(0, text);
  (void)table.Delete(0);
}
void Use(SiteLinkDB& table) {
  std::vector<int> numbers;
  table.CountFrom(kPage);
  table.CountTo(kTarget);
  (void)table.Add(kFirst, kPage, kTarget, kSecond, 1);
  (void)table.Add(kFirst, kPage, kTarget, kSecond, 1);
  (void)table.Query(kPage, kAnyUrlID, numbers);
  (void)table.Add(kFirst, {kKindPath, 1 << 30}, kTarget, 1);
  (void)table.DeleteAll(0);
  table.IsTarget(kTarget);
  table.First(kAnyUrlID, kTarget);
}
void UseProfiles(auto& table) {
  (void)table.Add(kSecond);
  (void)table.Rename(0, kThird);
  (void)table.Copy(0, kFirst);
  (void)table.Delete(0);
}
void Use(SiteSiteProfDB& table) {
  (void)table.SetFolder(0, 1, kText);
  UseProfiles(table);
}
void Use(SiteServProfDB& table) {
  std::string password;
  (void)table.SetPassword(0, &SiteServRec::password, kText);
  (void)table.GetPassword(0, &SiteServRec::password, password);
  UseProfiles(table);
}

// Every name is found, and nothing else; a profile that is there is not added again.
void Check(auto& table) {
  if (!table.strings()->isOpen()) return;  // a pack has closed them
  for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
    const std::string name(table.NameView(number));
    ASSERT_EQ(table.Find(name), number) << name;
  }
  for (const std::string& name : {kFirst, kSecond, kThird}) {
    const int number = table.Find(name);
    ASSERT_TRUE(number < 0 || table.NameView(number) == name);
  }
  if constexpr (requires { table.Rename(0, kThird); }) {
    const int number = table.Find(kFirst);
    EXPECT_EQ(table.Add(kFirst) < 0, number >= 0);
  }
}
void Check(SitePathDB& table) {
  SitePathRec record;
  std::string text = kText;
  if (table.Get(0, record) == 0 && record.title >= 0) table.Text(record.title, text);
  EXPECT_EQ(text, kText);
}
void Check(SiteLinkDB& table) {
  SiteLinkRec link;
  std::vector<int> numbers, found;
  int count = 0;
  for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
    ASSERT_EQ(table.Get(number, link), 0);
    ASSERT_EQ(table.Query(link.from, link.to, found), 1) << number;
    ASSERT_EQ(found[0], number);
    count += link.from == kPage ? 1 : 0;
  }
  EXPECT_EQ(table.CountFrom(kPage), count);
  EXPECT_EQ(table.Query(kPage, kAnyUrlID, numbers), count);
  EXPECT_EQ(table.CountTo(kTarget), table.Query(kAnyUrlID, kTarget, numbers));
}

template <class Table>
class FaultyTable : public testing::Test {};
using FaultyTables =
    testing::Types<SiteUrlDB, SitePathDB, SiteLinkDB, SiteSiteProfDB, SiteServProfDB>;
TYPED_TEST_SUITE(FaultyTable, FaultyTables);

// Also when it was opened again.
TYPED_TEST(FaultyTable, WithoutMemoryAnswersWhatItsRecordsSay) {
  const test::TempFolder folder;
  const std::string path = folder.path("TR");
  std::unique_ptr<TypeParam> table;
  const auto prepare = [&] {
    if (table != nullptr) (void)table->Close();
    for (const char* name : {"TR", "TS", "TR_pack", "TS_pack", "TR_bak", "TS_bak"}) {
      std::filesystem::remove(folder.native(name));
    }
    table = std::make_unique<TypeParam>();
    ASSERT_EQ(Open(*table, path), 0);
    Fill(*table);
    ASSERT_EQ(table->Close(), 0);
    table = std::make_unique<TypeParam>();
  };
  const auto operate = [&] {
    if (Open(*table, path) == 0) Use(*table);
  };
  const auto check = [&](int n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    if (table->Count() >= 0) Check(*table);
    (void)table->Close();
    // A pack can end between its two renames.
    for (const char* name : {"TR", "TS"}) {
      const std::string packed = folder.native(name) + "_pack";
      if (!folder.has(name)) std::filesystem::rename(packed, folder.native(name));
    }
    table = std::make_unique<TypeParam>();
    ASSERT_EQ(Open(*table, path), 0);
    Check(*table);
  };
  EXPECT_GT(test::FailEachAllocation(prepare, operate, check), 10);
}

TYPED_TEST(FaultyTable, WhoseFilesAreDamagedNeverBreaks) {
  const test::TempFolder folder;
  TypeParam whole;
  ASSERT_EQ(Open(whole, folder.path("TR")), 0);
  Fill(whole);
  ASSERT_EQ(whole.Close(), 0);
  const std::string bytes[] = {folder.read("TR"), folder.read("TS")};
  for (const bool first : {true, false}) {
    const auto use = [&](std::string_view damaged, std::size_t = 0) {
      folder.write("TR", first ? damaged : std::string_view(bytes[0]));
      folder.write("TS", first ? std::string_view(bytes[1]) : damaged);
      for (const char* name : {"TR_bak", "TS_bak"}) std::filesystem::remove(folder.native(name));
      TypeParam table;
      if (Open(table, folder.path("TR")) < 0) return;
      Use(table);
      for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) (void)table.Delete(i);
      Use(table);
      EXPECT_EQ(table.Pack(), 0);
      EXPECT_EQ(table.Close(), 0);
    };
    test::CutAtEveryByte(bytes[first ? 0 : 1], use);
    test::SpoilEveryWord(bytes[first ? 0 : 1], use);
  }
}

}  // namespace
}  // namespace zvrsit
