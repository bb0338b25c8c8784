#include "registration/site_css_util.h"

#include <gtest/gtest.h>

#include <string>

#include "css/css_control.h"
#include "registration/open_site.h"

namespace zvrsit {
namespace {

class SiteCssUtil : public test::OpenSite {
 protected:
  void SetUp() override { Open(LinkRules::Classic); }

  int CollectPage(const std::string& name, const std::string& html) {
    return WithDocument(html, [&](Document* page) {
      return SiteCSSUtil(&manager_, siteFolder_).CollectPage(folder_.path("site/" + name), page);
    });
  }
  int CollectSheet(const std::string& name) {
    return SiteCSSUtil(&manager_, siteFolder_).CollectSheet(folder_.path("site/" + name));
  }
  // The links as "p.htm LINK a.css", a count above one as " 2".
  std::string Links() {
    return Lines([this](const SiteLinkRec& link, const std::string& type) {
      return Name(link.from) + " " + type.substr(4) + " " + Name(link.to) +
             (link.count > 1 ? " " + std::to_string(link.count) : "");
    });
  }
};

TEST_F(SiteCssUtil, RegistersEachFileFromItself) {
  folder_.write("site/a.css", "@import 'b.css'; p { background: url(1.gif), url(1.gif) }");
  folder_.write("site/b.css", "p { src: url(f.woff); content: url(http://h/2.gif) }");
  EXPECT_EQ(CollectPage("p.htm", "<link rel=stylesheet href=a.css><p style='cursor:url(c.cur)'>"),
            0);
  EXPECT_EQ(Links(),
            "p.htm LINK a.css\n"
            "p.htm IMAGE c.cur\n"
            "a.css IMPORT b.css\n"
            "a.css IMAGE 1.gif 2\n"
            "b.css OTHER f.woff\n"
            "b.css IMAGE http://h/2.gif\n");
  EXPECT_EQ(Record("a.css").exists, 1);
  EXPECT_EQ(Record("1.gif").exists, 0);
}

TEST_F(SiteCssUtil, SheetIsRegisteredOnceHoweverManyPagesAndRootsReachIt) {
  folder_.write("site/a.css", "@import 'a.css'; p { background: url(1.gif) }");
  const std::string ofSheet = "a.css IMPORT a.css\na.css IMAGE 1.gif\n";
  const std::string html = "<link rel=stylesheet href=a.css>";
  {
    Manager::Operation operation(manager_);
    EXPECT_EQ(CollectPage("p.htm", html), 0);
    EXPECT_EQ(CollectPage("q.htm", html), 0);
    EXPECT_EQ(CollectSheet("a.css"), 0);
  }
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(CollectPage("r.htm", html), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\n" + ofSheet + "q.htm LINK a.css\nr.htm LINK a.css\n");
}

// As when the sheet is saved while others are being collected.
TEST_F(SiteCssUtil, SheetWhoseLinksWereRemovedIsRegisteredAgain) {
  folder_.write("site/a.css", "p { background: url(1.gif) }");
  Manager::Operation operation(manager_);
  EXPECT_EQ(CollectPage("p.htm", "<link rel=stylesheet href=a.css>"), 0);
  EXPECT_EQ(manager_.DelLink(1), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\n");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "p.htm LINK a.css\na.css IMAGE 1.gif\n");
}

// The page's own link to it is made with the links of its other tags.
TEST_F(SiteCssUtil, SheetOfALinkWithMoreWordsIsRegisteredWithoutAStyleLinkToIt) {
  folder_.write("site/a.css", "p { background: url(1.gif) }");
  EXPECT_EQ(CollectPage("p.htm", "<link rel='stylesheet alternate' href=a.css>"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE 1.gif\n");
}

TEST_F(SiteCssUtil, ChildThatCannotBeRegisteredGetsNoLink) {
  // No folder above it is known, so that its folder chain ends at a root that is not there.
  folder_.write("out/1.gif", "GIF");
  folder_.write("site/a.css", "p { content: url(../out/1.gif), url(2.gif) }");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE 2.gif\n");
}

// What the first time could not be added in full is found by the second: the same links.
TEST_F(SiteCssUtil, WebRulesKeepFilesOutsideAndLookAgainAtMissingOnes) {
  SiteSiteProfDB* const sites = manager_.GetSiteProf();
  sites->SetFolder(0, kSlotDocumentRoot, folder_.path() + "\\");
  sites->SetNumber(0, &SiteSiteRec::useDocRoot, 1);
  Open(LinkRules::Web);
  folder_.write("out/1.gif", "GIF");
  folder_.write("site/a.css", "p { content: url(/out/1.gif), url(2.gif) }");
  EXPECT_EQ(CollectSheet("a.css"), 0);
  EXPECT_EQ(Links(), "a.css IMAGE ..\\out\\1.gif\na.css IMAGE 2.gif\n");
  SiteLinkRec link;
  EXPECT_EQ(manager_.GetLinkDB()->Get(1, link), 0);
  EXPECT_EQ(link.offset, 30);

  folder_.write("site/2.gif", "GIF");
  EXPECT_EQ(CollectPage("p.htm", "<p style='content:url(2.gif)'>"), 0);
  EXPECT_EQ(Record("2.gif").exists, 1);
}

TEST_F(SiteCssUtil, FailsWithoutAnOpenSite) {
  EXPECT_EQ(CollectSheet("missing.css"), 0);
  manager_.CloseSite();
  EXPECT_EQ(CollectPage("p.htm", ""), -1);
  EXPECT_EQ(CollectSheet("a.css"), -1);
  EXPECT_EQ(SiteCSSUtil(nullptr, siteFolder_).CollectSheet("a.css"), -1);
}

}  // namespace
}  // namespace zvrsit
