#include <gtest/gtest.h>

#include "manager/answers.h"
#include "support/test_site.h"

namespace zvrsit {
namespace {

using test::Take;
using Names = std::vector<std::string>;

class ServerProfiles : public testing::Test {
 protected:
  static ServProfile Sample() {
    ServProfile profile;
    profile.host = "ftp.example.org";
    profile.user = "ann";
    profile.password = "open sesame";
    profile.dir = "/www";
    profile.firewall = 2;
    profile.firewallHost = "wall";
    profile.firewallUser = "ann-w";
    profile.firewallPassword = "walnut";
    profile.transferType = 1;
    profile.initDirMode = 3;
    profile.lockDir = 1;
    profile.initRemoteDir = "/home";
    profile.mruDirRemote = "/a;/b";
    profile.mruDirLocal = "\\c;\\d";
    profile.asciiSuffix = "htm;css";
    return profile;
  }
  SiteMgr& mgr() { return *site_.mgr; }
  ServProfile Profile(const std::string& name) {
    ServProfile profile;
    EXPECT_EQ(mgr().GetServProf(name, profile), 0);
    return profile;
  }

  test::TestSite site_;
};

TEST_F(ServerProfiles, AWholeProfileIsStoredAndReadBack) {
  ASSERT_EQ(mgr().SetServProf("www", Sample()), 0);
  EXPECT_EQ(mgr().AddServProf("www"), -1);
  EXPECT_EQ(mgr().AddServProf("WWW"), -1);
  EXPECT_EQ(mgr().AddServProf(""), -1);
  EXPECT_GE(mgr().AddServProf("plain"), 0);
  site_.Start();
  EXPECT_EQ(Profile("www"), Sample());
  EXPECT_EQ(Profile("plain"), ServProfile{});
  ASSERT_EQ(mgr().SetServProf("www", ServProfile{}), 0);
  EXPECT_EQ(Profile("www"), ServProfile{});
  EXPECT_EQ(Take(mgr().EnumServProf()), (Names{"www", "plain"}));
}

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
  EXPECT_EQ(Profile("www"), want);
}

TEST_F(ServerProfiles, SitesFollowARenamedServer) {
  ASSERT_EQ(mgr().SetServProf("www", Sample()), 0);
  EXPECT_GE(mgr().CopyServProf("www", "spare"), 0);
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
