// The publishing family.
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <vector>

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
      site.mgr->GetPathDB()->SetNumber(i, &SitePathRec::membership, 0);
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
  site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::topFile, "");
  EXPECT_EQ(site.mgr->UpdateLinkFamily(), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  EXPECT_EQ(Members(), "");
  EXPECT_EQ(site.mgr->TraverseFamily(), 0);
  site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::topFile, site.path("unknown.html"));
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

// A chain as long as a large site neither overflows the stack nor takes quadratic time.
TEST(Family, FollowsAChainOfAHundredThousandFiles) {
  TestSite site;
  ASSERT_EQ(site.Open(), 0);
  constexpr int kFiles = 100000;
  for (int i = 0; i < kFiles; ++i) {
    ASSERT_EQ(site.mgr->GetPathDB()->Add("\\p" + std::to_string(i)), i);
    ASSERT_GE(site.mgr->AddLink("x", UrlID(kKindPath, i), UrlID(kKindPath, i + 1), 0x40), 0);
  }
  EXPECT_EQ(site.mgr->PropagateFamily(0), 0);
  SitePathRec last;
  ASSERT_EQ(site.mgr->GetPathDB()->Get(kFiles - 1, last), 0);
  EXPECT_EQ(last.membership, 1);
  EXPECT_EQ(site.mgr->PropagateUnFamily(0), 0);
  ASSERT_EQ(site.mgr->GetPathDB()->Get(kFiles - 1, last), 0);
  EXPECT_EQ(last.membership, 0);
  EXPECT_EQ(site.mgr->PropagateFamily(kFiles), -1);
}

// Every page of a large site links to one; each time one of them goes, that one is looked at again.
TEST(Family, LeavesAHubOfThirtyThousandReferrersInLinearTime) {
  TestSite site;
  ASSERT_EQ(site.Open(), 0);
  constexpr int kPages = 30000;
  constexpr int kHub = kPages + 1;
  for (int i = 0; i <= kHub; ++i) {
    ASSERT_EQ(site.mgr->GetPathDB()->Add("\\p" + std::to_string(i)), i);
  }
  for (int i = 1; i <= kPages; ++i) {
    ASSERT_GE(site.mgr->AddLink("x", UrlID(kKindPath, 0), UrlID(kKindPath, i), 0x40), 0);
  }
  for (int i = 1; i <= kPages; ++i) {
    ASSERT_GE(site.mgr->AddLink("x", UrlID(kKindPath, i), UrlID(kKindPath, kHub), 0x40), 0);
  }
  ASSERT_EQ(site.mgr->PropagateFamily(0), 0);
  const std::clock_t before = std::clock();
  EXPECT_EQ(site.mgr->PropagateUnFamily(0), 0);
  EXPECT_LT(std::clock() - before, 3 * CLOCKS_PER_SEC);
  SitePathRec hub;
  ASSERT_EQ(site.mgr->GetPathDB()->Get(kHub, hub), 0);
  EXPECT_EQ(hub.membership, 0);
}

TEST(ReflectDefaultUrl, ResolvesFolderLinksAnew) {
  TestSite site;
  site.write("index.html", PageTo({"sub/", "plain.html"}));
  site.write("other.html", PageTo({"plain.html"}));
  site.write("sub/old.html", "");
  site.write("sub/new.html", "");
  site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::defaultUrl, "old.html");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_NE(site.Links().find("index.html -> sub\\old.html sub/ 40 1\n"), std::string::npos);

  site.mgr->SiteClose();
  site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::defaultUrl, "new.html");
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl("new.html"), 0);
  EXPECT_EQ(site.Links(),
            "other.html -> plain.html plain.html 40 1\n"
            "index.html -> sub\\new.html sub/ 40 1\n"
            "index.html -> plain.html plain.html 40 1\n");
  site.mgr->setDom(nullptr);
  ASSERT_EQ(site.mgr->Save(site.path("index.html"), nullptr), -1);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl("new.html"), 0) << "a page that cannot be saved is no end";
}

// By the web rules: each text, and what it leads to before and after.
TEST(FolderLinks, FollowTheDocumentOfTheirFolderByTheWebRules) {
  TestSite site(LinkRules::Web);
  const std::vector<std::string> texts = {"sub", "sub/#x", "sub/?q", "sub/.", "late", "late/"};
  std::string page = PageTo({"sub/index.htm"});
  for (const std::string& text : texts) page += PageTo({text});
  site.write("index.html", page);
  site.write("sub/p.html", PageTo({".", "../"}));
  site.write("sub/index.htm", "");
  site.write("sub/home.htm", "");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  const auto leads = [&](const std::string& text) {
    const std::string links = site.Links();
    const std::size_t at = links.find(" " + text + " 40 ");
    const std::size_t arrow = links.rfind("-> ", at) + 3;
    return links.substr(arrow, at - arrow);
  };
  const auto all = [&](const std::string& sub, const std::string& late) {
    std::string wrong;
    for (const char* text : {"sub", "sub/#x", "sub/?q", "sub/.", "."}) {
      if (leads(text) != sub) wrong += text + (" to " + leads(text)) + "\n";
    }
    if (leads("late/") != "late\\index.html") wrong += "late/ to " + leads("late/") + "\n";
    if (leads("late") != late) wrong += "late to " + leads("late") + "\n";
    if (leads("sub/index.htm") != "sub\\index.htm") wrong += "index.htm\n";
    return wrong;
  };
  EXPECT_EQ(all("sub\\index.htm", "late"), "");

  site.write("sub/index.html", "");
  site.mgr->SetLinksChanged(0);
  EXPECT_EQ(site.mgr->Save(site.path("sub/index.html"), nullptr), 0);
  EXPECT_EQ(all("sub\\index.html", "late"), "") << "one more wanted has come";
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  std::filesystem::remove(site.native("sub/index.html"));
  EXPECT_EQ(site.mgr->Remove(site.path("sub/index.html"), 0), 0);
  site.write("late/index.html", "");
  EXPECT_EQ(site.mgr->Save(site.path("late/index.html"), nullptr), 0);
  EXPECT_EQ(all("sub\\index.htm", "late\\index.html"), "") << "one has gone, one has come";

  ASSERT_EQ(site.mgr->SetSiteProfDefaultUrl("home.htm"), 0);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl(""), 0);
  for (const char* text : {"sub", "sub/#x", "sub/?q", "sub/.", "."}) {
    EXPECT_EQ(leads(text), "sub\\home.htm") << text;
  }
  EXPECT_EQ(leads("../"), "home.htm");
  ASSERT_EQ(site.mgr->SetSiteProfDefaultUrl(""), 0);
  EXPECT_EQ(site.mgr->ReflectDefaultUrl(""), 0);
  EXPECT_EQ(all("sub\\index.htm", "late\\index.html"), "");
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
