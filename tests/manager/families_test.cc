// The publishing family.
#include <gtest/gtest.h>

#include <ctime>

#include "support/test_site.h"

namespace zvrsit::test {
namespace {

// Pages that hold links, each to the names given.
std::string PageTo(std::initializer_list<std::string> targets) {
  std::string page;
  for (const std::string& target : targets) page += "<a href=\"" + target + "\">x</a>";
  return page;
}

class Families : public testing::Test {
 protected:
  // index -> a -> b -> a, index -> logo; orphan -> hidden, orphan -> a.
  void SetUp() override {
    site.write("index.html", PageTo({"a.html", "logo.gif", "http://x.example/"}));
    site.write("a.html", PageTo({"b.html"}));
    site.write("b.html", PageTo({"a.html"}));
    site.write("logo.gif", "");
    site.write("orphan.html", PageTo({"hidden.html", "a.html"}));
    site.write("hidden.html", "");
    ASSERT_EQ(site.Open(), 0);
    ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  }

  // The names of the files whose member bit is set, in the order of their numbers.
  std::string Members() const {
    std::string members;
    for (const char* name :
         {"a.html", "b.html", "hidden.html", "index.html", "logo.gif", "orphan.html"}) {
      if ((site.Record(name).membership & 1) != 0) members += std::string(name) + " ";
    }
    return members;
  }
  void ClearMarks() {
    for (int i = 0; i < site.mgr->GetPathDB()->Count(); ++i) {
      EXPECT_GE(site.mgr->GetPathDB()->SetNumber(i, &SitePathRec::membership, 0), 0);
    }
  }

  TestSite site;
};

TEST_F(Families, HoldWhatTheTopFileReaches) {
  EXPECT_EQ(Members(), "a.html b.html index.html logo.gif ");
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  ClearMarks();
  EXPECT_EQ(site.mgr->PropagateFamily(site.Number("orphan.html")), 0);
  EXPECT_EQ(site.mgr->UpdateLinkFamily(), 0);
  EXPECT_EQ(Members(), "a.html b.html index.html logo.gif ") << "other marks are cleared first";
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0);
}

TEST_F(Families, AreNotRecomputedWithoutAChange) {
  ASSERT_EQ(site.mgr->UpdateLinkFamily(), 0);
  ClearMarks();
  EXPECT_EQ(site.mgr->UpdateLinkFamily(), 0);
  EXPECT_EQ(Members(), "");
  EXPECT_EQ(site.mgr->TraverseFamily(), 0);
  EXPECT_EQ(Members(), "index.html ");
}

TEST_F(Families, WithoutATopFileTheChangeStaysPending) {
  EXPECT_GE(site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::topFile, ""), 0);
  EXPECT_EQ(site.mgr->UpdateLinkFamily(), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  EXPECT_EQ(Members(), "");
  EXPECT_EQ(site.mgr->TraverseFamily(), 0);
  EXPECT_GE(site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::topFile, site.path("unknown.html")),
            0);
  EXPECT_EQ(site.mgr->UpdateLinkFamily(), -1);
  EXPECT_EQ(site.mgr->TraverseFamily(), -1);
}

TEST_F(Families, LoseWhatNoMemberLinksTo) {
  EXPECT_EQ(site.mgr->PropagateUnFamily(site.Number("logo.gif")), 0);
  EXPECT_EQ(Members(), "a.html b.html index.html logo.gif ") << "the top file links to it";
  EXPECT_EQ(site.mgr->PropagateUnFamily(site.Number("index.html")), 0);
  EXPECT_EQ(Members(), "a.html b.html ") << "a and b keep each other";
}

TEST_F(Families, UserMarksReplaceEachOtherAndOtherBitsStay) {
  const UrlID page(kKindPath, site.Number("hidden.html"));
  EXPECT_EQ(site.mgr->SetFtpFamily(page, 4), 0);
  EXPECT_EQ(site.mgr->SetFtpFamily(page, 8), 0);
  EXPECT_EQ(site.Record("hidden.html").membership, 8);
  EXPECT_EQ(site.mgr->SetFtpFamily(page, 16), 0);
  EXPECT_EQ(site.mgr->SetFtpFamily(page, 0), 0);
  EXPECT_EQ(site.Record("hidden.html").membership, 16);
  EXPECT_EQ(site.mgr->SetFtpFamily(UrlID(kKindUrl, 0), 4), -1);
  EXPECT_EQ(site.mgr->SetFtpFamily(UrlID(kKindPath, -1), 4), -1);
  EXPECT_EQ(site.mgr->SetFtpFamily(UrlID(kKindPath, 999), 4), -1);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.Record("hidden.html").membership, 16) << "a rebuild keeps them";
}

class LargeFamily : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(site.Open(), 0); }
  void AddFiles(int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_EQ(site.mgr->GetPathDB()->Add("\\p" + std::to_string(i)), i);
    }
  }
  void Link(int from, int to) {
    ASSERT_GE(site.mgr->AddLink("x", UrlID(kKindPath, from), UrlID(kKindPath, to), 0x40), 0);
  }
  int Mark(int file) {
    SitePathRec rec;
    EXPECT_EQ(site.mgr->GetPathDB()->Get(file, rec), 0);
    return rec.membership;
  }

  TestSite site;
};

// A chain as long as a large site neither overflows the stack nor takes quadratic time.
TEST_F(LargeFamily, FollowsAChainOfAHundredThousandFiles) {
  constexpr int kFiles = 100000;
  AddFiles(kFiles);
  for (int i = 0; i < kFiles; ++i) Link(i, i + 1);
  EXPECT_EQ(site.mgr->PropagateFamily(0), 0);
  EXPECT_EQ(Mark(kFiles - 1), 1);
  EXPECT_EQ(site.mgr->PropagateUnFamily(0), 0);
  EXPECT_EQ(Mark(kFiles - 1), 0);
  EXPECT_EQ(site.mgr->PropagateFamily(kFiles), -1);
}

// Every page of a large site links to one; each time one of them goes, that one is looked at again.
TEST_F(LargeFamily, LeavesAHubOfThirtyThousandReferrersInLinearTime) {
  constexpr int kHub = 30001;
  AddFiles(kHub + 1);
  for (int i = 1; i < kHub; ++i) Link(0, i);
  for (int i = 1; i < kHub; ++i) Link(i, kHub);
  ASSERT_EQ(site.mgr->PropagateFamily(0), 0);
  const std::clock_t before = std::clock();
  EXPECT_EQ(site.mgr->PropagateUnFamily(0), 0);
  EXPECT_LT(std::clock() - before, 3 * CLOCKS_PER_SEC);
  EXPECT_EQ(Mark(kHub), 0);
}

TEST(ReflectDefaultUrl, ResolvesFolderLinksAnew) {
  TestSite site;
  site.write("index.html", PageTo({"sub/", "plain.html"}));
  site.write("other.html", PageTo({"plain.html"}));
  site.write("sub/old.html", "");
  site.write("sub/new.html", "");
  EXPECT_GE(site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::defaultUrl, "old.html"), 0);
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_NE(site.Links().find("index.html -> sub\\old.html sub/ 40 1\n"), std::string::npos);

  site.mgr->SiteClose();
  EXPECT_GE(site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::defaultUrl, "new.html"), 0);
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl("new.html"), 0);
  EXPECT_EQ(site.Links(),
            "other.html -> plain.html plain.html 40 1\n"
            "index.html -> sub\\new.html sub/ 40 1\n"
            "index.html -> plain.html plain.html 40 1\n");
  site.mgr->setDom(nullptr);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl("new.html"), 0) << "a page that cannot be saved is no end";
  EXPECT_EQ(site.mgr->Save(site.path("index.html"), nullptr), -1);
}

// "#x" is taken from the BASE too, be it the page's own folder.
TEST(FolderLinks, FollowTheDocumentOfTheBaseOfTheirPage) {
  TestSite site(LinkRules::Web);
  site.write("index.html", "");
  site.write("sub/index.htm", "<base href=./><a href='#x'>x</a>");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.Links(), "sub\\index.htm -> sub\\index.htm #x 1000000 1\n");
  site.write("sub/index.html", "");
  EXPECT_EQ(site.mgr->Save(site.path("sub/index.html"), nullptr), 0);
  EXPECT_EQ(site.Links(), "sub\\index.htm -> sub\\index.html #x 40 1\n");
}

// Where a BASE hides what a link leads to, its page is read from the disk to be sure; but not the
// page whose document the application has just handed over.
TEST(FolderLinks, LeaveTheSavedPageWithTheDocumentThatItWasSavedFrom) {
  TestSite site(LinkRules::Web);
  ASSERT_EQ(site.Open(), 0);
  const std::string page = "<base href=../><a href=sub/index.htm>x</a>";
  for (const char* name : {"sub/index.html", "sub/other.html"}) site.write(name, page);
  site.write("sub/index.htm", "");
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  const std::string later = page + "<a href=later.html>x</a>";
  Document* doc = site.dom.createDocument("HTML");
  doc->createNodes(later.data(), static_cast<int>(later.size()), nullptr, true);
  site.write("sub/other.html", later);
  ASSERT_EQ(site.mgr->Save(site.path("sub/index.html"), doc), 0);
  const std::string links = site.Links();
  EXPECT_NE(links.find("sub\\index.html -> later.html"), std::string::npos) << links;
  EXPECT_NE(links.find("sub\\other.html -> later.html"), std::string::npos) << links;
}

}  // namespace
}  // namespace zvrsit::test
