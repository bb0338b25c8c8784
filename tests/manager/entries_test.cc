// Single entries go into the tables and out again.
#include <gtest/gtest.h>

#include "support/test_site.h"

namespace zvrsit::test {
namespace {

class Entries : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(site.Open(), 0);
    ASSERT_GE(site.mgr->AddFolder(site.dir(), 0), 0);
  }
  int Add(const std::string& path, int checkCase = 0) {
    return site.mgr->AddPath(path, site.dir(), checkCase);
  }
  int Check(const std::string& path) { return site.mgr->CheckPath(path, site.dir()); }

  TestSite site;
};

TEST_F(Entries, AKnownFileIsLeftAloneAndOnlyAMissingOneCheckedAgain) {
  const int page = Add(site.path("index.html"));
  const int gone = Add(site.path("gone.html"));
  EXPECT_EQ(site.Record("gone.html").exists, 0);
  EXPECT_EQ(site.Record("gone.html").fileType, 2);
  EXPECT_EQ(site.mgr->GetRelDB()->CountTo(UrlID(kKindPath, gone)), 0);

  const int size = site.Record("index.html").size;
  site.write("index.html", "longer than it was before");
  site.write("gone.html", "here");
  EXPECT_EQ(Add(site.path("index.html")), page);
  EXPECT_EQ(Check(site.path("index.html")), page);
  EXPECT_EQ(site.Record("index.html").size, size);
  EXPECT_EQ(Add(site.path("gone.html")), gone);
  EXPECT_EQ(site.Record("gone.html").exists, 0);
  EXPECT_EQ(Check(site.path("gone.html")), gone);
  EXPECT_EQ(site.Record("gone.html").exists, 1);
  EXPECT_EQ(site.mgr->GetRelDB()->CountTo(UrlID(kKindPath, gone)), 1);
  EXPECT_EQ(Check(site.path("never.html")), -1);
}

TEST_F(Entries, AFolderClimbsToAKnownParentOrFailsAtARoot) {
  EXPECT_EQ(site.mgr->AddFolder("C:\\", 1), -1);
  const int root = site.mgr->GetFolderDB()->Find("C:\\");
  EXPECT_GE(root, 0);
  EXPECT_EQ(site.mgr->AddFolder("D:\\x\\y\\", 1), -1);
  EXPECT_GE(site.mgr->GetFolderDB()->Find("D:\\x\\"), 0);
  EXPECT_GE(site.mgr->GetFolderDB()->Find("D:\\"), 0);
  const int deep = site.mgr->AddFolder("C:\\x\\y\\", 1);
  const int above = site.mgr->GetFolderDB()->Find("C:\\x\\");
  EXPECT_GE(site.mgr->GetRelDB()->First(UrlID(kKindFolder, above), UrlID(kKindFolder, deep)), 0);
  EXPECT_GE(site.mgr->GetRelDB()->First(UrlID(kKindFolder, root), UrlID(kKindFolder, above)), 0);
}

TEST_F(Entries, EveryCallRefusesWhatItCannotUse) {
  const UrlID any(kKindPath, 0);
  EXPECT_EQ(site.mgr->AddUrl(""), -1);
  EXPECT_EQ(site.mgr->AddLink("", any, any, 1), -1);
  EXPECT_EQ(Add("", 1), -1);
  EXPECT_EQ(Check(""), -1);
  EXPECT_EQ(site.mgr->AddFolder("", 1), -1);
  for (const auto del : {&SiteMgr::DelUrl, &SiteMgr::DelPath, &SiteMgr::DelLink,
                         &SiteMgr::DelFolder, &SiteMgr::DelRel}) {
    for (const int number : {-1, 1 << 30}) EXPECT_EQ((*site.mgr.*del)(number), -1);
  }
}

}  // namespace
}  // namespace zvrsit::test
