#include "legacy/sit_prof.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>

#include "legacy/legacy_site.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

using test::TempFolder;
using test::Text;
using test::ToHex;
using test::Word;

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
}

TEST_F(Profiles, SiteRecordsAre88BytesLong) {
  ASSERT_EQ(mgr.SiteProfAdd("first"), 0);
  ASSERT_EQ(mgr.SiteProfAdd("second"), 0);
  mgr.SetSiteProfUseDocRoot(1, 7);
  const std::string bytes = folder.read("db/sites");
  ASSERT_EQ(bytes.size(), 8u + 2 * 88);
  EXPECT_EQ(ToHex(bytes.substr(8 + 88 + 80, 8)), "07 00 00 00 ff ff ff ff");
  EXPECT_EQ(mgr.GetSiteProfUseDocRoot(1), 7);
}

TEST_F(Profiles, FailuresOfFieldsSetTheirLastErrors) {
  mgr.SiteProfAdd("demo");
  EXPECT_EQ(Text(mgr.GetSiteProfDir(0, 3)), "(null)");
  EXPECT_EQ(mgr.GetLastError(), 17);
  EXPECT_EQ(mgr.SetSiteProfTopFile(0, ""), -1);
  EXPECT_EQ(mgr.GetLastError(), 11);
  for (const int number : {-1, 1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(mgr.GetSiteProfUseDocRoot(number), -1);
    EXPECT_EQ(mgr.GetLastError(), 14) << number;
    EXPECT_EQ(mgr.SetSiteProfTopFile(number, "x"), -1);
    EXPECT_EQ(mgr.GetLastError(), 14) << number;
  }
  EXPECT_EQ(Text(mgr.GetSiteProfDir(0, 11)), "demo\\Url.db") << "an index counts on over the words";
  EXPECT_EQ(Text(mgr.GetSiteProfDir(0, INT_MAX)), "(null)");
  EXPECT_EQ(mgr.SetSiteProfDir(0, "x", INT_MIN), -1);
  SitMgr bare;
  EXPECT_EQ(bare.SetServProfHost(0, "x"), -1);
  EXPECT_EQ(bare.GetLastError(), 7);
}

TEST_F(Profiles, NamesAreFoundByTheirExactBytes) {
  mgr.ServProfAdd("Home");
  EXPECT_EQ(mgr.ServProfGetID("Home"), 0);
  EXPECT_EQ(mgr.ServProfGetID("home"), -1);
  EXPECT_EQ(mgr.GetLastError(), 14);
  EXPECT_EQ(mgr.ServProfAdd("Home"), -1);
  EXPECT_EQ(mgr.GetLastError(), 11);
}

TEST_F(Profiles, ADeletedProfileKeepsItsSlot) {
  for (const char* name : {"one", "two", "three"}) mgr.SiteProfAdd(name);
  EXPECT_EQ(mgr.SiteProfDel("two"), 0);
  EXPECT_EQ(mgr.SiteProfNum(), 3);
  EXPECT_EQ(Text(mgr.SiteProfName(1)), "(null)");
  EXPECT_EQ(mgr.GetLastError(), 15);
  EXPECT_EQ(Text(mgr.SiteProfName(3)), "(null)");
  EXPECT_EQ(mgr.GetLastError(), 16);

  EXPECT_EQ(mgr.EnumSiteProf(1), nullptr);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "one");
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "three");
    EXPECT_EQ(Text(mgr.EnumSiteProf(0)), "(null)");
  }
}

TEST_F(Profiles, SitesGetFilesOfTheirOwn) {
  for (const char* name : {"", ".", "..", "a/b", "a\\b", "con", "x ", "q?"}) {
    EXPECT_EQ(mgr.SiteProfAdd(name), -1) << name;
    EXPECT_EQ(mgr.GetLastError(), 11);
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
  const auto check = [&](const char* what) {
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
  };
  EXPECT_EQ(mgr.SetSiteProf("demo", changed), 0);
  check("SetSiteProf");
  EXPECT_EQ(mgr.SiteProfDel("demo"), 0);
  check("SiteProfDel");
  EXPECT_EQ(mgr.SiteProfAdd("new"), 0);
  check("SiteProfAdd");
  EXPECT_EQ(mgr.SiteProfCopy("demo", "copy"), 0);
  check("SiteProfCopy");
  EXPECT_EQ(mgr.ServProfCopy("home", "copy"), 0);
  check("ServProfCopy");
  EXPECT_EQ(mgr.ServProfMove("home", "away"), 0);
  check("ServProfMove");
  EXPECT_EQ(mgr.ServProfDel("home"), 0);
  check("ServProfDel");
  EXPECT_EQ(mgr.SetSiteProfDir(0, "\\y\\", 1), 0);
  check("SetSiteProfDir");
  EXPECT_EQ(mgr.SetServProfPassword(0, "other"), 0);
  check("SetServProfPassword");
}

}  // namespace
}  // namespace zvrsit
