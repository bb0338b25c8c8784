#include "storage/records.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/temp_folder.h"
#include "util/little_endian.h"

namespace zvrsit {
namespace {

// Runs of a word: {-1, 2} is two words of -1.
template <class Rec>
void ExpectFreshWords(std::initializer_list<std::pair<int, int>> runs) {
  std::string expected;
  for (const auto& [value, count] : runs) {
    for (int i = 0; i < count; ++i) expected += test::Word(static_cast<std::uint32_t>(value));
  }
  char slot[128] = {};
  Rec record;
  EXPECT_EQ(record.Serialize(slot), static_cast<int>(expected.size()));
  EXPECT_EQ(test::ToHex({slot, expected.size()}), test::ToHex(expected));
  EXPECT_EQ(record.Serialize(nullptr), -1);
  EXPECT_EQ(record.Deserialize(nullptr), -1);
}

TEST(Record, FreshOnesHaveTheWordsOfTheirLayout) {
  ExpectFreshWords<SiteBaseRec>({{-1, 1}});
  ExpectFreshWords<SiteNodeRec>({{-1, 2}});
  ExpectFreshWords<SiteUrlRec>({{-1, 2}, {0, 2}});
  ExpectFreshWords<SiteRelRec>({{-1, 5}});
  ExpectFreshWords<SiteLinkRec>({{-1, 6}, {0, 1}, {1, 1}, {-1, 2}});
  ExpectFreshWords<SitePathRec>({{-1, 2}, {1, 1}, {-1, 1}, {0, 7}, {-1, 9}});
  ExpectFreshWords<SiteSiteRec>(
      {{-1, 2}, {0, 1}, {-1, 1}, {0, 1}, {-1, 1}, {0, 1}, {-1, 1}, {-1, 15}});
  ExpectFreshWords<SiteServRec>({{-1, 6}, {0, 1}, {-1, 3}, {0, 3}, {-1, 4}});
}

// A record whose k-th word is k, read and written again.
template <class Rec>
Rec Numbered(int count) {
  char slot[128] = {};
  char again[128] = {};
  for (int k = 0; k < count; ++k) StoreLE32(slot + k * 4, k);
  Rec record;
  EXPECT_EQ(record.Deserialize(slot), count * 4);
  EXPECT_EQ(record.Serialize(again), count * 4);
  EXPECT_EQ(test::ToHex({again, sizeof again}), test::ToHex({slot, sizeof slot}));
  return record;
}

TEST(Record, KeepsEveryWordInItsPlace) {
  Numbered<SiteUrlRec>(4);
  const auto link = Numbered<SiteLinkRec>(10);
  EXPECT_EQ(link.from.kind * 4, SiteRelRec::kFromAt);
  EXPECT_EQ(link.to.kind * 4, SiteRelRec::kToAt);
  EXPECT_EQ(link.text * 4, SiteLinkRec::kTextAt);
  EXPECT_EQ(link.count * 4, SiteLinkRec::kCountAt);
  EXPECT_EQ(link.alternative * 4, SiteLinkRec::kAlternativeAt);
  const auto path = Numbered<SitePathRec>(20);
  EXPECT_EQ(path.membership * 4, SitePathRec::kMembershipAt);
  EXPECT_EQ(path.metaText, 18);
  EXPECT_EQ(Numbered<SiteSiteRec>(23).relFile, 22);
  EXPECT_EQ(Numbered<SiteServRec>(17).asciiSuffix, 16);
}

}  // namespace
}  // namespace zvrsit
