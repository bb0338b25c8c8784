#include "legacy/sit_prof.h"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

#include "legacy/legacy_site.h"
#include "support/temp_folder.h"

namespace zvrsit::test {
namespace {

class Profiles : public ::testing::Test {
 protected:
  Profiles() { mgr.setDB(folder.path("db") + "\\", "sites", "servers"); }

  TempFolder folder;
  SitMgr mgr;
};

TEST_F(Profiles, ServerFieldsStandInTheFileWhereTheyBelong) {
  ASSERT_EQ(mgr.ServProfAdd("home"), 0);
  EXPECT_EQ(mgr.SetServProfHost(0, "ftp.example.org"), 0);
  EXPECT_EQ(mgr.SetServProfPassword(0, "abc"), 0);
  EXPECT_EQ(mgr.SetServProfFxferType(0, 5), 0);
  EXPECT_EQ(mgr.SetServProfLockDir(0, 6), 0);
  EXPECT_EQ(mgr.SetServProfAsciiSuffix(0, "htm"), 0);
  const std::string none = Word(0xFFFFFFFF);
  EXPECT_EQ(
      ToHex(folder.read("db/servers")),
      ToHex(Word(1) + Word(1) + Word(0) + Word(0) + Word(1) + none + Word(2) + none + Word(0) +
            none + none + none + Word(5) + Word(0) + none + none + none + Word(6) + Word(3)));
  EXPECT_NE(folder.read("db/servers_S").find("SQD^"), std::string::npos);
  EXPECT_EQ(Text(mgr.GetServProfPassword(0)), "abc");
  EXPECT_EQ(mgr.GetServProfLockDir(0), 6);
  EXPECT_EQ(mgr.ServProfAdd("second"), 0) << "not its number";
}

TEST_F(Profiles, FailuresOfFieldsSetTheirLastErrors) {
  mgr.SiteProfAdd("demo");
  EXPECT_EQ(Error(mgr, mgr.GetSiteProfDir(0, 3)), 17);
  EXPECT_EQ(Error(mgr, mgr.SetSiteProfTopFile(0, "")), 11);
  for (const int number : {-1, 1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(Error(mgr, mgr.GetSiteProfUseDocRoot(number)), 14) << number;
    EXPECT_EQ(Error(mgr, mgr.SetSiteProfTopFile(number, "x")), 14) << number;
  }
  EXPECT_EQ(Text(mgr.GetSiteProfDir(0, 11)), "demo\\Url.db") << "an index counts on over the words";
  EXPECT_EQ(Text(mgr.GetSiteProfDir(0, INT_MAX)), "(null)");
  EXPECT_EQ(mgr.SetSiteProfDir(0, "x", INT_MIN), -1);
  SitMgr bare;
  EXPECT_EQ(Error(bare, bare.SetServProfHost(0, "x")), 7);
}

TEST_F(Profiles, ADeletedProfileKeepsItsSlot) {
  for (const char* name : {"one", "two", "three"}) mgr.SiteProfAdd(name);
  EXPECT_EQ(mgr.SiteProfDel("two"), 0);
  EXPECT_EQ(mgr.SiteProfNum(), 3);
  EXPECT_EQ(Error(mgr, mgr.SiteProfName(1)), 15);
  EXPECT_EQ(Error(mgr, mgr.SiteProfName(3)), 16);

  EXPECT_EQ(mgr.EnumSiteProf(1), nullptr);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "one");
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "three");
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "(null)");
  }
}

TEST_F(Profiles, SitesGetFilesOfTheirOwn) {
  for (const char* name : {"", ".", "..", "a/b", "a\\b", "con", "x ", "q?"}) {
    EXPECT_EQ(Error(mgr, mgr.SiteProfAdd(name)), 11) << name;
  }
  mgr.SiteProfAdd("demo");
  mgr.SetSiteProfTopFile(0, "\\x\\index.html");
  EXPECT_EQ(mgr.SiteProfMove("demo", "other"), 0);
  EXPECT_EQ(mgr.SiteProfAdd("Demo"), 0);
  EXPECT_EQ(mgr.SiteProfCopy("other", "copy"), 0);
  EXPECT_EQ(mgr.SiteProfGetID("copy"), 2);
  EXPECT_EQ(Text(mgr.GetSiteProfUrlDB(0)), "demo\\Url.db") << "a renamed site keeps its files";
  EXPECT_EQ(Text(mgr.GetSiteProfUrlDB(1)), "Demo~2\\Url.db");
  EXPECT_EQ(Text(mgr.GetSiteProfRelDB(2)), "copy\\Rel.db");
  EXPECT_EQ(Text(mgr.GetSiteProfTopFile(2)), "\\x\\index.html");
}

// A profile file is data: the names in it must not reach files elsewhere.
TEST_F(Profiles, FilesElsewhereAreNotOpened) {
  mgr.SiteProfAdd("demo");
  for (const char* name : {"..\\made", "demo\\..\\..\\made", "demo/../../made"}) {
    EXPECT_EQ(mgr.SetSiteProfDir(0, name, 11), 0);
    EXPECT_EQ(Error(mgr, mgr.SiteOpen("demo")), kSitCannotOpen) << name;
    EXPECT_FALSE(folder.has("made")) << name;
  }
}

TEST_F(Profiles, UndoRestoresEveryByteOfThem) {
  SitServProperty server;
  server.host = "ftp.example.org";
  server.password = "secret";
  SitSiteProperty site;
  site.dir[1] = "\\x\\";
  mgr.SetServProf("home", server);
  mgr.SetSiteProf("demo", site);
  SitSiteProperty changed = site;
  changed.dir[1] = "\\elsewhere\\";
  changed.servProf = "home";
  const auto records = [&] {
    return ToHex(folder.read("db/sites")) + "/" + ToHex(folder.read("db/servers"));
  };
  const std::string before = records();
  const std::function<int()> changes[] = {
      [&] { return mgr.SetSiteProf("demo", changed); },
      [&] { return mgr.SiteProfDel("demo"); },
      [&] { return mgr.SiteProfAdd("new"); },
      [&] { return mgr.SiteProfCopy("demo", "copy"); },
      [&] { return mgr.ServProfCopy("home", "copy"); },
      [&] { return mgr.ServProfMove("home", "away"); },
      [&] { return mgr.ServProfDel("home"); },
      [&] { return mgr.SetSiteProfDir(0, "\\y\\", 1); },
      [&] { return mgr.SetServProfPassword(0, "other"); },
  };
  for (const auto& change : changes) {
    const auto what = &change - changes;
    EXPECT_EQ(change(), 0) << what;
    EXPECT_NE(records(), before) << what;
    EXPECT_EQ(mgr.Undo(), 0);
    // What follows the last record is no part of it.
    EXPECT_EQ(records().substr(0, before.find('/') - 1), before.substr(0, before.find('/') - 1))
        << what;
    SitSiteProperty nowSite;
    SitServProperty nowServer;
    EXPECT_EQ(mgr.GetSiteProf("demo", nowSite), 0) << what;
    EXPECT_EQ(mgr.GetServProf("home", nowServer), 0) << what;
    EXPECT_EQ(nowSite, site) << what;
    EXPECT_EQ(nowServer, server) << what;
    EXPECT_EQ(mgr.SiteProfNum(), 1) << what;
    EXPECT_EQ(mgr.ServProfNum(), 1) << what;
  }
}

}  // namespace
}  // namespace zvrsit::test
