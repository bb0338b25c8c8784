#include "storage/site_fix_rec_db.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "storage/record_file.h"

namespace zvrsit {
namespace {

using test::Words;

class FixedFile : public test::RecordFile<SiteFixRecDB> {
 protected:
  FixedFile() { Reopen(); }
  void Reopen(int length = SiteNodeRec::kSlotLength, int type = SiteNodeRec::kRecordType) {
    RecordFile::Reopen(length, type);
  }
  int Add(int name) {
    SiteNodeRec record;
    record.name = name;
    const int id = db_->Add(&record);
    EXPECT_EQ(record.id, id);
    return id;
  }
  // The name of a record, -1 when there is none.
  int Name(int id) {
    SiteNodeRec record;
    return db_->Get(id, &record) < 0 ? -1 : record.name;
  }
  static std::string Slot(int id, int name) { return Words({id, name, 0}); }
};
INSTANTIATE_TEST_SUITE_P(Modes, FixedFile, testing::Bool(), test::ModeName);

TEST_P(FixedFile, TakesTheLaterOfTwoSlotsAndIgnoresStrayIds) {
  OpenOn(Head({2, 5}) + Slot(0, 10) + Slot(2, 11) + Slot(-1, 12) + Slot(0, 13) + Slot(-7, 14));
  EXPECT_EQ(Name(0), 13);
  EXPECT_EQ(Name(1), -1);
  EXPECT_EQ(Name(2), -1);
  EXPECT_EQ(db_->slotCount(), 5);
  EXPECT_EQ(db_->liveCount(), 1);
  EXPECT_EQ(db_->NextId(0), 0);
  EXPECT_EQ(db_->NextId(1), -1);
}

// Those that were there at open and changed their source, and those that came since, included.
TEST_P(FixedFile, FindsRecordsByWhereTheyComeFrom) {
  if (!GetParam()) GTEST_SKIP() << "only a file in memory does";
  Reopen(SiteRelRec::kSlotLength, SiteRelRec::kRecordType);
  constexpr int kRecords = 5000;
  std::vector<int> sources;
  const auto put = [&](int id, int source) {
    SiteRelRec record;
    record.id = id;
    record.from = {kKindPath, source};
    ASSERT_GE(id < 0 ? db_->Add(&record) : db_->Update(&record), 0);
    const auto at = static_cast<std::size_t>(record.id);
    sources.resize(std::max(sources.size(), at + 1), -1);
    sources[at] = source;
  };
  const auto check = [&](int source) {
    std::vector<int> expected, found;
    for (int id = 0; id < db_->idCount(); ++id) {
      if (sources[static_cast<std::size_t>(id)] == source) expected.push_back(id);
    }
    const int looked = db_->ForEachFrom({kKindPath, source}, [&](int id) { found.push_back(id); });
    std::sort(found.begin(), found.end());  // numbers are used again after a Pack
    ASSERT_EQ(found, expected) << source;
    ASSERT_GE(looked, static_cast<int>(found.size()));
    ASSERT_LE(looked, db_->slotCount());
  };
  for (int id = 0; id < kRecords; ++id) put(-1, id / 20);
  for (int session = 0; session < 3; ++session) {
    for (const int source : {0, 100, 249, 250, 1 << 30, -5}) check(source);
    put(1500 * session + 700, 1 << 30);
    put(-1, 0);
    ASSERT_EQ(db_->Delete(2000 + session), 0);
    sources[static_cast<std::size_t>(2000 + session)] = -1;
    for (const int source : {0, 100, 1 << 30}) check(source);
    if (session == 1) {
      ASSERT_EQ(db_->Pack(), 0);
      check(100);
    }
    Reopen(SiteRelRec::kSlotLength, SiteRelRec::kRecordType);
  }
  // Most of a file of several zones need not be looked at.
  EXPECT_LT(db_->ForEachFrom({kKindPath, 100}, [](int) {}), kRecords / 2);
  EXPECT_GT(db_->ForEachFrom({9, 100}, [](int) { FAIL(); }), 0);
}

TEST_P(FixedFile, RefusesBadNumbersAndThrowsForNumberZeroOfAnEmptyFile) {
  SiteNodeRec record;
  EXPECT_THROW(
      try { (void)db_->Get(0, &record); } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "invalid vector<T> subscript");
        throw;
      },
      std::out_of_range);
  EXPECT_THROW((void)db_->Delete(0), std::out_of_range);
  record.id = 0;
  EXPECT_THROW((void)db_->Update(&record), std::out_of_range);
  Add(10);
  for (const int id : {-1, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(db_->Get(id, &record), -1);
    EXPECT_EQ(db_->Delete(id), -1);
    record.id = id;
    EXPECT_EQ(db_->Update(&record), -1);
  }
  EXPECT_EQ(db_->Delete(0), 0);
  record.id = 0;
  EXPECT_EQ(db_->Delete(0), -1);
  EXPECT_EQ(db_->Get(0, &record), -1);
  EXPECT_EQ(db_->Update(&record), -1);
  EXPECT_EQ(db_->Get<SiteNodeRec>(0, nullptr), -1);
  EXPECT_EQ(db_->Add<SiteNodeRec>(nullptr), -1);
  EXPECT_EQ(db_->Update<SiteNodeRec>(nullptr), -1);
  ASSERT_EQ(db_->Close(), 0);
  EXPECT_EQ(db_->Add(&record), -1);
  EXPECT_EQ(db_->Get(0, &record), -1);
  EXPECT_EQ(db_->Delete(0), -1);
  EXPECT_EQ(db_->Pack(), -1);
}

TEST_P(FixedFile, ReadsAndWritesOnlyTheClassOfItsRecords) {
  Add(10);
  SiteUrlRec url;
  SiteBaseRec base;
  EXPECT_EQ(db_->Add(&url), -1);
  EXPECT_EQ(db_->Get(0, &url), -1);
  EXPECT_EQ(db_->Get(0, &base), 0);
}

// Longer than the buffer of a slot, and shorter than its number.
TEST_P(FixedFile, HoldsRecordsOfAnyLength) {
  for (const int length : {1000, 2}) {
    Closed();  // an open file cannot be removed everywhere
    std::filesystem::remove(folder_.native("t"));
    Reopen(length, SiteBaseRec::kRecordType);
    SiteBaseRec record;
    for (int i = 0; i < 5; ++i) EXPECT_EQ(db_->Add(&record), i);
    EXPECT_EQ(db_->Delete(2), 0);
    ASSERT_EQ(db_->Pack(), 0);
    EXPECT_EQ(db_->liveCount(), 4);
    EXPECT_EQ(Closed().size(), 24u + 4u * static_cast<std::size_t>(length));
  }
  SiteFixRecDB none(folder_.path("t"), 0, 2, GetParam());
  EXPECT_EQ(none.Open(), -1);
}

// A file of no known type writes the id alone, and finds nothing again at open.
TEST_P(FixedFile, OfAnUnknownTypeHoldsIdsOnly) {
  Reopen(12, 9);
  EXPECT_EQ(Add(10), 0);
  EXPECT_EQ(Name(0), -1);
  Reopen(12, 9);
  EXPECT_EQ(db_->Delete(0), -1);
  EXPECT_EQ(Closed(), Head({1, 1}) + Slot(0, 0));
}

// The numbers handed out, against the rule told in the simplest way.
TEST_P(FixedFile, HandsOutNumbersByTheRuleThroughRandomLives) {
  std::mt19937 random(7);
  std::vector<int> model;  // name by id, -1 for none
  int slots = 0;
  int name = 0;
  for (int step = 0; step < 3000; ++step) {
    const auto choice = random() % 100;
    if (choice < 50) {
      int id = static_cast<int>(model.size());
      if (slots != id && slots >= 1) {
        for (int i = id - 1; i >= 0; --i) {
          if (i < slots && model[static_cast<std::size_t>(i)] < 0) id = i;
        }
      }
      if (id == static_cast<int>(model.size())) model.push_back(-1);
      model[static_cast<std::size_t>(id)] = ++name;
      ++slots;
      ASSERT_EQ(Add(name), id);
    } else if (choice < 96 && !model.empty()) {
      const auto id = random() % model.size();
      ASSERT_EQ(db_->Delete(static_cast<int>(id)), model[id] < 0 ? -1 : 0);
      model[id] = -1;
    } else if (choice < 98) {
      ASSERT_EQ(db_->Pack(), 0);
      slots = 0;
      for (const int live : model) slots += live >= 0 ? 1 : 0;
    } else {
      Reopen();
    }
    ASSERT_EQ(db_->slotCount(), slots);
  }
  for (std::size_t id = 0; id < model.size(); ++id) {
    ASSERT_EQ(Name(static_cast<int>(id)), model[id]);
  }
}

TEST_P(FixedFile, PackLosesNothingWhenACallFails) {
  constexpr int kLength = 100000;
  Reopen(kLength, SiteNodeRec::kRecordType);
  const auto slot = [](int id, int name) { return Slot(id, name) + std::string(kLength - 12, 0); };
  FailEachCallOfPack(
      Head({4, 4}) + slot(0, 10) + slot(1, 11) + slot(2, 12) + slot(3, 13),
      [this] { return db_->Delete(1); }, slot(0, 10) + slot(-1, 11) + slot(2, 12) + slot(3, 13),
      Head({4, 3}) + slot(0, 10) + slot(2, 12) + slot(3, 13));
}

TEST_P(FixedFile, PacksOverACutFileAsItOpensOne) {
  PackOverLeftovers(Head({0, 0}));
}

}  // namespace
}  // namespace zvrsit
