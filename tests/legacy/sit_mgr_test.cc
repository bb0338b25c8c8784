// Single operations of the open site, the queries, and looking into sites without opening them.
#include <gtest/gtest.h>

#include <filesystem>

#include "legacy/legacy_site.h"
#include "legacy/sit_peeper.h"

namespace zvrsit::test {
namespace {

class OpenSite : public ::testing::Test {
 protected:
  OpenSite() {
    EXPECT_EQ(site.Open(), 0);
    for (const char* name : {"a", "b", "c"}) mgr.UrlAdd(2, name);
    mgr.UrlAdd(3, "http://example.org/");
  }

  LegacySite site;
  SitMgr& mgr = *site.mgr;
  const UrlID a{2, 0};
  const UrlID b{2, 1};
  const UrlID c{2, 2};
  const UrlID web{3, 0};
};

TEST(SitMgr, WithNoSiteOpenEveryOperationSaysSo) {
  LegacySite site;
  SitMgr& mgr = *site.mgr;
  UrlID id;
  EXPECT_EQ(Error(mgr, mgr.UrlAdd(2, "x")), 3);
  EXPECT_EQ(Error(mgr, mgr.LinkAdd({2, 0}, {2, 1})), 3);
  EXPECT_EQ(Error(mgr, mgr.GetForeLinks("x")), 3);
  EXPECT_EQ(Error(mgr, mgr.Save("x")), 3);
  EXPECT_EQ(mgr.FolderAdd("x"), -1);
  EXPECT_EQ(Error(mgr, mgr.SiteClose()), 3);
  EXPECT_EQ(Error(mgr, mgr.SetSiteTopFile("x")), 3);
  EXPECT_EQ(Error(mgr, mgr.SiteOpen("nobody")), 14);
  EXPECT_EQ(mgr.RecoverFromLastError(), 0);
  EXPECT_EQ(mgr.GetLastError(), 0);
}

TEST(SitMgr, OpeningTellsWhatIsInTheWay) {
  LegacySite site;
  SitMgr& mgr = *site.mgr;
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(Error(mgr, site.Open()), 4);
  EXPECT_EQ(mgr.SiteClose(), 0);
  site.folder().write("db/demo/Folder.db", "damaged");
  EXPECT_EQ(Error(mgr, site.Open()), 5);
  EXPECT_EQ(mgr.OpenSite(), -1);
  EXPECT_EQ(mgr.UrlNum(2), -1) << "the other stores are let go";
}

TEST_F(OpenSite, LinksAreCheckedAndNumbered) {
  EXPECT_EQ(Error(mgr, mgr.LinkAdd(a, kAnyUrlID)), 11);
  EXPECT_EQ(Error(mgr, mgr.LinkAdd(a, UrlID())), 11);
  EXPECT_EQ(mgr.LinkAdd(a, b), 0);
  EXPECT_EQ(mgr.LinkAdd(a, web), 1);
  for (const int type : {0, 14, -1}) {
    EXPECT_EQ(Error(mgr, mgr.SetLinkType(0, type)), 11);
  }
  EXPECT_EQ(mgr.SetLinkType(0, 13), 0);
  EXPECT_EQ(mgr.GetLinkType(0), 13);
  EXPECT_EQ(Error(mgr, mgr.SetLinkAsIsUrl(0, "")), 11);
  EXPECT_EQ(Error(mgr, mgr.GetLinkAsIsUrl(0)), 17);
  EXPECT_EQ(mgr.SetLinkAsIsUrl(0, "b.htm#x"), 0);
  EXPECT_EQ(Text(mgr.GetLinkAsIsUrl(0)), "b.htm#x");
  EXPECT_EQ(mgr.LinkDel(0, 0), 0);
  UrlID from;
  UrlID to;
  EXPECT_EQ(Error(mgr, mgr.LinkBothSides(0, from, to)), 15);
  EXPECT_EQ(Error(mgr, mgr.LinkBothSides(2, from, to)), 16);
}

TEST_F(OpenSite, TheLinksOfAPageComeOneAtATime) {
  mgr.LinkAdd(a, b);
  mgr.LinkAdd(a, web);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Text(mgr.GetForeLinks("a")), "b");
    EXPECT_EQ(Text(mgr.GetForeLinks("a")), "http://example.org/");
    EXPECT_EQ(Error(mgr, mgr.GetForeLinks("a")), 15);
  }
  EXPECT_EQ(Text(mgr.GetBackLinks("http://example.org/")), "a");
  EXPECT_EQ(Error(mgr, mgr.GetForeLinks("unknown")), 15);
}

TEST_F(OpenSite, ALinkThatIsNotBrokenDoesNotEndTheBrokenOnes) {
  mgr.LinkAdd(a, b);
  mgr.LinkAdd(a, c);
  mgr.LinkAdd(a, web);
  mgr.SetUrlStatus(b, 2);
  mgr.SetUrlStatus(c, 5);
  mgr.SetUrlStatus(web, 8);
  EXPECT_EQ(Text(mgr.GetBrokenLinks("a")), "b");
  EXPECT_EQ(Error(mgr, mgr.GetBrokenLinks("a")), 0);
  EXPECT_EQ(Text(mgr.GetBrokenLinks("a")), "http://example.org/");
  EXPECT_EQ(Error(mgr, mgr.GetBrokenLinks("a")), 15);
}

TEST_F(OpenSite, EnumLinkSkipsDeletedLinksAndNamesDamagedOnes) {
  for (const UrlID& to : {a, b, c}) mgr.LinkAdd(a, to);
  mgr.LinkDel(1, 1);
  mgr.LinkAdd({2, 77}, a);
  mgr.LinkAdd(b, {2, 78});
  mgr.LinkAdd(b, web);
  mgr.UrlDel(web);
  std::string* from = nullptr;
  std::string* to = nullptr;
  EXPECT_EQ(mgr.EnumLink(1, nullptr, nullptr), 0);
  for (const char* target : {"a", "c"}) {
    ASSERT_EQ(mgr.EnumLink(0, &from, &to), 0);
    EXPECT_EQ(Text(from), "a");
    EXPECT_EQ(Text(to), target);
  }
  EXPECT_EQ(Error(mgr, mgr.EnumLink(0, &from, &to)), 7) << "its source has no text";
  EXPECT_EQ(Error(mgr, mgr.EnumLink(0, &from, &to)), 7) << "its target never was";
  EXPECT_EQ(Error(mgr, mgr.EnumLink(0, &from, &to)), 15) << "its target was deleted";
  EXPECT_EQ(Error(mgr, mgr.EnumLink(0, &from, &to)), 16);
  EXPECT_EQ(mgr.EnumLink(0, &from, &to), 0) << "and from the start again";
  Text(from);
  Text(to);
  EXPECT_EQ(mgr.GetLinkStatus(3), 0);
  for (const int error : {7, 15}) {
    EXPECT_EQ(Error(mgr, mgr.GetForeLinks("b")), error);
  }
  EXPECT_EQ(Text(mgr.GetBackLinks("a")), "a");
  EXPECT_EQ(Error(mgr, mgr.GetBackLinks("a")), 7) << "the source has no text";
  for (const auto& [link, error] : {std::pair(4, 7), std::pair(5, 15)}) {
    EXPECT_EQ(Error(mgr, mgr.GetLinkStatus(link)), error) << link;
  }
}

TEST_F(OpenSite, EntriesAndTheirFields) {
  EXPECT_EQ(mgr.UrlAdd(2, "a"), 0) << "an entry is made once";
  EXPECT_EQ(Error(mgr, mgr.UrlAdd(0, "x")), 11);
  EXPECT_EQ(mgr.SetUrlTitle(a, "A title"), 0);
  EXPECT_EQ(mgr.SetUrlKeywords(b, "Zebra, horse"), 0);
  EXPECT_EQ(Text(mgr.GetUrlTitle(a)), "A title");
  EXPECT_EQ(Error(mgr, mgr.SetUrlTitle(a, "")), 11);
  EXPECT_EQ(mgr.SetUrlFtpMember(a, 5), 0);
  EXPECT_EQ(mgr.UnsetUrlFtpMember(a, 1), 0);
  EXPECT_EQ(mgr.GetUrlFtpMember(a), 4);
  EXPECT_EQ(Error(mgr, mgr.UrlMove(a, "b")), 11) << "the text is another entry's";
  EXPECT_EQ(mgr.UrlMove(a, "moved.htm"), 0);
  EXPECT_EQ(mgr.UrlDel(c), 0);
  EXPECT_EQ(Error(mgr, mgr.UrlPath(c)), 15);
  EXPECT_EQ(Error(mgr, mgr.UrlPath({2, 3})), 16);
  for (const UrlID& id : {UrlID(2, -1), UrlID(3, -1), kAnyUrlID, UrlID()}) {
    EXPECT_EQ(Text(mgr.UrlPath(id)) + Text(mgr.UrlUrl(id)), "(null)(null)");
    EXPECT_EQ(mgr.GetLastError(), 11);
    EXPECT_EQ(Error(mgr, mgr.UrlDel(id)), 11);
  }

  site.Reopen();
  EXPECT_EQ(mgr.EnumPath(1), nullptr);
  EXPECT_EQ(Text(mgr.EnumPath(0)), "moved.htm");
  EXPECT_EQ(Text(mgr.EnumPath(0)), "b");
  EXPECT_EQ(mgr.EnumPath(0), nullptr);
  EXPECT_EQ(Text(mgr.EnumUrl(0)), "http://example.org/");
  mgr.EnumUrl(1);
  EXPECT_EQ(Text(mgr.SearchKeyword(0, "zEBRA")), "b");
  EXPECT_EQ(mgr.SearchKeyword(0, "zEBRA"), nullptr);
}

TEST_F(OpenSite, FoldersAndRelations) {
  const int sub = mgr.FolderNew(site.path("one/two"));
  ASSERT_GE(sub, 0);
  EXPECT_EQ(Text(mgr.FolderName(sub)), site.path("one/two/"));
  EXPECT_EQ(mgr.FolderAdd(site.path("one/two")), sub);
  EXPECT_EQ(mgr.RelAdd({0, sub}, a), mgr.RelAdd({0, sub}, a)) << "a relation is made once";
  EXPECT_EQ(mgr.RelAdd({0, sub}, web), -1);
  EXPECT_EQ(Text(mgr.GetSubFolder(site.path("one"))), site.path("one/two/"));
  EXPECT_EQ(mgr.GetSubFolder(site.path("one")), nullptr);
  EXPECT_EQ(Text(mgr.GetChild(site.path("one/two/"))), "a");
  EXPECT_EQ(Text(mgr.GetRel("a")), site.path("one/two/"));
  EXPECT_EQ(Text(mgr.GetRel(site.path("one"))), site.dir());
  EXPECT_EQ(mgr.RelDel({0, sub}, a), 0);
  EXPECT_EQ(Error(mgr, mgr.RelDel({0, sub}, a)), 15);
}

TEST_F(OpenSite, SettingALinkPropertyIsOneStep) {
  mgr.LinkAdd(a, b);
  SitLinkProperty property;
  property.type = kSitLinkImage;
  property.asIsUrl = "b";
  property.imgAlt = "a picture";
  EXPECT_EQ(mgr.SetLinkProperty("a", "b", property), 0);
  SitLinkProperty stored;
  EXPECT_EQ(mgr.GetLinkProperty("a", "b", stored), 0);
  EXPECT_EQ(stored.type, 2);
  EXPECT_EQ(stored.imgAlt, "a picture");
  mgr.Undo();
  EXPECT_EQ(mgr.GetLinkProperty("a", "b", stored), 0);
  EXPECT_EQ(stored.type, 1);
  EXPECT_EQ(stored.imgAlt, "");
  EXPECT_EQ(Error(mgr, mgr.GetLinkProperty("b", "a", stored)), 15);
}

// The strings of a result, which is given back.
std::vector<std::string> Texts(SitPeeper& peeper, std::vector<std::string*>* result) {
  std::vector<std::string> texts;
  if (result == nullptr) return {"(null)"};
  for (std::string* text : *result) texts.push_back(Text(text));
  EXPECT_EQ(peeper.DeleteStrings(result), 0);
  EXPECT_TRUE(result->empty());
  delete result;
  return texts;
}

using Names = std::vector<std::string>;

TEST(SitPeeper, LooksIntoSitesWithoutOpeningThem) {
  LegacySite site;
  site.Open();
  for (const char* path : {"\\x\\a.htm", "\\x\\b.htm", "\\x\\c.htm"}) site.mgr->UrlAdd(2, path);
  site.mgr->UrlDel({2, 1});
  site.mgr->SiteClose();
  site.mgr->SiteProfAdd("other");
  site.mgr->SiteProfAdd("deleted");
  site.mgr->SiteProfDel("deleted");
  site.mgr->SiteOpen("other");
  site.mgr->UrlAdd(2, "\\x\\a.htm");
  site.mgr->SiteClose();

  SitPeeper original;
  original.setDB(site.folder().path("db") + "\\", "sites", "servers");
  SitPeeper peeper(original);
  EXPECT_EQ(Texts(peeper, peeper.EnumPath("demo")), (Names{"\\x\\a.htm", "\\x\\c.htm"}));
  EXPECT_EQ(peeper.EnumPath("Demo"), nullptr);
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\a.htm")), (Names{"demo", "other"}));
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\A.htm")), Names());
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\b.htm")), Names());
  EXPECT_FALSE(site.folder().has("db/deleted"));

  EXPECT_TRUE(peeper.IsWhole("demo"));
  for (const char* bytes : {"damaged", "", static_cast<const char*>(nullptr)}) {
    std::filesystem::remove(site.folder().native("db/other/Url.db"));
    if (bytes != nullptr) site.folder().write("db/other/Url.db", bytes);
    EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\a.htm")), Names{"demo"});
    EXPECT_EQ(peeper.EnumPath("other"), nullptr);
    EXPECT_EQ(peeper.lastError(), 5);
    EXPECT_FALSE(peeper.IsWhole("other"));
  }
  EXPECT_FALSE(site.folder().has("db/other/Url.db")) << "looking makes no file";
  site.folder().write("db/demo/Url.db", site.folder().read("db/demo/Url.db") + "more");
  EXPECT_FALSE(peeper.IsWhole("demo"));
}

}  // namespace
}  // namespace zvrsit::test
