#include "registration/site_css_util.h"

#include <gtest/gtest.h>

#include <string>

#include "css/css_control.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "links/link_type.h"
#include "manager_base/inside.h"
#include "storage/records.h"
#include "support/temp_folder.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"
#include "util/url_id.h"

namespace zvrsit {
namespace {

class Manager : public SiteMgrBase {
 public:
  using SiteMgrBase::Operation;
};

class SiteCssUtil : public testing::Test {
 protected:
  void SetUp() override { Open(LinkRules::Classic); }

  void Open(LinkRules rules) {
    manager_.CloseSite();
    folder_.write("site/index.htm", "");
    folder_.makeFolder("db/s");
    manager_.setDom(&dom_);
    manager_.setDB((folder_.path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
    SiteSiteProfDB* const sites = manager_.GetSiteProf();
    ASSERT_NE(sites, nullptr);
    int site = sites->Find("s");
    if (site < 0) site = sites->Add("s");
    ASSERT_EQ(sites->SetNumber(site, &SiteSiteRec::linkRules, static_cast<int>(rules)), 0);
    ASSERT_EQ(sites->SetFolder(site, kSlotSiteFolder, siteFolder()), 0);
    ASSERT_EQ(sites->SetText(site, &SiteSiteRec::topFile, folder_.path("site/index.htm")), 0);
    ASSERT_EQ(manager_.OpenSite(site, 0), 0);
    manager_.AddFolder(siteFolder(), 0);
  }

  std::string siteFolder() const { return folder_.path("site") + "\\"; }

  int CollectPage(const std::string& name, const std::string& html) {
    Document* const page = dom_.createDocument("HTML");
    page->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true);
    const int result =
        SiteCSSUtil(&manager_, siteFolder()).CollectPage(folder_.path("site/" + name), page);
    dom_.deleteDocument(page);
    return result;
  }

  int CollectSheet(const std::string& name) {
    return SiteCSSUtil(&manager_, siteFolder()).CollectSheet(folder_.path("site/" + name));
  }

  // The links in the order of their numbers: "p.htm LINK a.css" and a line end each; a count above
  // one as " 2".
  std::string Links() {
    std::string listed;
    SiteLinkDB* const links = manager_.GetLinkDB();
    for (int i = links->NextNumber(0); i >= 0; i = links->NextNumber(i + 1)) {
      SiteLinkRec link;
      if (links->Get(i, link) < 0) break;
      listed += NameOf(link.from) + " ";
      listed += std::string(LinkTypeName(static_cast<std::uint32_t>(link.type))).substr(7) + " ";
      listed += NameOf(link.to) + (link.count > 1 ? " " + std::to_string(link.count) : "") + "\n";
    }
    return listed;
  }

  std::string NameOf(const UrlID& id) {
    std::string name;
    if (id.kind == kKindUrl) {
      manager_.GetUrlDB()->Name(id.id, name);
    } else if (id.kind == kKindPath && manager_.GetPathDB()->Name(id.id, name) == 0) {
      const bool isInSite = name.compare(0, siteFolder().size(), siteFolder()) == 0;
      name.replace(0, isInSite ? siteFolder().size() : folder_.path().size(), isInSite ? "" : "..");
    }
    return name;
  }

  test::TempFolder folder_;
  DOM dom_;
  Manager manager_;
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
  SitePathRec rec;
  SitePathDB* const paths = manager_.GetPathDB();
  EXPECT_EQ(paths->Get(paths->Find(folder_.path("site/a.css")), rec), 0);
  EXPECT_EQ(rec.exists, 1);
  EXPECT_EQ(paths->Get(paths->Find(folder_.path("site/1.gif")), rec), 0);
  EXPECT_EQ(rec.exists, 0);
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
  SitePathRec rec;
  EXPECT_EQ(manager_.GetPathDB()->Get(link.to.id, rec), 0);
  EXPECT_EQ(rec.exists, 1);
}

TEST_F(SiteCssUtil, FailsWithoutAnOpenSite) {
  EXPECT_EQ(CollectSheet("missing.css"), 0);
  manager_.CloseSite();
  EXPECT_EQ(CollectPage("p.htm", ""), -1);
  EXPECT_EQ(CollectSheet("a.css"), -1);
  EXPECT_EQ(SiteCSSUtil(nullptr, siteFolder()).CollectSheet("a.css"), -1);
}

}  // namespace
}  // namespace zvrsit
