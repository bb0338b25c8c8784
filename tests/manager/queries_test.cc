// What an application asks the open site, and others without opening them.
#include <gtest/gtest.h>

#include <algorithm>

#include "links/link_type.h"
#include "manager/answers.h"
#include "manager/family_marks.h"
#include "support/code_page_scope.h"
#include "support/test_site.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

using test::Take;
using Rows = std::vector<std::string>;

// index.html links to two pages, an image, a missing file, and two places elsewhere; one page is an
// orphan that links to itself.
class Queries : public testing::Test {
 protected:
  Queries() : site_(LinkRules::Web) {
    site_.write("index.html",
                "<title>Home</title><meta name=keywords content='a, b'>"
                "<a href=sub/a.html>A</a><a href=sub/a.html>A</a><a href=gone.html>gone</a>"
                "<img src=sub/deep/dot.gif alt=dot><a href=http://h/x.pdf>pdf</a>"
                "<a href=/out.html>out</a>");
    site_.write("sub/a.html", "<a href=../index.html>home</a><a href=../gone.html>gone</a>");
    site_.write("sub/deep/dot.gif", "GIF");
    site_.write("orphan.html", "<a href=orphan.html#top>self</a>");
    site_.folder().write("out.html", "outside");  // the document root lies above the site
    EXPECT_EQ(mgr().SetSiteProfDir(kSlotDocumentRoot, site_.folder().path() + "\\", 0), 0);
    EXPECT_EQ(mgr().SetSiteProfUseDocRoot(1, 0), 0);
    EXPECT_EQ(site_.Open(), 0);
    EXPECT_EQ(site_.mgr->SiteRebuildComplete(nullptr), 0);
  }

  SiteMgr& mgr() { return *site_.mgr; }
  Rows Taken(vec<SiteRecCell>* cells) { return Take(cells, site_.dir()); }
  UrlID Id(const std::string& name) { return UrlID(kKindPath, site_.Number(name)); }
  SiteLink Link(int number) {
    SiteLink link;
    EXPECT_EQ(mgr().GetLink(number, link), 0);
    return link;
  }

  test::TestSite site_;
};

TEST_F(Queries, LinksComeByNumberAndSayWhereTheyGo) {
  const std::vector<int> fore = Take(mgr().GetForeLinks(Id("index.html")));
  ASSERT_EQ(fore.size(), 5U);
  EXPECT_TRUE(std::is_sorted(fore.begin(), fore.end()));
  EXPECT_EQ(Link(fore[0]).to, Id("sub/a.html"));
  EXPECT_EQ(Link(fore[0]).count, 2);
  EXPECT_TRUE(Link(fore[0]).exists);
  EXPECT_EQ(Take(mgr().GetBackLinks(Id("sub/a.html"))), std::vector<int>{fore[0]});
  EXPECT_TRUE(Take(mgr().GetForeLinks(Id("sub/deep/dot.gif"))).empty());

  int broken = 0;
  for (const int number : Take(mgr().EnumBrokenLink())) {
    const SiteLink link = Link(number);
    EXPECT_FALSE(link.exists);
    EXPECT_EQ(link.outside, link.text == "/out.html");
    broken += link.count;
  }
  EXPECT_EQ(broken, 3);
  for (const int number : Take(mgr().EnumLink())) {
    const SiteLink link = Link(number);
    EXPECT_EQ(link.alt, link.type == LT_IMG ? "dot" : "");
    if (link.to.kind == kKindUrl) {
      EXPECT_TRUE(link.exists && !link.outside);
    }
  }
}

TEST_F(Queries, OutsideIsWhatLiesBesideTheSiteFolderOfNow) {
  const int gone = Take(mgr().GetBackLinks(Id("gone.html"))).front();
  EXPECT_FALSE(Link(gone).outside);
  EXPECT_EQ(mgr().SetSiteProfDir(kSlotSiteFolder, site_.path("sub") + "\\"), 0);
  EXPECT_TRUE(Link(gone).outside);
}

TEST_F(Queries, CellsOfLinksShowTheOtherEnd) {
  EXPECT_EQ(Taken(mgr().GetBackLinks(site_.path("gone.html"))),
            (Rows{"index.html 1", "sub\\a.html 1"}));
  EXPECT_EQ(Taken(mgr().GetForeLinks(site_.path("orphan.html"))), Rows{"orphan.html 1"});
  vec<SiteRecCell>* const cells = mgr().GetForeLinks(site_.path("index.html"));
  ASSERT_EQ(cells->size(), 5U);
  for (const SiteRecCell& cell : *cells) {
    const bool isImage = cell.GetName() == site_.path("sub/deep/dot.gif");
    EXPECT_EQ(cell.GetLinkType(), static_cast<int>(isImage ? LT_IMG : LT_ANCHOR));
  }
  SiteMgr::DeleteVecRecCell(cells);
  EXPECT_EQ(mgr().GetForeLinks(site_.path("unknown.html")), nullptr);

  EXPECT_EQ(Taken(mgr().GetBrokenLinks()),
            (Rows{"gone.html 2", site_.folder().path("out.html") + " 1"}));
}

TEST_F(Queries, FilesAndUrlsAreListedByNumber) {
  EXPECT_EQ(Taken(mgr().EnumPath()),
            (Rows{"index.html 1", "orphan.html 1", "sub\\a.html 1", "sub\\deep\\dot.gif 1",
                  "gone.html 0", site_.folder().path("out.html") + " 0"}));
  vec<SiteRecCell>* const files = mgr().EnumPath();
  const SiteRecCell& home = (*files)[0];
  EXPECT_EQ(home.GetID(), Id("index.html"));
  EXPECT_EQ(home.GetTitle(), "Home");
  EXPECT_EQ(home.GetFileType(), static_cast<int>(FT_HTML));
  EXPECT_EQ(home.GetSize(), test::ReadWhole(site_.native("index.html")).size());
  EXPECT_NE(home.GetTime(), 0);
  const SiteRecCell& gone = (*files)[4];
  EXPECT_EQ(gone.GetSize(), 0xFFFFFFFFU);
  EXPECT_EQ(gone.GetTime(), 0);
  SiteMgr::DeleteVecRecCell(files);

  vec<SiteRecCell>* const urls = mgr().EnumUrl();
  ASSERT_EQ(urls->size(), 1U);
  EXPECT_EQ(urls->front().GetName(), "http://h/x.pdf");
  EXPECT_EQ(urls->front().GetID().kind, kKindUrl);
  EXPECT_EQ(mgr().GetUrlFileType(urls->front().GetID()), urls->front().GetFileType());
  SiteMgr::DeleteVecRecCell(urls);

  EXPECT_EQ(Taken(mgr().GetFilesByType(FT_GIF)), Rows{"sub\\deep\\dot.gif 1"});
  EXPECT_EQ(Taken(mgr().GetFilesByType(FT_GIF | FT_HTML)).size(), 6U);
  EXPECT_EQ(mgr().GetUrlFileType(Id("sub/deep/dot.gif")), static_cast<int>(FT_GIF));
}

TEST_F(Queries, FoldersHoldFoldersAndFiles) {
  EXPECT_EQ(Taken(mgr().GetSubFolders(site_.dir())), Rows{"sub\\ 2"});
  EXPECT_EQ(Taken(mgr().GetSubFolders(site_.dir() + "sub\\")), Rows{"sub\\deep\\ 1"});
  EXPECT_EQ(Taken(mgr().GetSubFolders(site_.dir() + "sub\\deep\\")), Rows{});
  EXPECT_EQ(Taken(mgr().GetChildren(site_.dir())), (Rows{"index.html 1", "orphan.html 1"}));
  EXPECT_EQ(Take(mgr().GetChild(site_.dir(), 1)), site_.path("orphan.html"));
  EXPECT_EQ(mgr().GetChild(site_.dir(), 2), nullptr);
  EXPECT_EQ(mgr().GetChild(site_.dir(), -1), nullptr);
  EXPECT_EQ(mgr().GetChildren(site_.path("sub")), nullptr);  // a folder ends in its separator
}

TEST_F(Queries, FamilyAndUnusedFiles) {
  EXPECT_EQ(Taken(mgr().GetFtpMember()),
            (Rows{"index.html 1", "sub\\a.html 1", "sub\\deep\\dot.gif 1", "gone.html 0",
                  site_.folder().path("out.html") + " 0"}));
  EXPECT_EQ(mgr().GetUrlFtpMember(Id("sub/a.html")), kFamilyMember);
  EXPECT_EQ(mgr().GetUrlFtpMember(Id("orphan.html")), 0);
  EXPECT_EQ(Taken(mgr().GetUnusedFiles()), Rows{"orphan.html 1"});
  // Nothing links to the top file any more; it is used all the same.
  site_.write("sub/a.html", "<a href=b.html>b</a>");
  ASSERT_EQ(mgr().Save(site_.path("sub/a.html"), nullptr), 0);
  EXPECT_EQ(Taken(mgr().GetUnusedFiles()), Rows{"orphan.html 1"});
}

TEST_F(Queries, TitlesAndPropertiesOfAPage) {
  EXPECT_EQ(Take(mgr().GetUrlTitle(Id("index.html"))), "Home");
  EXPECT_EQ(mgr().GetUrlTitle(Id("sub/a.html")), nullptr);
  EXPECT_EQ(mgr().SetUrlTitle(Id("sub/a.html"), "New"), 0);
  EXPECT_EQ(Take(mgr().GetUrlTitle(Id("sub/a.html"))), "New");
  EXPECT_EQ(mgr().SetUrlTitle(Id("sub/a.html"), ""), 0);
  EXPECT_EQ(mgr().GetUrlTitle(Id("sub/a.html")), nullptr);

  std::string before;  // what the pointers are set to must not be kept
  std::string* texts[6];
  const auto ask = [&](const UrlID& id) {
    std::fill(std::begin(texts), std::end(texts), &before);
    return mgr().GetUrlProperty(id, texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]);
  };
  EXPECT_EQ(ask(Id("index.html")), 0);
  EXPECT_EQ(Take(texts[3]), "a, b");
  EXPECT_EQ(texts[0], nullptr);
  EXPECT_EQ(ask(UrlID(kKindPath, 1000)), -1);
  for (const std::string* text : texts) EXPECT_EQ(text, nullptr);
}

TEST_F(Queries, NumbersAndNamesThatAreNotThere) {
  for (const UrlID& id : {UrlID(kKindPath, -1), UrlID(kKindPath, 1 << 30), UrlID(kKindFolder, 0),
                          UrlID(kKindUrl, 1 << 30), UrlID(77, 0), UrlID(), kAnyUrlID}) {
    EXPECT_EQ(mgr().GetUrlFtpMember(id), -1);
    EXPECT_EQ(mgr().GetUrlFileType(id), -1);
    EXPECT_EQ(mgr().GetUrlTitle(id), nullptr);
    EXPECT_EQ(mgr().SetUrlTitle(id, "x"), -1);
  }
  SiteLink link;
  for (const int number : {-1, 1 << 30}) {
    EXPECT_EQ(mgr().GetLink(number, link), -1);
    EXPECT_EQ(mgr().FolderName(number), nullptr);
    EXPECT_EQ(mgr().UrlPath(number), nullptr);
    EXPECT_EQ(mgr().UrlUrl(number), nullptr);
  }
  EXPECT_EQ(Take(mgr().FolderName(0)), site_.dir());
  EXPECT_EQ(Take(mgr().UrlPath(site_.Number("orphan.html"))), site_.path("orphan.html"));
  EXPECT_EQ(Take(mgr().UrlUrl(0)), "http://h/x.pdf");
  EXPECT_EQ(mgr().FindPath(site_.path("orphan.html")), site_.Number("orphan.html"));
  EXPECT_EQ(mgr().FindPath(""), -1);
}

// Percent-encoded they are UTF-8, whatever the code page; other bytes name nothing.
TEST(Fragments, AreComparedAsText) {
  const test::CodePageScope latin(1252);
  test::TestSite site(LinkRules::Web);
  site.write("a.html",
             "<meta charset=utf-8><p id=\u00E9><a href=#%C3%A9>1</a><a href=#\u00E9>2</a>"
             "<a href=#%E9>3</a><a href=#/route>4</a><a href=#!route>5</a><a href=#Top>6</a>");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  std::vector<MissingFragment> missing;
  EXPECT_EQ(site.mgr->FindMissingFragments(missing), 0);
  ASSERT_EQ(missing.size(), 1u);
  EXPECT_EQ(missing[0].fragment, "\xE9");
}

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
