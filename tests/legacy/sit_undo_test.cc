#include <gtest/gtest.h>

#include <functional>

#include "legacy/legacy_site.h"

namespace zvrsit::test {
namespace {

class Undo : public ::testing::Test {
 protected:
  Undo() {
    site.Open();
    for (const char* name : {"a", "b", "c"}) mgr.UrlAdd(2, name);
  }

  int Numbered(const UrlID& from, const UrlID& to) {
    return site.mgr->links().Matching(from, to).at(0);
  }

  LegacySite site;
  SitMgr& mgr = *site.mgr;
  const UrlID a{2, 0};
  const UrlID b{2, 1};
  const UrlID c{2, 2};
};

TEST_F(Undo, SetsTheLastErrorAlsoWithNothingToTakeBack) {
  mgr.LinkAdd(a, kAnyUrlID);
  EXPECT_EQ(mgr.GetLastError(), 11);
  EXPECT_EQ(mgr.Undo(), 0);
  EXPECT_EQ(mgr.GetLastError(), 0);
  SitMgr fresh;
  fresh.LinkAdd(a, b);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(fresh.Undo(), 0);
  EXPECT_EQ(fresh.GetLastError(), 0);
}

// A link that was added is marked deleted, and its slot stays; one that was deleted comes back as
// an anchor, or whole if it has a target text.
TEST_F(Undo, LinksGoAndComeBack) {
  mgr.LinkAdd(a, b);
  EXPECT_EQ(mgr.UpdateLinkFamily(), -1) << "a step too, though it cannot be made";
  mgr.Undo();
  EXPECT_EQ(site.Links().size(), 1u);
  mgr.Undo();
  EXPECT_TRUE(site.Links().empty());
  EXPECT_EQ(mgr.LinkNum(), 1);
  mgr.LinkAdd(a, b);
  mgr.SetLinkType(1, 5);
  mgr.LinkDel(1, 0);
  mgr.Undo();
  EXPECT_EQ(site.Links(), (std::multiset<std::string>{"a > b 1 - - 1"}));
  const int link = Numbered(a, b);
  mgr.SetLinkType(link, 2);
  mgr.SetLinkAsIsUrl(link, "b.gif");
  mgr.SetLinkImgAlt(link, "alternative");
  mgr.LinkDel(link, 0);
  mgr.Undo();
  EXPECT_EQ(site.Links(), (std::multiset<std::string>{"a > b 2 b.gif alternative 1"}));
}

// A text that comes back takes the lowest number that is free, which need not be its old one.
TEST_F(Undo, TextsComeBackUnderOtherNumbers) {
  mgr.LinkAdd(c, a);
  mgr.LinkAdd(a, b);
  mgr.LinkAdd(b, c);
  for (int link = 0; link < 3; ++link) mgr.SetLinkAsIsUrl(link, "text " + std::to_string(link));
  mgr.SetLinkType(1, 2);
  mgr.LinkDel(0, 1);
  const auto before = site.Links();

  SitLinkProperty property;
  property.type = 3;
  property.asIsUrl = "other";
  property.imgAlt = "new";
  EXPECT_EQ(mgr.SetLinkProperty("a", "b", property), 0);
  EXPECT_NE(site.Links(), before);
  mgr.Undo();
  EXPECT_EQ(site.Links(), before);

  EXPECT_EQ(mgr.LinkMove(1, b, a), 3);
  EXPECT_TRUE(site.Links().contains("b > a 2 text 1 - 1"));
  mgr.Undo();
  EXPECT_EQ(site.Links(), before);

  // The record of the pair that is there keeps what its first reference said. Its count stays
  // raised.
  const int moved = Numbered(a, b);
  EXPECT_EQ(mgr.LinkMove(moved, b, c), 2);
  EXPECT_EQ(site.Links(), (std::multiset<std::string>{"b > c 1 text 2 - 2"}));
  mgr.Undo();
  EXPECT_EQ(site.Links(), (std::multiset<std::string>{"a > b 2 text 1 - 1", "b > c 1 text 2 - 2"}));
}

TEST_F(Undo, EntriesComeBackUnderTheirNumbers) {
  mgr.SetUrlTitle(b, "Title");
  const auto before = site.Entries();
  mgr.UrlDel(b);
  mgr.Undo();
  EXPECT_EQ(site.Entries(), before);
  mgr.UrlMove(b, "elsewhere");
  mgr.Undo();
  EXPECT_EQ(site.Entries(), before);
  EXPECT_EQ(mgr.UrlAdd(2, "d"), 3);
  mgr.Undo();
  EXPECT_EQ(site.Entries(), before);
  EXPECT_EQ(mgr.UrlNum(2), 3);
  mgr.FolderNew(site.path("new"));
  mgr.Undo();
  EXPECT_EQ(site.Entries(), before);
}

// Closing packs, which gives links new numbers; the history follows.
TEST_F(Undo, StepsOfEarlierOpeningsAreTakenBackToo) {
  const auto before = site.Entries();
  std::vector<std::multiset<std::string>> states;
  const auto change = [&](auto operation) {
    states.push_back(site.Links());
    EXPECT_GE(operation(), 0);
    site.Reopen();
  };
  change([&] { return mgr.LinkAdd(a, b); });
  change([&] { return mgr.LinkAdd(b, c); });
  change([&] { return mgr.SetLinkAsIsUrl(1, "c.htm"); });
  change([&] { return mgr.LinkDel(0, 0); });
  change([&] { return mgr.LinkAdd(a, c); });
  change([&] { return mgr.SetLinkAsIsUrl(0, "other"); });
  change([&] { return mgr.LinkMove(0, c, a); });
  change([&] { return mgr.UrlMove(b, "elsewhere"); });
  for (; !states.empty(); states.pop_back()) {
    // Closing and opening are steps of their own.
    for (int i = 0; i < 3; ++i) mgr.UndoWithAlternatives();
    EXPECT_EQ(site.Links(), states.back()) << states.size();
    site.Reopen();
    for (int i = 0; i < 2; ++i) mgr.Undo();
  }
  EXPECT_EQ(site.Entries(), before);
}

// Another site, and the same one when another manager has changed it since it was left.
TEST(UndoHistory, StepsOfOtherFilesLeaveTheOpenOnesAlone) {
  for (const std::string name : {"other", "demo"}) {
    LegacySite site;
    site.mgr->SiteProfAdd("other");
    const auto change = [&](OpenSitMgr& mgr, const std::string& which) {
      EXPECT_EQ(mgr.SiteOpen(which), 0);
      for (const char* entry : {"a", "b", "c"}) mgr.UrlAdd(2, mgr.UrlNum(2) == 3 ? "d" : entry);
      EXPECT_GE(mgr.LinkAdd({2, 0}, {2, 1}), 0);
      EXPECT_EQ(mgr.SiteClose(), 0);
    };
    change(*site.mgr, "demo");
    OpenSitMgr writer;
    writer.setDB(site.folder().path("db") + "\\", "sites", "servers");
    change(writer, name);
    EXPECT_EQ(site.mgr->SiteOpen(name), 0);
    const auto links = site.Links();
    const auto entries = site.Entries();
    EXPECT_FALSE(links.empty());
    for (int i = 0; i < 20; ++i) site.mgr->Undo();
    EXPECT_EQ(site.Links(), links) << name;
    EXPECT_EQ(site.Entries(), entries) << name;
  }
}

class UndoOfFiles : public ::testing::Test {
 protected:
  UndoOfFiles() {
    site.write("index.html",
               "<title>Top</title><a href=page.html>p</a><img src=gone.gif alt=Gone>"
               "<a href=http://example.org/>web</a><a href=page.html#x>again</a>");
    site.write("page.html", "<meta name=keywords content=zebra><a href=index.html>up</a>");
    site.write("sub/deep.html", "<a href=../index.html>up</a><a href=../page.html>p</a>");
    site.Open();
    EXPECT_EQ(mgr.SiteRebuildDB(1), 0);
    links = site.Links();
    entries = site.Entries();
  }

  void UndoAndCompare() {
    EXPECT_NE(site.Entries(), entries);
    EXPECT_EQ(mgr.Undo(), 0);
    EXPECT_EQ(site.Links(), links);
    EXPECT_EQ(site.Entries(), entries);
  }

  LegacySite site;
  SitMgr& mgr = *site.mgr;
  std::multiset<std::string> links;
  std::multiset<std::string> entries;
};

TEST_F(UndoOfFiles, EveryChangeIsOneStep) {
  const std::string page = site.path("page.html"), deep = site.path("sub/deep.html");
  SitUrlRec property;
  property.title = "Other";
  const std::function<int()> changes[] = {
      [&] {
        site.write("page.html", "<a href=new.html>n</a><a href=http://example.net/>n</a>");
        return mgr.Save(page);
      },
      [&] { return mgr.Save(page); },
      [&] { return mgr.Remove(page); },
      [&] { return mgr.Remove(deep); },
      [&] {
        site.write("sub/moved.html", "<a href=../index.html>up</a>");
        return mgr.Move(page, site.path("sub/moved.html"));
      },
      [&] { return mgr.SetUrlProperty(page, property); },
  };
  for (const auto& change : changes) {
    SCOPED_TRACE("change " + std::to_string(&change - changes));
    EXPECT_EQ(change(), 0);
    UndoAndCompare();
  }
  EXPECT_EQ(mgr.Remove(page), 0);
  EXPECT_EQ(site.Status("page.html"), kStatusMissing) << "others link to it";
  EXPECT_EQ(mgr.Remove(deep), 0);
  EXPECT_EQ(site.Status("sub/deep.html"), -1);
  EXPECT_EQ(Error(mgr, mgr.Remove(site.path("sub/unknown.html"))), 15);
}

}  // namespace
}  // namespace zvrsit::test
