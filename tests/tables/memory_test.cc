// Tables that get no memory: whatever comes of an operation, nothing is thrown, and what a table
// answers from its indexes is what its records say.
#include "support/memory_fault.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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
const std::vector<std::int32_t> kIds = {0};
const std::string kText = "a text that a name does not have";

// Each allocation of `use(table)` fails, that of opening included; then `check(table)`, also when
// the table was opened again. `fill(table)` says what is in it before, `open(table, path)` opens
// it.
template <class Table, class Open, class Fill, class Use, class Check>
void FailEach(Open open, Fill fill, Use use, Check check) {
  const test::TempFolder folder;
  const std::string path = folder.path("TR");
  std::unique_ptr<Table> table;
  const auto prepare = [&] {
    if (table != nullptr) table->Close();
    for (const char* name : {"TR", "TS", "TR_pack", "TS_pack", "TR_bak", "TS_bak"}) {
      std::filesystem::remove(folder.native(name));
    }
    table = std::make_unique<Table>();
    ASSERT_EQ(open(*table, path), 0);
    fill(*table);
    ASSERT_EQ(table->Close(), 0);
    table = std::make_unique<Table>();
  };
  const auto operate = [&] {
    if (open(*table, path) == 0) use(*table);
  };
  EXPECT_GT(test::FailEachAllocation(prepare, operate,
                                     [&](int n) {
                                       SCOPED_TRACE("allocation " + std::to_string(n));
                                       if (table->Count() >= 0) check(*table);
                                       table->Close();
                                       // A pack can end between its two renames.
                                       for (const char* name : {"TR", "TS"}) {
                                         const std::string packed = folder.native(name) + "_pack";
                                         if (!folder.has(name))
                                           std::filesystem::rename(packed, folder.native(name));
                                       }
                                       table = std::make_unique<Table>();
                                       ASSERT_EQ(open(*table, path), 0);
                                       check(*table);
                                     }),
            10);
}

const auto kOpenTable = [](auto& table, const std::string& path) { return table.Open(path); };
const auto kOpenProfiles = [](auto& table, const std::string& path) {
  return table.Open(path, kOpenRestore);
};

// Every name is found, and nothing else.
const auto kNamesAreFound = [](auto& table) {
  if (!table.strings()->isOpen()) return;  // a pack has closed them
  for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
    const std::string name(table.NameView(number));
    ASSERT_EQ(table.Find(name), number) << name;
  }
  for (const std::string& name : {kFirst, kSecond, kThird}) {
    const int number = table.Find(name);
    if (number >= 0) {
      ASSERT_EQ(table.NameView(number), name);
    }
  }
};

TEST(TableWithoutMemory, FindsItsNames) {
  const auto fill = [](SiteUrlDB& table) {
    ASSERT_EQ(table.Add(kFirst), 0);
    ASSERT_EQ(table.Add(kText), 1);
  };
  FailEach<SiteUrlDB>(
      kOpenTable, fill,
      [](SiteUrlDB& table) {
        table.Add(kSecond);
        table.Delete(0);
        table.Pack();
        table.Add(kThird);
      },
      kNamesAreFound);
  FailEach<SiteUrlDB>(
      kOpenTable, fill,
      [](SiteUrlDB& table) {
        table.Clear();
        table.Add(kSecond);
      },
      kNamesAreFound);
}

TEST(TableWithoutMemory, KeepsTheTextsOfItsRecords) {
  FailEach<SitePathDB>(
      kOpenTable, [](SitePathDB& table) { table.Add(kFirst); },
      [](SitePathDB& table) {
        SitePathRec record;
        std::string text;
        std::vector<std::int32_t> ids;
        table.SetText(0, &SitePathRec::title, kText);
        table.GetText(0, &SitePathRec::title, text);
        if (table.Get(0, record) < 0 || table.SetList(record, kIds) < 0) return;
        table.Update(record);
        table.GetList(record, ids);
        table.Name(0, text);
        table.Delete(0);
      },
      [](SitePathDB& table) {
        SitePathRec record;
        std::string text;
        if (table.Get(0, record) == 0 && record.title >= 0) {
          EXPECT_EQ(table.Text(record.title, text), 0);
          EXPECT_EQ(text, kText);
        }
      });
}

TEST(TableWithoutMemory, FindsItsLinksByEitherEnd) {
  const UrlID page(kKindPath, 5), target(kKindPath, 900), any = kAnyUrlID;
  const auto fill = [&](SiteLinkDB& table) {
    for (int i = 0; i < 5; ++i) ASSERT_EQ(table.Add(kText, page, {kKindPath, i}, 1), i);
  };
  const auto use = [&](SiteLinkDB& table) {
    std::vector<int> numbers;
    table.CountFrom(page);
    table.CountTo(target);
    table.Add(kFirst, page, target, kSecond, 1);
    table.Add(kFirst, page, target, kSecond, 1);
    table.Query(page, any, numbers);
    table.Add(kFirst, {kKindPath, 1 << 30}, target, 1);
    table.DeleteAll(0);
    table.IsTarget(target);
    table.First(any, target);
  };
  FailEach<SiteLinkDB>(kOpenTable, fill, use, [&](SiteLinkDB& table) {
    SiteLinkRec link;
    std::vector<int> numbers, found;
    int count = 0;
    for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
      ASSERT_EQ(table.Get(number, link), 0);
      ASSERT_EQ(table.Query(link.from, link.to, found), 1) << number;
      ASSERT_EQ(found[0], number);
      count += link.from == page ? 1 : 0;
    }
    EXPECT_EQ(table.CountFrom(page), count);
    EXPECT_EQ(table.Query(page, any, numbers), count);
    EXPECT_EQ(table.CountTo(target), table.Query(any, target, numbers));
  });
}

TEST(TableWithoutMemory, KnowsWhichProfilesThereAre) {
  const auto fill = [](auto& table) { ASSERT_EQ(table.Add(kFirst), 0); };
  const auto check = [](auto& table) {
    kNamesAreFound(table);
    const int number = table.Find(kFirst);
    EXPECT_EQ(table.Add(kFirst) < 0, number >= 0);
  };
  const auto use = [](auto& table) {
    table.Add(kSecond);
    table.Rename(0, kThird);
    table.Copy(0, kFirst);
    table.Delete(0);
  };
  FailEach<SiteSiteProfDB>(
      kOpenProfiles, fill,
      [&](SiteSiteProfDB& table) {
        table.SetFolder(0, 1, kText);
        use(table);
      },
      check);
  FailEach<SiteServProfDB>(
      kOpenProfiles, fill,
      [&](SiteServProfDB& table) {
        std::string password;
        table.SetPassword(0, &SiteServRec::password, kText);
        table.GetPassword(0, &SiteServRec::password, password);
        use(table);
      },
      check);
}

}  // namespace
}  // namespace zvrsit
