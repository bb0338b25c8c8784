// Looking into other sites, and the operations that change nothing.
#include <gtest/gtest.h>

#include "manager/answers.h"
#include "support/test_site.h"

namespace zvrsit {
namespace {

// The number of entries, which is all that these lists tell; -1 for null.
int CountEntries(std::vector<std::string*>* list) {
  const std::unique_ptr<std::vector<std::string*>> owned(list);
  return owned == nullptr ? -1 : static_cast<int>(owned->size());
}

class Peeping : public testing::Test {
 protected:
  // "demo" knows two files, "other" none; "lost" has no tables and no folder for them.
  Peeping() {
    site_.write("a.gif", "GIF");
    EXPECT_EQ(site_.Open(), 0);
    EXPECT_EQ(site_.mgr->SiteRebuildComplete(nullptr), 0);
    EXPECT_EQ(site_.mgr->SiteClose(), 0);
    EXPECT_GE(site_.mgr->CopySiteProf("demo", "other"), 0);
    EXPECT_GE(site_.mgr->GetSiteProf()->Add("lost"), 0);
  }

  SiteMgr& mgr() { return *site_.mgr; }
  test::TestSite site_;
};

TEST_F(Peeping, EveryFileIsAnEntryOfTheOneString) {
  const std::unique_ptr<std::vector<std::string*>> list(mgr().EnumPathInSite("demo"));
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->size(), 2U);
  EXPECT_EQ(list->front(), list->back());
  EXPECT_EQ(test::Take(list->front()), site_.path("index.html"));

  EXPECT_EQ(CountEntries(mgr().EnumPathInSite("other")), 0);
  EXPECT_EQ(CountEntries(mgr().EnumPathInSite("lost")), -1);
  EXPECT_EQ(CountEntries(mgr().EnumPathInSite("unknown")), -1);
  EXPECT_EQ(CountEntries(mgr().EnumPathInSite("")), -1);
}

TEST_F(Peeping, SitesThatKnowAFileAreCounted) {
  EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath(site_.path("a.gif"))), 1);
  EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath(site_.path("b.gif"))), 0);
  EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath("")), -1);
  ASSERT_EQ(mgr().SiteOpen("other", 0), 0);
  ASSERT_EQ(mgr().SiteRebuildComplete(nullptr), 0);
  ASSERT_EQ(mgr().FlushSite(), 0);
  // The open site stands beside the one that is looked into.
  EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath(site_.path("a.gif"))), 2);
  EXPECT_GE(mgr().FindPath(site_.path("a.gif")), 0);
  EXPECT_EQ(mgr().SiteClose(), 0);
}

// Saving a page gives its texts other numbers than the page has.
TEST_F(Peeping, ASiteKnowsItsFilesHoweverOftenTheyWereSaved) {
  for (const char* text : {"<title>T</title>", "", "", "<title>T</title>", ""}) {
    site_.write("index.html", text);
    ASSERT_EQ(site_.Open(), 0);
    ASSERT_EQ(mgr().Save(site_.path("index.html"), nullptr), 0);
    ASSERT_EQ(mgr().SiteClose(), 0);
    EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath(site_.path("index.html"))), 1);
  }
}

TEST_F(Peeping, ADamagedTableIsPassedOver) {
  std::string bytes = site_.folder().read("db/demo/PR");
  bytes.replace(16, 4, "\xFF\xFF\xFF\x7F");
  site_.folder().write("db/demo/PR", bytes);
  EXPECT_EQ(CountEntries(mgr().EnumPathInSite("demo")), -1);
  EXPECT_EQ(CountEntries(mgr().EnumSiteHasPath(site_.path("a.gif"))), 0);
}

TEST_F(Peeping, GeneralOperationsChangeNothing) {
  const char list[] = "\\a\0\\b\0";
  EXPECT_EQ(mgr().GeneralOperation(list, "", 0), -1);  // nothing is open
  EXPECT_EQ(mgr().GeneralOperation(list, list, 1), 0);
  ASSERT_EQ(site_.Open(), 0);
  const std::string before = site_.Dump();
  for (const int op : {0, 1, 2, 3, 7, -1}) {
    for (const char* files : {list, "", static_cast<const char*>(nullptr)}) {
      EXPECT_EQ(mgr().GeneralOperation(files, files, op), 0);
    }
  }
  EXPECT_EQ(site_.Dump(), before);
}

}  // namespace
}  // namespace zvrsit
