// A table whose file is as long as a file can be. It is sparse: nothing but its ends is on the
// disk.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/test_site.h"
#include "util/little_endian.h"

namespace zvrsit::test {
namespace {

// Puts a dead text behind the others, so long that kRoom bytes are left behind it: a file that is
// longer would be read whole where it could be mapped.
constexpr std::uint32_t kRoom = 5 << 20;
void FillUp(const std::string& textFile) {
  constexpr std::uint32_t kEnd = 0x7FFFFFFF - kRoom;
  std::string bytes = ReadWhole(textFile);
  const auto size = static_cast<std::uint32_t>(bytes.size());
  bytes += Word(0xFFFFFFFF) + Word(kEnd - size - 16) + Word(0) + Word(2);
  bytes.replace(20, 4, Word(static_cast<std::uint32_t>(LoadLE32(bytes.data() + 20)) + 1));
  bytes.replace(24, 4, Word(kEnd));
  WriteWhole(textFile, bytes);
  std::filesystem::resize_file(textFile, kEnd);
}

TEST(FullTable, TakesNoLinkLosesNothingAndHasRoomAfterPacking) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "a process of 32 bits has no room for it";
  TestSite site(LinkRules::Web);
  site.write("index.html", "<a href=a.html>a</a>");
  site.write("a.html", "<a href=index.html>i</a>");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildDB(1, nullptr), 0);
  const std::string before = site.Links();
  ASSERT_EQ(site.mgr->SiteClose(), 0);
  FillUp(site.folder().native("db/demo/LS"));

  site.mgr->SetMapsTables(true);  // else it would be read whole
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(site.Links(), before);
  site.write("a.html",
             "<a href=index.html>i</a><img src=a.gif alt=" + std::string(kRoom, 'a') + ">");
  EXPECT_EQ(site.mgr->Save(site.path("a.html"), nullptr), 0);  // links are passed over
  EXPECT_TRUE(site.mgr->IsFull());
  for (const char* link :
       {"index.html -> a.html a.html 40 1\n", "a.html -> index.html index.html 40 1\n"}) {
    EXPECT_NE(site.Links().find(link), std::string::npos);
  }
  SiteChanges changes;
  EXPECT_EQ(site.mgr->CompareWithDisk(changes), 0);
  EXPECT_EQ(changes.unread, std::vector<std::string>{site.path("a.html")});
  EXPECT_EQ(site.mgr->SiteRebuildDB(1, nullptr), 0);
  EXPECT_EQ(site.mgr->GetSiteProfRebuildState(), 1);  // it failed

  ASSERT_EQ(site.mgr->PackSite(), 0);
  EXPECT_FALSE(site.mgr->IsFull());
  EXPECT_EQ(site.mgr->SiteRebuildDB(1, nullptr), 0);
  EXPECT_EQ(site.mgr->GetSiteProfRebuildState(), 2);
  EXPECT_EQ(site.Record("a.html").unread, SitePathRec::kRead);
  EXPECT_NE(site.Links().find("a.gif"), std::string::npos);
  EXPECT_EQ(site.mgr->SiteClose(), 0);
  EXPECT_LT(std::filesystem::file_size(site.folder().native("db/demo/LS")), kRoom + 1000);
}

}  // namespace
}  // namespace zvrsit::test
