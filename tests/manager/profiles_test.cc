// Profiles of sites and of servers.
#include <gtest/gtest.h>

#include "manager/answers.h"
#include "support/file_fault.h"
#include "support/test_site.h"

namespace zvrsit {
namespace {

using test::Take;
using Names = std::vector<std::string>;

constexpr const char* kTables[] = {"UR", "US", "PR", "PS", "LR", "LS", "FR", "FS", "RR", "RS"};

// The profile "demo" over a site of two pages, its tables written.
class SiteProfiles : public testing::Test {
 protected:
  SiteProfiles() {
    site_.write("index.html", "<a href=a.html>a</a>");
    site_.write("a.html", "");
    EXPECT_EQ(site_.Open(), 0);
    EXPECT_EQ(site_.mgr->SiteRebuildDB(1, nullptr), 0);
    EXPECT_EQ(site_.mgr->SiteClose(), 0);
  }

  SiteMgr& mgr() { return *site_.mgr; }
  SiteProfile Profile(const std::string& name) {
    SiteProfile profile;
    EXPECT_EQ(mgr().GetSiteProf(name, profile), 0);
    return profile;
  }
  // How many of the ten table files of a site are there.
  int Tables(const std::string& name) {
    int there = 0;
    for (const char* file : kTables) there += site_.folder().has("db/" + name + "/" + file) ? 1 : 0;
    return there;
  }
  bool KnowsItsPages(const std::string& name) {
    EXPECT_EQ(mgr().SiteOpen(name, 0), 0);
    const bool knows = mgr().FindPath(site_.path("a.html")) >= 0;
    EXPECT_EQ(mgr().SiteClose(), 0);
    return knows;
  }

  test::TestSite site_;
};

TEST_F(SiteProfiles, AWholeProfileIsStoredAndReadBack) {
  SiteProfile profile;
  for (std::size_t slot = 0; slot < profile.folders.size(); ++slot) {
    profile.folders[slot] = site_.dir() + std::to_string(slot) + "\\";
  }
  profile.topFile = site_.path("index.html");
  profile.defaultUrl = "index.html";
  profile.server = "www";
  profile.useDocumentRoot = true;
  profile.linkRules = LinkRules::Web;
  profile.rebuildState = 2;
  ASSERT_EQ(mgr().SetSiteProf("new", profile), 0);
  site_.Start();
  EXPECT_EQ(Profile("new"), profile);

  profile.folders[5].clear();
  profile.server.clear();
  profile.folders[kSlotSiteFolder] = site_.dir();
  ASSERT_EQ(mgr().SetSiteProf("new", profile), 0);
  EXPECT_EQ(Profile("new"), profile);
  EXPECT_EQ(Take(mgr().EnumSiteProf()), (Names{"demo", "new"}));
  // The tables are found in their folder, as before.
  EXPECT_EQ(mgr().SiteOpen("new", 0), 0);
  EXPECT_NE(mgr().GetPathDB(), nullptr);
  mgr().SiteClose();
  EXPECT_EQ(Tables("new"), 10);
}

TEST_F(SiteProfiles, ANewProfileStartsEmptyEvenWhereTablesWereLeft) {
  EXPECT_EQ(mgr().AddSiteProf("demo"), -1);
  site_.folder().write("db/new/UR", "left over");
  const int number = mgr().AddSiteProf("new");
  EXPECT_EQ(number, mgr().FindSiteProf("new"));
  EXPECT_EQ(mgr().NeedToRebuild("new"), 0);
  EXPECT_EQ(Profile("new"), SiteProfile{});
  EXPECT_TRUE(site_.folder().has("db/new"));
  EXPECT_EQ(Tables("new"), 0);
}

// Whichever call fails, and fails often, as on a full disk: once there is room, a profile is added,
// and the next session has it and all that there were.
TEST_F(SiteProfiles, AreNotLostWhereAddingOneHasFailed) {
  int added = 0;
  const auto add = [&] { return mgr().AddSiteProf("new" + std::to_string(++added)); };
  const std::string records = site_.folder().read("db/sites.R");
  const std::string texts = site_.folder().read("db/sites.S");
  const auto prepare = [&] {
    site_.mgr.reset();
    site_.folder().write("db/sites.R", records);
    site_.folder().write("db/sites.S", texts);
    site_.Start();
  };
  const auto check = [&](const test::FailedRun& run) {
    for (int again = 0; again < 24; ++again) {
      test::FileFault fault(run.call);
      add();
    }
    ASSERT_GE(add(), 0) << run.call;
    site_.Start();
    EXPECT_EQ(Profile("demo").topFile, site_.path("index.html")) << run.call;
    EXPECT_GE(mgr().GetSiteProf()->Find("new" + std::to_string(added)), 0) << run.call;
  };
  EXPECT_GT(test::FailEachCall(prepare, add, check, test::kOneCallIn), 20 / test::kOneCallIn);
}

TEST_F(SiteProfiles, RenamingKeepsTheTables) {
  const int number = mgr().FindSiteProf("demo");
  site_.folder().write("db/demo/UR_bak", "backup");
  ASSERT_EQ(mgr().RenameSiteProf("demo", "other"), 0);
  EXPECT_EQ(mgr().FindSiteProf("demo"), -1);
  EXPECT_EQ(mgr().FindSiteProf("other"), number);
  EXPECT_EQ(Tables("other"), 10);
  EXPECT_TRUE(site_.folder().has("db/other/UR_bak"));
  EXPECT_FALSE(site_.folder().has("db/demo"));
  EXPECT_TRUE(KnowsItsPages("other"));
  EXPECT_EQ(mgr().RenameSiteProf("other", "Other"), 0);
  EXPECT_TRUE(KnowsItsPages("Other"));
  EXPECT_EQ(mgr().RenameSiteProf("demo", "x"), -1);
}

// Whatever the name is afterwards, the tables are there under it.
TEST_F(SiteProfiles, ARenameThatFailsLosesNoTable) {
  std::string from;
  std::string to = "demo";
  int result = 0;
  const int calls = test::FailEachCall(
      [&] {
        from = to;
        to = from == "demo" ? "other" : "demo";
      },
      [&] { result = mgr().RenameSiteProf(from, to); },
      [&](const test::FailedRun& run) {
        const Names names = Take(mgr().EnumSiteProf());
        ASSERT_EQ(names, Names{result == 0 ? to : from}) << run.call;
        EXPECT_TRUE(KnowsItsPages(names.front())) << run.call;
        to = names.front();
      });
  EXPECT_GT(calls, 30);
}

TEST_F(SiteProfiles, DeletingRemovesTheTablesAndNothingElse) {
  site_.folder().write("db/demo/UR_bak", "backup");
  site_.folder().write("db/demo/notes", "the user's own");
  EXPECT_EQ(mgr().DeleteSiteProf("demo"), 0);
  EXPECT_EQ(Tables("demo"), 0);
  EXPECT_FALSE(site_.folder().has("db/demo/UR_bak"));
  EXPECT_TRUE(site_.folder().has("db/demo/notes"));
  EXPECT_TRUE(site_.folder().has("site/a.html"));
  EXPECT_EQ(Take(mgr().EnumSiteProf()), Names{});
  EXPECT_EQ(mgr().DeleteSiteProf("demo"), -1);
}

// A profile file is data: the names in it must not reach files elsewhere.
TEST_F(SiteProfiles, AProfileWithForeignTableNamesReachesNoOtherFile) {
  site_.write("precious", "R");
  site_.write("preciouS", "S");
  (void)mgr().GetSiteProf()->SetText(mgr().FindSiteProf("demo"), &SiteSiteRec::urlFile,
                                     "..\\site\\precious");
  EXPECT_EQ(mgr().DeleteSiteProf("demo"), 0);
  EXPECT_TRUE(site_.folder().has("site/precious"));
  EXPECT_TRUE(site_.folder().has("site/preciouS"));
}

TEST_F(SiteProfiles, AProfileWithForeignTableNamesIsNotOpened) {
  const int number = mgr().FindSiteProf("demo");
  for (const char* name : {"..\\site\\made", "demo\\..\\..\\site\\made", "demo/../../site/made"}) {
    (void)mgr().GetSiteProf()->SetText(number, &SiteSiteRec::linkFile, name);
    EXPECT_EQ(site_.Open(), -1) << name;
    EXPECT_FALSE(site_.folder().has("site/made")) << name;
  }
}

TEST_F(SiteProfiles, TheOpenSiteIsNeitherRenamedNorDeleted) {
  ASSERT_EQ(site_.Open(), 0);
  EXPECT_EQ(mgr().RenameSiteProf("demo", "other"), -1);
  EXPECT_EQ(mgr().DeleteSiteProf("demo"), -1);
  EXPECT_EQ(Take(mgr().EnumSiteProf()), Names{"demo"});
}

TEST_F(SiteProfiles, SingleFieldsOfTheOpenSiteAndOfAnyOther) {
  const int copy = mgr().CopySiteProf("demo", "copy");
  EXPECT_EQ(mgr().GetSiteProfTopFile(), nullptr);  // no site is open
  EXPECT_EQ(mgr().SetSiteProfTopFile("x"), -1);
  EXPECT_EQ(mgr().SetSiteProfServer("www", copy), 0);
  EXPECT_EQ(mgr().SetSiteProfTopFile(site_.path("a.html"), copy), 0);
  EXPECT_EQ(mgr().SetSiteProfLinkRules(1, copy), 0);
  EXPECT_EQ(mgr().SetSiteProfLinkRules(2, copy), -1);
  EXPECT_EQ(Take(mgr().GetSiteProfServer(copy)), "www");
  EXPECT_EQ(mgr().GetSiteProfLinkRules(copy), 1);

  ASSERT_EQ(site_.Open(), 0);
  EXPECT_EQ(Take(mgr().GetSiteProfTopFile()), site_.path("index.html"));
  EXPECT_EQ(Take(mgr().GetSiteProfTopFile(copy)), site_.path("a.html"));
  EXPECT_EQ(mgr().GetSiteProfServer(), nullptr);
  EXPECT_EQ(mgr().SetSiteProfDefaultUrl("index.html"), 0);
  EXPECT_EQ(*mgr().GetDefaultUrl(), "index.html");
  EXPECT_EQ(mgr().SetSiteProfDefaultUrl(""), 0);
  EXPECT_EQ(mgr().GetDefaultUrl(), nullptr);
  EXPECT_EQ(mgr().GetSiteProfDefaultUrl(), nullptr);

  for (const int slot : {-1, 10, 1 << 30}) {
    EXPECT_EQ(mgr().GetSiteProfDir(slot), nullptr);
    EXPECT_EQ(mgr().SetSiteProfDir(slot, "x"), -1);
  }
  EXPECT_EQ(mgr().SetSiteProfDir(9, "http://h/", 1 << 30), -1);
  EXPECT_EQ(mgr().GetSiteProfUseDocRoot(1 << 30), -1);
}

// A page of the site whose sheet lies under the document root: it is found once the root is set.
TEST_F(SiteProfiles, StyleSheetsHearOfTheFoldersOfTheOpenSite) {
  site_.folder().write("root/style.css", "body { background: url(dot.gif) }");
  site_.write("a.html", "<link rel=stylesheet href=/style.css>");
  const std::string sheet = site_.folder().path("root/style.css");
  ASSERT_EQ(site_.Open(), 0);
  EXPECT_EQ(mgr().SetSiteProfUseDocRoot(1), 0);
  EXPECT_EQ(mgr().SetSiteProfDir(kSlotDocumentRoot, site_.folder().path("root") + "\\"), 0);
  ASSERT_EQ(mgr().Save(site_.path("a.html"), nullptr), 0);
  EXPECT_GE(mgr().FindPath(sheet), 0);
  EXPECT_EQ(mgr().SetSiteProfUseDocRoot(0), 0);
  ASSERT_EQ(mgr().Save(site_.path("a.html"), nullptr), 0);
  EXPECT_GE(mgr().FindPath(site_.path("style.css")), 0);
}

class ServerProfiles : public testing::Test {
 protected:
  static ServProfile Sample() {
    return {
        "ftp.example.org", "ann",   "open sesame", "/www",   2, "wall", "ann-w", "walnut", 1, 3, 1,
        "/home",           "/a;/b", "\\c;\\d",     "htm;css"};
  }
  SiteMgr& mgr() { return *site_.mgr; }
  ServProfile Profile(const std::string& name) {
    ServProfile profile;
    EXPECT_EQ(mgr().GetServProf(name, profile), 0);
    return profile;
  }

  test::TestSite site_;
};

TEST_F(ServerProfiles, EachFieldIsSetOnItsOwn) {
  ASSERT_GE(mgr().AddServProf("www"), 0);
  const ServProfile want = Sample();
  int failed = 0;
  const auto text = [&](int (SiteMgr::*set)(const std::string&, const std::string&),
                        std::string* (SiteMgr::*get)(const std::string&),
                        const std::string& value) {
    EXPECT_EQ((mgr().*get)("www"), nullptr);
    EXPECT_EQ((mgr().*set)("www", value), 0);
    EXPECT_EQ(Take((mgr().*get)("www")), value);
    failed += (mgr().*set)("none", value) + ((mgr().*get)("none") == nullptr ? 1 : 0);
  };
  const auto number = [&](int (SiteMgr::*set)(const std::string&, int),
                          int (SiteMgr::*get)(const std::string&), int value) {
    EXPECT_EQ((mgr().*get)("www"), 0);
    EXPECT_EQ((mgr().*set)("www", value), 0);
    EXPECT_EQ((mgr().*get)("www"), value);
    EXPECT_EQ((mgr().*get)("none"), -1);
  };
  using M = SiteMgr;
  text(&M::SetServProfHost, &M::GetServProfHost, want.host);
  text(&M::SetServProfUser, &M::GetServProfUser, want.user);
  text(&M::SetServProfPassword, &M::GetServProfPassword, want.password);
  text(&M::SetServProfDir, &M::GetServProfDir, want.dir);
  number(&M::SetServProfFirewall, &M::GetServProfFirewall, want.firewall);
  text(&M::SetServProfFirewallHost, &M::GetServProfFirewallHost, want.firewallHost);
  text(&M::SetServProfFirewallUser, &M::GetServProfFirewallUser, want.firewallUser);
  text(&M::SetServProfFirewallPassword, &M::GetServProfFirewallPassword, want.firewallPassword);
  number(&M::SetServProfFxferType, &M::GetServProfFxferType, want.transferType);
  number(&M::SetServProfInitDirMode, &M::GetServProfInitDirMode, want.initDirMode);
  number(&M::SetServProfLockDir, &M::GetServProfLockDir, want.lockDir);
  text(&M::SetServProfInitRemoteDir, &M::GetServProfInitRemoteDir, want.initRemoteDir);
  text(&M::SetServProfMRUDirRemote, &M::GetServProfMRUDirRemote, want.mruDirRemote);
  text(&M::SetServProfMRUDirLocal, &M::GetServProfMRUDirLocal, want.mruDirLocal);
  text(&M::SetServProfAsciiSuffix, &M::GetServProfAsciiSuffix, want.asciiSuffix);
  EXPECT_EQ(failed, 0);
  EXPECT_GE(mgr().AddServProf("plain"), 0);
  for (const char* taken : {"www", "WWW", ""}) EXPECT_EQ(mgr().AddServProf(taken), -1);
  site_.Start();
  EXPECT_EQ(Profile("www"), want);
  EXPECT_EQ(Profile("plain"), ServProfile{});
  ASSERT_EQ(mgr().SetServProf("www", ServProfile{}), 0);
  EXPECT_EQ(Profile("www"), ServProfile{});
}

TEST_F(ServerProfiles, SitesFollowARenamedServer) {
  ASSERT_EQ(mgr().SetServProf("www", Sample()), 0);
  EXPECT_GE(mgr().CopyServProf("www", "spare"), 0);
  EXPECT_EQ(mgr().CopyServProf("www", "spare"), -1);
  EXPECT_EQ(Profile("spare"), Sample());
  const int demo = mgr().FindSiteProf("demo");
  const int other = mgr().CopySiteProf("demo", "other");
  ASSERT_EQ(mgr().SetSiteProfServer("www", demo), 0);
  ASSERT_EQ(mgr().SetSiteProfServer("spare", other), 0);
  EXPECT_EQ(mgr().RenameServProf("www", "spare"), -1);
  EXPECT_EQ(mgr().RenameServProf("www", "web"), 0);
  EXPECT_EQ(Profile("web"), Sample());
  EXPECT_EQ(Take(mgr().GetSiteProfServer(demo)), "web");
  EXPECT_EQ(Take(mgr().GetSiteProfServer(other)), "spare");
  EXPECT_EQ(mgr().DeleteServProf("web"), 0);
  EXPECT_EQ(mgr().DeleteServProf("web"), -1);
  EXPECT_EQ(Take(mgr().EnumServProf()), Names{"spare"});
}

// The table is not held open between operations: another manager's changes are seen, and a table
// that has gone bad fails.
TEST_F(ServerProfiles, EachOperationOpensTheTableAnew) {
  SiteMgr second;
  second.setDB((site_.folder().path("db") + "\\").c_str(), "sites2", "servers.R", 0);
  ASSERT_GE(second.AddServProf("theirs"), 0);
  EXPECT_EQ(Take(mgr().EnumServProf()), Names{"theirs"});
  EXPECT_EQ(mgr().SetServProfHost("theirs", "h"), 0);
  EXPECT_EQ(Take(second.GetServProfHost("theirs")), "h");

  std::string damaged = site_.folder().read("db/servers.R");
  damaged.replace(16, 4, "\xFF\xFF\xFF\x7F");
  site_.folder().write("db/servers.R", damaged);
  EXPECT_EQ(mgr().EnumServProf(), nullptr);
  EXPECT_EQ(mgr().AddServProf("x"), -1);
}

}  // namespace
}  // namespace zvrsit
