#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_rel_db.h"

namespace zvrsit {
namespace {

using test::TempFolder;
using Numbers = std::vector<int>;

UrlID Page(int id) {
  return {kKindPath, id};
}

template <class Table>
Numbers Query(Table& table, const UrlID& from, const UrlID& to) {
  Numbers numbers;
  const int count = table.Query(from, to, numbers);
  EXPECT_EQ(count, static_cast<int>(numbers.size()));
  return numbers;
}

class LinkTable : public testing::Test {
 protected:
  LinkTable() { EXPECT_EQ(table_.Open(folder_.path("LR")), 0); }
  SiteLinkRec Record(int number) {
    SiteLinkRec record;
    EXPECT_EQ(table_.Get(number, record), 0);
    return record;
  }

  TempFolder folder_;
  SiteLinkDB table_;
};

TEST_F(LinkTable, CountsALinkThatIsEqualInEverything) {
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), "alt", 0x40, 100), 0);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), "alt", 0x40, 200), 0);
  EXPECT_EQ(table_.Add("b.htm", Page(0), Page(1), "alt", 0x40), 1);
  EXPECT_EQ(table_.Add("a.htm", Page(2), Page(1), "alt", 0x40), 2);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(2), "alt", 0x40), 3);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), "other", 0x40), 4);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), "alt", 0x200), 5);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), 0x40), 6);
  EXPECT_EQ(table_.Add("a.htm", Page(0), Page(1), "", 0x40), 6);
  EXPECT_EQ(table_.Add("", Page(0), Page(1), 0x40), -1);
  // The any-identifier as a source is one of its own.
  EXPECT_EQ(table_.Add("a.htm", kAnyUrlID, Page(1), "alt", 0x40), 7);
  EXPECT_EQ(table_.Add("a.htm", kAnyUrlID, Page(1), "alt", 0x40), 7);
  EXPECT_EQ(Record(7).count, 2);
  EXPECT_EQ(Record(0).count, 2);
  EXPECT_EQ(Record(0).offset, 100);
  EXPECT_EQ(Record(6).count, 2);
  EXPECT_EQ(Record(6).alternative, -1);
  EXPECT_EQ(Record(6).offset, -1);
  EXPECT_EQ(Record(1).from, Page(0));
  EXPECT_EQ(table_.TextView(Record(1).text), "b.htm");
}

TEST_F(LinkTable, DeletesOneOccurrenceAtATime) {
  for (int i = 0; i < 3; ++i) EXPECT_GE(table_.Add("a", Page(0), Page(1), "alt", 1), 0);
  EXPECT_EQ(table_.Delete(-1), -1);
  for (const int left : {2, 1}) {
    EXPECT_EQ(table_.Delete(0), 0);
    EXPECT_EQ(Record(0).count, left);
  }
  EXPECT_EQ(table_.Delete(0), 0);
  EXPECT_EQ(table_.Delete(0), -1);
  EXPECT_EQ(table_.strings()->FindString("a"), -1);
  EXPECT_EQ(table_.strings()->FindString("alt"), -1);
  EXPECT_EQ(Query(table_, Page(0), kAnyUrlID), Numbers{});
  EXPECT_EQ(table_.Add("a", Page(0), Page(1), "alt", 1), 1);
  EXPECT_EQ(Record(1).count, 1);
  EXPECT_GE(table_.Add("a", Page(0), Page(1), "alt", 1), 0);
  EXPECT_EQ(table_.DeleteAll(1), 0);
  EXPECT_EQ(table_.NextNumber(0), -1);
}

TEST_F(LinkTable, FindsLinksOfAnotherSessionEqual) {
  EXPECT_GE(table_.Add("a", Page(0), Page(1), 1), 0);
  ASSERT_EQ(table_.Close(), 0);
  EXPECT_EQ(table_.Open(folder_.path("LR")), -1);
  SiteLinkDB again;
  ASSERT_EQ(again.Open(folder_.path("LR")), 0);
  EXPECT_EQ(again.Add("a", Page(0), Page(1), 1), 0);
  EXPECT_EQ(again.Add("a", Page(3), Page(1), 1), 1);
  EXPECT_EQ(again.Add("a", Page(0), Page(1), 1), 0);
  EXPECT_EQ(Query(again, kAnyUrlID, Page(1)), (Numbers{0, 1}));
  Numbers numbers = {7};
  EXPECT_EQ(table_.Query(kAnyUrlID, kAnyUrlID, numbers), -1);
  EXPECT_EQ(table_.Add("a", Page(0), Page(1), 1), -1);
}

// Queries of every shape against a plain list, through adds, deletes, packs and sessions, in a
// small table and in one of several zones.
class QueriedLinkTable : public LinkTable, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Sizes, QueriedLinkTable, testing::Values(0, 3000));

TEST_P(QueriedLinkTable, AnswersQueriesAsAPlainListDoes) {
  auto table = std::make_unique<SiteLinkDB>();
  ASSERT_EQ(table->Open(folder_.path("other")), 0);
  std::mt19937 random(3);
  struct Pair {
    UrlID from, to;
  };
  std::map<int, Pair> model;  // the live ones
  const auto end = [&] {
    // Some share bits of a zone's filter; the last two are as damaged files have them.
    constexpr int kSomeIds[] = {0, 2, 3, 40, 2050, 2088, 1 << 30, -7};
    return UrlID(random() % 2 ? kKindPath : 9, kSomeIds[random() % 8]);
  };
  for (int number = 0; number < GetParam(); ++number) {
    const Pair pair{Page(number / 30), Page(number % 7)};
    ASSERT_EQ(table->Add("text", pair.from, pair.to, number), number);
    model.emplace(number, pair);
  }
  for (int step = 0; step < 3000; ++step) {
    const auto choice = random() % 100;
    if (choice < 45) {
      const Pair pair{end(), end()};
      const int number = table->Add("text " + std::to_string(step), pair.from, pair.to, 1);
      ASSERT_GE(number, 0);
      ASSERT_TRUE(model.emplace(number, pair).second);
    } else if (choice < 80 && !model.empty()) {
      const int number = static_cast<int>(random() % static_cast<unsigned>(table->Count()));
      ASSERT_EQ(table->Delete(number), model.erase(number) > 0 ? 0 : -1);
    } else if (choice < 98) {
      const UrlID from = random() % 3 ? end() : kAnyUrlID;
      const UrlID to = random() % 3 == 0 ? end() : kAnyUrlID;
      Numbers expected;
      for (const auto& [number, pair] : model) {
        if ((from == kAnyUrlID || pair.from == from) && (to == kAnyUrlID || pair.to == to)) {
          expected.push_back(number);
        }
      }
      ASSERT_EQ(Query(*table, from, to), expected);
      ASSERT_EQ(table->First(from, to), expected.empty() ? -1 : expected[0]);
      const UrlID target = end();
      const auto leadsThere = [&](const auto& row) { return row.second.to == target; };
      ASSERT_EQ(table->IsTarget(target), std::ranges::any_of(model, leadsThere));
    } else if (choice == 98) {
      ASSERT_EQ(table->Pack(), 0);
      if (step % 5 != 0) continue;
      ASSERT_EQ(table->Clear(), 0);
      model.clear();
    } else {
      ASSERT_EQ(table->Close(), 0);
      table = std::make_unique<SiteLinkDB>();
      ASSERT_EQ(table->Open(folder_.path("other")), 0);
    }
  }
}

// Each link stands in its page twice, and some records are dead.
void MakeTables(const TempFolder& folder) {
  constexpr int kCount = 60;
  SiteLinkDB links;
  SiteRelDB rels;
  ASSERT_EQ(links.Open(folder.path("LR")), 0);
  ASSERT_EQ(rels.Open(folder.path("RR")), 0);
  for (int i = 0; i < kCount; ++i) {
    const int link = i / 2;
    const std::string text = "some target " + std::to_string(link);
    EXPECT_GE(links.Add(text, Page(link * 6 / kCount), Page(link % 5), link % 2 ? "alt" : "", 1),
              0);
    EXPECT_GE(rels.Add(Page(i), Page(i + 1)), 0);
  }
  ASSERT_EQ(links.DeleteAll(4), 0);
  ASSERT_EQ(rels.Delete(5), 0);
  ASSERT_EQ(links.Close(), 0);
  ASSERT_EQ(rels.Close(), 0);
}

TEST(ClearedTables, HaveTheBytesThatSingleDeletesLeave) {
  std::string left[2];
  for (const bool atOnce : {true, false}) {
    TempFolder folder;
    MakeTables(folder);
    SiteLinkDB links;
    SiteRelDB rels;
    ASSERT_EQ(links.Open(folder.path("LR")), 0);
    ASSERT_EQ(rels.Open(folder.path("RR")), 0);
    if (atOnce) {
      ASSERT_EQ(links.Clear(), 0);
      ASSERT_EQ(rels.Clear(), 0);
    } else {
      SiteLinkRec record;
      for (int number = 0; number < links.Count(); ++number) {
        while (links.Get(number, record) == 0) (void)links.Delete(number);
      }
      for (int number = 0; number < rels.Count(); ++number) (void)rels.Delete(number);
    }
    EXPECT_GE(links.Add("some target 3", Page(0), Page(1), 1), 0);
    EXPECT_EQ(Query(links, kAnyUrlID, kAnyUrlID).size(), 1u);
    EXPECT_EQ(Query(links, Page(0), Page(1)).size(), 1u);
    ASSERT_EQ(links.Flush(), 0);
    ASSERT_EQ(rels.Flush(), 0);
    for (const char* name : {"LR", "LS", "RR", "RS"}) left[atOnce] += folder.read(name);
  }
  EXPECT_TRUE(left[0] == left[1]);
  EXPECT_EQ(SiteRelDB().Add(Page(0), Page(1)), -1) << "not open";
}

}  // namespace
}  // namespace zvrsit
