#include "legacy/sit_pair_db.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

const UrlID kA{2, 0};
const UrlID kB{2, 1};
const UrlID kC{3, 5};

class PairFile : public ::testing::Test {
 protected:
  PairFile() : db(folder.path("links.dat"), SitPairDB::kLinkFile) {}

  std::string Header() const { return ToHex(folder.read("links.dat").substr(0, 8)); }
  // The memory of the last query belongs to the process.
  void AskForSomethingElse() { db.Find({9, 9}, {9, 9}); }

  TempFolder folder;
  SitPairDB db;
};

TEST_F(PairFile, AddingAgainRaisesTheCountUnlessThePairWasTheLastQuery) {
  EXPECT_EQ(db.Add(kA, kB), 0);
  AskForSomethingElse();
  EXPECT_EQ(db.Add(kA, kB), 0);
  EXPECT_EQ(db.Read(0)->refCount, 2);
  EXPECT_EQ(db.Add(kA, kB), 1) << "the pair was the last query, so a second record is made";
  db.Find(kA, kB);
  EXPECT_EQ(db.Add(kA, kB), 2);
}

TEST_F(PairFile, AQueryOfAnotherStoreRestartsTheEnumeration) {
  db.Add(kA, kB);
  db.Add(kA, kC);
  SitPairDB other(folder.path("rels.dat"), SitPairDB::kRelationFile);
  EXPECT_EQ(other.storeTag(), 128u);
  EXPECT_EQ(db.Find(kA, kAnyUrlID)->to, kB);
  other.Find(kB, kAnyUrlID);
  EXPECT_EQ(db.Find(kA, kAnyUrlID)->to, kB) << "back at the start";
}

TEST_F(PairFile, DeletingKeepsTheStoredCountAboveZero) {
  db.Add(kA, kB);
  AskForSomethingElse();
  db.Add(kA, kB);
  const std::string before = folder.read("links.dat");
  auto record = db.Read(0);
  EXPECT_EQ(db.Delete(*record, false), 1);
  EXPECT_EQ(folder.read("links.dat"), before) << "the lowered count stays in memory";
  EXPECT_EQ(db.Delete(*record, false), 0);
  EXPECT_EQ(record->id, -1);
  EXPECT_EQ(db.Delete(*record, false), 0) << "its count is below 1";
  EXPECT_EQ(Header(), "01 00 00 00 00 00 00 00");
  EXPECT_EQ(ToHex(folder.read("links.dat").substr(8, 4)), "ff ff ff ff");
  EXPECT_TRUE(db.Matching(kA, kB).empty());
}

TEST_F(PairFile, ADeletedRecordThatWasLoadedMatchesAndGivesNull) {
  for (int i = 0; i < 3; ++i) db.Add(kA, {2, 10 + i});
  auto middle = db.Read(1);
  db.Delete(*middle, true);
  db.Open(folder.path("links.dat"), SitPairDB::kLinkFile);
  AskForSomethingElse();
  EXPECT_EQ(db.Find(kA, kAnyUrlID)->id, 0);
  EXPECT_EQ(db.Find(kA, kAnyUrlID), nullptr);
  EXPECT_EQ(db.Find(kA, kAnyUrlID)->id, 2);
  EXPECT_EQ(db.Matching(kA, kAnyUrlID), (std::vector<int>{0, 2}));
}

TEST_F(PairFile, PackingRenumbersRecordsAndKeepsStringIds) {
  for (int i = 0; i < 3; ++i) {
    const int id = db.Add(kA, {2, 10 + i});
    auto record = db.Read(id);
    record->asIsUrlId = db.AddString(("page" + std::to_string(i)).c_str());
    EXPECT_EQ(db.Write(*record), 36);
  }
  auto middle = db.Read(1);
  db.DeleteString(middle->asIsUrlId);
  db.Delete(*middle, true);
  EXPECT_EQ(db.Pack(true), 2);
  EXPECT_EQ(Header(), "02 00 00 00 02 00 00 00");
  EXPECT_EQ(db.Read(1)->id, 1);
  EXPECT_EQ(db.Read(1)->asIsUrlId, 2);
  EXPECT_EQ(db.GetString(2), "page2");
  EXPECT_EQ(db.Read(2), nullptr);
  EXPECT_FALSE(folder.has("links.dat_pack"));

  folder.makeFolder("links.dat_pack");
  EXPECT_EQ(db.Pack(true), -1) << "the copy cannot be made";
  EXPECT_EQ(db.Read(1)->asIsUrlId, 2);
}

TEST_F(PairFile, RemoveLeavesAnEmptyStore) {
  db.Add(kA, kB);
  db.AddString("text");
  EXPECT_EQ(db.Remove(), 0);
  EXPECT_EQ(db.GetString(0), std::nullopt);
  EXPECT_EQ(db.Add(kA, kB), 0);
  db.Close();
  EXPECT_EQ(db.Remove(), 0) << "both files are still there";
  db.Close();
  std::filesystem::remove(folder.native("links.daS"));
  EXPECT_EQ(db.Remove(), -1);
  EXPECT_FALSE(db.IsOpen());
}

TEST(PairFiles, AStoreThatCannotBeOpenedFailsInEveryCall) {
  TempFolder folder;
  folder.makeFolder("links.dat");
  SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
  EXPECT_FALSE(db.IsOpen());
  EXPECT_NE(db.lastErrno(), 0);
  EXPECT_EQ(db.Count(), -1);
  EXPECT_EQ(db.Read(0), nullptr);
  EXPECT_EQ(db.Add(kA, kB), 0) << "the id is given all the same";
  SitPairRec record;
  record.id = 0;
  EXPECT_EQ(db.Delete(record, true), -1);
  EXPECT_EQ(db.Pack(true), -1);
  db.Close();
  db.Close();
}

TEST(PairFiles, ANegativeHeaderHidesTheRecordsAndDestroysNone) {
  TempFolder folder;
  const std::string header = FromHex("ffffffff 01000000");
  folder.write("links.dat", header + std::string(36, '\1'));
  SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
  EXPECT_TRUE(db.Matching(kAnyUrlID, kAnyUrlID).empty());
  EXPECT_EQ(db.Count(), -1);
  // Numbers go on from the header; what it hides is not written over.
  EXPECT_EQ(db.Add(kA, kB), -1);
  EXPECT_EQ(db.Add(kA, kC), 0);
  EXPECT_EQ(folder.read("links.dat").substr(8), std::string(36, '\1'));
  EXPECT_EQ(db.Add(kB, kC), 1);
  EXPECT_EQ(db.Read(1)->from, kB);
  EXPECT_EQ(folder.read("links.dat").substr(8, 36), std::string(36, '\1'));
}

TEST(PairFiles, TheLiveCountIsWrittenAsZeroWhileItIsBelow) {
  TempFolder folder;
  folder.write("links.dat", FromHex("01000000 00000000"
                                    "00000000 01000000 ffffffff ffffffff"
                                    "02000000 05000000 02000000 06000000 01000000"));
  SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
  EXPECT_EQ(db.Delete(*db.Read(0), true), 0);
  EXPECT_EQ(folder.read("links.dat").substr(0, 8), FromHex("01000000 00000000"));
  db.Add(kA, kB);
  EXPECT_EQ(folder.read("links.dat").substr(0, 8), FromHex("02000000 00000000"));
}

TEST(PairFiles, AHeaderThatCountsTooManyRecordsDoesNotInflateTheFile) {
  TempFolder folder;
  folder.write("links.dat", FromHex("00000001 00000001"));
  SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
  EXPECT_EQ(db.Add(kA, kB), 0x01000000) << "the number that the header tells";
  EXPECT_EQ(db.Add(kB, kA), 0x01000001);
  EXPECT_EQ(db.Read(0x01000001), nullptr);
  EXPECT_EQ(db.lastErrno(), EFBIG);
  EXPECT_EQ(folder.read("links.dat").size(), 8u);
}

// A record is written before it is counted, so after a crash there may be one more.
TEST(PairFiles, AreWholeWithOneRecordMoreThanTheyCount) {
  TempFolder folder;
  for (const int count : {1, 2, 3, 4}) {
    SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
    for (const UrlID& to : {kA, kB, kC}) db.Add(kA, to);
    ASSERT_EQ(db.Close(), 0);
    folder.write("links.dat", Word(count) + folder.read("links.dat").substr(4));
    SitPairDB cut(folder.path("links.dat"), SitPairDB::kLinkFile);
    EXPECT_EQ(cut.IsWhole(), count == 2 || count == 3) << count;
  }
}

// The plain walk over a linked list, as the rules of Find are told.
class PlainStore {
 public:
  struct Node {
    int id;
    UrlID from;
    UrlID to;
  };

  int Find(const UrlID& from, const UrlID& to) {
    if (lastFrom != from || lastTo != to) {
      cursor = nodes.empty() ? -1 : 0;
      lastFrom = from;
      lastTo = to;
    }
    if (cursor < 0) {
      cursor = nodes.empty() ? -1 : 0;
      return -1;
    }
    for (;;) {
      const Node& node = nodes[static_cast<std::size_t>(cursor)];
      const bool last = cursor + 1 == static_cast<int>(nodes.size());
      cursor = last ? -1 : cursor + 1;
      const bool match =
          (from == kAnyUrlID || from == node.from) && (to == kAnyUrlID || to == node.to);
      if (match) return node.id;
      if (last) {
        cursor = 0;
        return -1;
      }
    }
  }

  int Add(const UrlID& from, const UrlID& to) {
    const int saved = cursor;
    cursor = -1;
    int id = Find(from, to);
    cursor = saved;
    if (id < 0) nodes.push_back({id = nextId++, from, to});
    return id;
  }

  void Delete(int id) {
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      if (nodes[i].id != id) continue;
      const int at = static_cast<int>(i);
      nodes.erase(nodes.begin() + at);
      // A cursor on the node goes to its successor.
      if (cursor > at) --cursor;
      if (cursor >= static_cast<int>(nodes.size())) cursor = -1;
      return;
    }
  }

  std::vector<Node> nodes;
  int cursor = -1;
  int nextId = 0;
  UrlID lastFrom = kAnyUrlID;
  UrlID lastTo = kAnyUrlID;
};

// The index gives the same answers in the same order as the walk, whatever comes between.
TEST(PairFiles, TheIndexAnswersAsAWalkWould) {
  for (unsigned seed = 1; seed <= 8; ++seed) {
    TempFolder folder;
    ForgetLastPairQuery();
    SitPairDB db(folder.path("links.dat"), SitPairDB::kLinkFile);
    PlainStore plain;
    std::mt19937 random(seed);
    const auto end = [&](bool wild) {
      const int number = static_cast<int>(random() % 4);
      return wild && random() % 3 == 0 ? kAnyUrlID : UrlID(2, number);
    };
    UrlID from = kA;
    UrlID to = kB;
    for (int i = 0; i < 4000; ++i) {
      const unsigned action = random() % 10;
      if (action == 0) {
        from = end(true);
        to = end(true);
      }
      if (action == 1) {
        const UrlID newFrom = end(false);
        const UrlID newTo = end(false);
        ASSERT_EQ(db.Add(newFrom, newTo), plain.Add(newFrom, newTo)) << seed << " " << i;
      } else if (action == 2 && !plain.nodes.empty()) {
        const int id = plain.nodes[random() % plain.nodes.size()].id;
        auto record = db.Read(id);
        ASSERT_EQ(db.Delete(*record, true), 0);
        plain.Delete(id);
      } else {
        const auto record = db.Find(from, to);
        ASSERT_EQ(record ? record->id : -1, plain.Find(from, to)) << seed << " " << i;
      }
    }
  }
}

}  // namespace
}  // namespace zvrsit::test
