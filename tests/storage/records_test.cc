#include "storage/records.h"

#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.h"
#include "util/little_endian.h"

namespace zvrsit {
namespace {

// "0*7" is seven words of 0.
std::string Words(std::initializer_list<std::pair<int, int>> runs) {
  std::string bytes;
  for (const auto& [value, count] : runs) {
    for (int i = 0; i < count; ++i) bytes += test::Word(static_cast<std::uint32_t>(value));
  }
  return bytes;
}

template <class Rec>
void ExpectFreshBytes(const std::string& expected) {
  char slot[128] = {};
  Rec record;
  EXPECT_EQ(record.Serialize(slot), static_cast<int>(expected.size()));
  EXPECT_EQ(test::ToHex({slot, expected.size()}), test::ToHex(expected));
  EXPECT_EQ(record.Serialize(nullptr), -1);
  EXPECT_EQ(record.Deserialize(nullptr), -1);
}

TEST(Record, FreshOnesHaveTheWordsOfTheirLayout) {
  ExpectFreshBytes<SiteBaseRec>(Words({{-1, 1}}));
  ExpectFreshBytes<SiteNodeRec>(Words({{-1, 2}}));
  ExpectFreshBytes<SiteUrlRec>(Words({{-1, 2}, {0, 2}}));
  ExpectFreshBytes<SiteRelRec>(Words({{-1, 5}}));
  ExpectFreshBytes<SiteLinkRec>(Words({{-1, 5}, {-1, 1}, {0, 1}, {1, 1}, {-1, 2}}));
  ExpectFreshBytes<SitePathRec>(Words({{-1, 2}, {1, 1}, {-1, 1}, {0, 7}, {-1, 1}, {-1, 8}}));
  ExpectFreshBytes<SiteSiteRec>(
      Words({{-1, 2}, {0, 1}, {-1, 1}, {0, 1}, {-1, 1}, {0, 1}, {-1, 1}, {-1, 10}, {-1, 5}}));
  ExpectFreshBytes<SiteServRec>(
      Words({{-1, 2}, {-1, 4}, {0, 1}, {-1, 3}, {0, 3}, {-1, 3}, {-1, 1}}));
}

// Reads a record whose k-th word is k and writes it again.
template <class Rec>
void ExpectEveryWordKept(int count) {
  char slot[128];
  char again[128];
  for (int k = 0; k < count; ++k) StoreLE32(slot + k * 4, k);
  Rec record;
  ASSERT_EQ(record.Deserialize(slot), count * 4);
  ASSERT_EQ(record.Serialize(again), count * 4);
  const auto size = static_cast<std::size_t>(count) * 4;
  EXPECT_EQ(test::ToHex({again, size}), test::ToHex({slot, size}));
}

TEST(Record, KeepsEveryWordInItsPlace) {
  ExpectEveryWordKept<SiteUrlRec>(4);
  ExpectEveryWordKept<SiteLinkRec>(10);
  ExpectEveryWordKept<SitePathRec>(20);
  ExpectEveryWordKept<SiteSiteRec>(23);
  ExpectEveryWordKept<SiteServRec>(17);

  char slot[128];
  for (int k = 0; k < 23; ++k) StoreLE32(slot + k * 4, k);
  SitePathRec path;
  path.Deserialize(slot);
  EXPECT_EQ(path.title, 3);
  EXPECT_EQ(path.membership, 9);
  EXPECT_EQ(path.listData, 11);
  EXPECT_EQ(path.metaText, 18);
  SiteLinkRec link;
  link.Deserialize(slot);
  EXPECT_EQ(link.to, UrlID(3, 4));
  EXPECT_EQ(link.count, 7);
  SiteSiteRec site;
  site.Deserialize(slot);
  EXPECT_EQ(site.useDocRoot, 4);
  EXPECT_EQ(site.folders[SiteSiteRec::kLiveUrl], 17);
  EXPECT_EQ(site.relFile, 22);
  SiteServRec serv;
  serv.Deserialize(slot);
  EXPECT_EQ(serv.firewall, 6);
  EXPECT_EQ(serv.lockDir, 12);
  EXPECT_EQ(serv.asciiSuffix, 16);
}

}  // namespace
}  // namespace zvrsit
