// Saved, removed and moved files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "support/test_site.h"

namespace zvrsit::test {
namespace {

constexpr const char* kTwoLinks = "<title>T</title><a href=a.html>a</a><a href=b.gif>b</a>";

class Saving : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(site.Open(), 0);
    site.write("page.html", kTwoLinks);
    ASSERT_EQ(Save("page.html"), 0);
    site.mgr->SetLinksChanged(0);
  }
  int Save(const std::string& name, Document* doc = nullptr) {
    return site.mgr->Save(site.path(name), doc);
  }
  int SaveAs(const std::string& name, const std::string& text) {
    site.write(name, text);
    return Save(name);
  }
  Document* Parsed(const std::string& text) {
    Document* doc = site.dom.createDocument("HTML");
    doc->createNodes(text.data(), static_cast<int>(text.size()), nullptr, true);
    return doc;
  }

  TestSite site;
};

TEST_F(Saving, AnUnchangedPageLeavesTheFlagAndItsLinks) {
  const std::string before = site.Links();
  ASSERT_EQ(Save("page.html"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0);
  EXPECT_EQ(site.Links(), before);
  site.mgr->SetLinksChanged(1);
  ASSERT_EQ(site.mgr->Save(site.path("page.html"), 5, nullptr), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
}

TEST_F(Saving, OnlyTargetsInTheSiteRaiseTheFlag) {
  ASSERT_EQ(SaveAs("page.html", std::string(kTwoLinks) + "<a href=http://x.example/>x</a>"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0);
  ASSERT_EQ(SaveAs("page.html", "<a href=b.gif>b</a>"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1) << "one lost";
  site.mgr->SetLinksChanged(0);
  ASSERT_EQ(SaveAs("page.html", "<a href=c.gif>b</a>"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1) << "one replaced";
}

// A page that others refer to keeps its entry; one that is re-created gets its word back.
TEST_F(Saving, TheMembershipWordSurvives) {
  const UrlID page(kKindPath, site.Number("page.html"));
  ASSERT_EQ(site.mgr->SetFtpFamily(page, 8), 0);
  ASSERT_EQ(Save("page.html"), 0);
  EXPECT_EQ(site.Record("page.html").membership, 8);
  ASSERT_EQ(SaveAs("a.html", "<a href=page.html>back</a>"), 0);
  const int number = site.Number("page.html");
  ASSERT_EQ(Save("page.html"), 0);
  EXPECT_EQ(site.Number("page.html"), number);
  EXPECT_EQ(site.Record("page.html").membership, 8);
  EXPECT_EQ(site.Record("page.html").exists, 1);
}

TEST_F(Saving, TheDocumentOfAPageIsConsumedAndOfAnotherFileIsNot) {
  site.write("photo.gif", "");
  for (const char* name : {"page.html", "missing.html", "style.css"}) {
    Document* doc = Parsed("<a href=from-doc.html>x</a>");
    EXPECT_EQ(Save(name, doc), 0);
    EXPECT_EQ(site.dom.deleteDocument(doc), -1) << name;
  }
  EXPECT_GE(site.Number("from-doc.html"), 0);
  Document* doc = Parsed("<a href=x.html>x</a>");
  EXPECT_EQ(Save("photo.gif", doc), 0);
  EXPECT_EQ(site.Number("x.html"), -1);
  EXPECT_EQ(site.dom.deleteDocument(doc), 0);
  EXPECT_EQ(site.mgr->Save("", nullptr), -1);
}

TEST_F(Saving, WithoutADocumentLibraryNoPageIsReadAndNoDocumentConsumed) {
  site.mgr->setDom(nullptr);
  EXPECT_EQ(Save("page.html"), -1);
  Document* doc = Parsed("<a href=from-doc.html>x</a>");
  EXPECT_EQ(Save("page.html", doc), -1);
  EXPECT_EQ(site.dom.deleteDocument(doc), 0) << "nobody else could";
}

TEST_F(Saving, ARemovedFileStaysWhileOthersReferToIt) {
  ASSERT_EQ(SaveAs("a.html", "<a href=page.html>back</a><a href=page.html>back</a>"), 0);
  site.mgr->SetLinksChanged(0);
  EXPECT_EQ(site.mgr->Remove(site.path("page.html"), 0), 0);
  EXPECT_EQ(site.Links(), "a.html -> page.html page.html 40 2\n");
  EXPECT_EQ(site.Record("page.html").exists, 0);
  EXPECT_EQ(site.Record("page.html").title, -1);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);

  site.mgr->SetLinksChanged(0);
  const int number = site.Number("b.gif");
  EXPECT_EQ(site.mgr->Remove(site.path("b.gif"), 0), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0) << "it had no links of its own";
  EXPECT_EQ(site.Number("b.gif"), -1);
  EXPECT_EQ(site.mgr->GetRelDB()->CountTo(UrlID(kKindPath, number)), 0);
  EXPECT_GE(site.mgr->GetFolderDB()->Find(site.dir()), 0);
  EXPECT_EQ(site.mgr->Remove(site.path("b.gif"), 0), -1);

  EXPECT_EQ(site.mgr->Remove(site.path("a.html"), 0), 0);
  EXPECT_EQ(site.Links(), "") << "all occurrences of a link go";
}

// A sheet that came to hold references is registered with the page that names it.
TEST_F(Saving, ASheetBelowAnUnchangedPageRaisesTheFlagForTheFilesThatItNames) {
  ASSERT_EQ(SaveAs("page.html", "<link rel=stylesheet href=s.css>"), 0);
  site.mgr->SetLinksChanged(0);
  site.write("s.css", "a { src: url(http://x.example/) }");
  ASSERT_EQ(Save("page.html"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0) << "only a URL";
  ASSERT_EQ(site.mgr->Remove(site.path("s.css"), 0), 0);
  site.mgr->SetLinksChanged(0);
  site.write("s.css", "a { background: url(photo.gif) }");
  ASSERT_EQ(Save("page.html"), 0);
  EXPECT_EQ(site.Links(),
            "page.html -> s.css s.css 200000 1\ns.css -> photo.gif photo.gif 800000 1\n");
  EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  site.mgr->SetLinksChanged(0);
  ASSERT_EQ(Save("page.html"), 0);
  ASSERT_EQ(Save("s.css"), 0);
  EXPECT_EQ(site.mgr->GetLinksChanged(), 0);
}

// Rewritten with the same size and time, as where the time of files goes in long steps.
TEST_F(Saving, ASheetIsReadAnewByEveryOperation) {
  ASSERT_EQ(SaveAs("page.html", "<link rel=stylesheet href=s.css>"), 0);
  const auto time = std::filesystem::last_write_time(site.native("page.html"));
  const auto write = [&](const std::string& name) {
    site.write("s.css", "a { background: url(" + name + ") }");
    std::filesystem::last_write_time(site.native("s.css"), time);
  };
  const auto holds = [&](const std::string& name) {
    return site.Links().find("s.css -> " + name) != std::string::npos;
  };
  write("1.gif");
  ASSERT_EQ(Save("s.css"), 0);
  EXPECT_TRUE(holds("1.gif"));
  write("2.gif");
  ASSERT_EQ(Save("s.css"), 0);
  EXPECT_TRUE(holds("2.gif"));
  write("3.gif");
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_TRUE(holds("3.gif"));
}

// A sheet that does not say its encoding has that of the page or sheet that refers to it, whichever
// of the two is read first, in a rebuild or alone.
TEST(SavingByTheWebRules, ReadsASheetInTheEncodingOfItsPage) {
  TestSite site(LinkRules::Web);
  site.write("a.css", "@import 'b.css'; p { content: url(\x95\x5C.gif) }");
  site.write("b.css", "p { content: url(\x83\x5C.gif) }");
  site.write("c.css", "@charset \"koi8-r\"; @import 'd.css'; p { content: url(\xC3.gif) }");
  site.write("d.css", "p { content: url(\xC4.gif) }");
  site.write("e.css", "p { content: url(\xC3\xA9.gif) }");
  site.write("index.html",
             "<meta charset=shift_jis><link rel=stylesheet href=a.css><link rel=stylesheet "
             "href=c.css><link rel='alternate stylesheet' href=f.css>");
  site.write("f.css", "p { content: url(\x83\x5C.jpg) }");
  const auto expectLinks = [&](const char* when) {
    const std::string links = site.Links();
    for (const char* link :
         {"a.css -> \u8868.gif ", "b.css -> \u30BD.gif ", "c.css -> \u0446.gif ",
          "d.css -> \u0434.gif ", "e.css -> \u00E9.gif ", "f.css -> \u30BD.jpg "}) {
      EXPECT_NE(links.find(link), std::string::npos) << when << ": " << link << "\n" << links;
    }
    EXPECT_EQ(std::count(links.begin(), links.end(), '\n'), 11) << links;
  };
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  expectLinks("rebuilt");
  const std::string dump = site.Dump();
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.Dump(), dump);
  for (const char* name : {"a.css", "b.css", "d.css", "e.css", "f.css"}) {
    EXPECT_EQ(site.mgr->Save(site.path(name), nullptr), 0);
  }
  expectLinks("saved alone");
}

// The same for a sheet that was saved before the page; and its reference is found in the file.
TEST(SavingByTheWebRules, ReadsASheetAnewInTheEncodingOfItsPage) {
  TestSite site(LinkRules::Web);
  site.write("a.css", "p { content: url(\x95\x5C.gif) }");
  site.write("index.html", "<meta charset=shift_jis><link rel=stylesheet href=a.css>");
  ASSERT_EQ(site.Open(), 0);
  for (const char* name : {"a.css", "index.html", "index.html", "a.css"}) {
    EXPECT_EQ(site.mgr->Save(site.path(name), nullptr), 0);
  }
  const std::string links = site.Links();
  EXPECT_NE(links.find("a.css -> \u8868.gif \u8868.gif 800000 1\n"), std::string::npos) << links;
  EXPECT_EQ(std::count(links.begin(), links.end(), '\n'), 2) << links;
  const UrlID sheet(kKindPath, site.Number("a.css"));
  std::vector<std::vector<LinkPlace>> places;
  const int link = site.mgr->GetLinkDB()->First(sheet, kAnyUrlID);
  ASSERT_EQ(site.mgr->FindLinkPlaces({link}, places), 0);
  EXPECT_EQ(places[0].size(), 1u);
}

// By the web rules a link knows where it stands in the file, mark and all; not in a page that had
// to be converted.
TEST(SavingByTheWebRules, KeepsTheOffsetInTheFile) {
  TestSite site(LinkRules::Web);
  ASSERT_EQ(site.Open(), 0);
  const auto offsetIn = [&site](const std::string& text) {
    site.write("p.html", text);
    EXPECT_EQ(site.mgr->Save(site.path("p.html"), nullptr), 0);
    SiteLinkRec link;
    SiteLinkDB& links = *site.mgr->GetLinkDB();
    EXPECT_EQ(links.Get(links.First(UrlID(kKindPath, site.Number("p.html")), kAnyUrlID), link), 0);
    return link.offset;
  };
  EXPECT_EQ(offsetIn("<a href='x.html'>"), 9);
  EXPECT_EQ(offsetIn("\xEF\xBB\xBF<a href='x.html'>"), 12);
  EXPECT_EQ(offsetIn("\xEF\xBB\xBF<link rel=stylesheet href=s.css>"), 29);
  EXPECT_EQ(offsetIn("<meta charset=latin1>\xE4<a href='x.html'>"), -1);
}

TEST(LinkChanged, ComparesAsSetsAndMarksWhatBothHold) {
  struct Row {
    std::vector<int> olds, news;
    int changed;
    std::vector<int> oldsAfter, newsAfter;
  };
  const Row rows[] = {
      {{}, {}, 0, {}, {}},
      {{5, 5}, {5}, 0, {-1, -1}, {-1}},
      {{5}, {5, 5}, 0, {-1}, {-1, -1}},
      {{1, 2}, {2, 1}, 0, {-1, -1}, {-1, -1}},
      {{1, 2}, {2, 3}, 1, {1, -1}, {-1, 3}},
      {{1}, {}, 1, {1}, {}},
      {{}, {1}, 1, {}, {1}},
      {{-7}, {-7, -8}, 0, {-1}, {-1, -8}},
  };
  for (const Row& row : rows) {
    std::vector<int> olds = row.olds, news = row.news;
    EXPECT_EQ(SiteMgr::LinkChanged(olds.data(), news.data(), static_cast<int>(olds.size()),
                                   static_cast<int>(news.size())),
              row.changed);
    EXPECT_EQ(olds, row.oldsAfter);
    EXPECT_EQ(news, row.newsAfter);
  }
  int one = 1;
  EXPECT_EQ(SiteMgr::LinkChanged(nullptr, &one, 0, -3), 0);
}

}  // namespace
}  // namespace zvrsit::test
