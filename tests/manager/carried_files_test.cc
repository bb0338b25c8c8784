// The files of a site go from one system to another: every system writes the same bytes.
#include <gtest/gtest.h>

#include "platform/file.h"
#include "support/carried_files.h"
#include "support/test_site.h"

namespace zvrsit::test {
namespace {

void MakeProfiles(SiteMgr& mgr) {
  SiteSiteProfDB& profiles = *mgr.GetSiteProf();
  EXPECT_GE(profiles.Add("old"), 0);
  const int demo = profiles.Add("demo");
  EXPECT_GE(profiles.SetFolder(demo, kSlotSiteFolder, "site\\"), 0);
  EXPECT_GE(profiles.SetText(demo, &SiteSiteRec::topFile, "site\\index.html"), 0);
  EXPECT_GE(profiles.SetText(demo, &SiteSiteRec::defaultUrl, "index.html"), 0);
  EXPECT_GE(profiles.SetNumber(demo, &SiteSiteRec::linkRules, static_cast<int>(LinkRules::Web)), 0);
  mgr.DeleteSiteProf("old");
  mgr.AddServProf("www");
  mgr.SetServProfHost("www", "ftp.example.org");
  mgr.SetServProfPassword("www", "open sesame");
  mgr.SetServProfFxferType("www", 1);
  platform::MakeFolderOfPath("db\\demo\\UR");
}

// Times are those of the disk, which no two systems share.
void FixTimes(SitePathDB& paths) {
  for (int i = paths.NextNumber(0); i >= 0; i = paths.NextNumber(i + 1)) {
    for (const auto time :
         {&SitePathRec::creationTime, &SitePathRec::modificationTime, &SitePathRec::accessTime}) {
      EXPECT_GE(paths.SetNumber(i, time, 0x4F5E6D7C + i), 0);
    }
  }
}

TEST(CarriedSite, IsWrittenTheSameOnEverySystem) {
  const WorkingFolder folder;
  folder.write("site/index.html", "<title>Home</title><a href=page.html>p</a>");
  folder.write(
      "site/page.html",
      "<title>Page</title><meta name=keywords content='a, b'><a name=top></a><a name=end></a>"
      "<link rel=stylesheet href=s.css><a href=sub/b.html>b</a><a href=sub/b.html>b</a>"
      "<a href=gone.html>x</a><img src=i.gif alt=picture><a href=http://x.example/>x</a>");
  folder.write("site/sub/b.html", "<a href=../page.html#top>top</a>");
  folder.write("site/s.css", "@import 't.css'; b { background: url(i.gif) }");
  folder.write("site/t.css", "b { color: red }");
  folder.write("site/i.gif", "GIF");
  DOM dom;
  {
    SiteMgr mgr;
    mgr.setDom(&dom);
    mgr.setDB("db\\", "sites.R", "servers.R", 0);
    MakeProfiles(mgr);
    ASSERT_EQ(mgr.SiteOpen("demo", 0), 0);
    for (const char* page : {"index.html", "page.html", "sub\\b.html"}) {
      ASSERT_EQ(mgr.Save(std::string("site\\") + page, nullptr), 0);
    }
    FixTimes(*mgr.GetPathDB());  // they stay in the slot that the next save leaves behind
    folder.write("site/index.html", "<title>New</title><a href=page.html>p</a>");
    ASSERT_EQ(mgr.Save("site\\index.html", nullptr), 0);
    ASSERT_EQ(mgr.UpdateLinkFamily(), 0);
    FixTimes(*mgr.GetPathDB());
    ASSERT_EQ(mgr.SiteClose(), 0);
  }
  folder.ExpectImages(
      "site", {"sites.R", "sites.S", "servers.R", "servers.S", "demo/UR", "demo/US", "demo/PR",
               "demo/PS", "demo/LR", "demo/LS", "demo/FR", "demo/FS", "demo/RR", "demo/RS"});
}

}  // namespace
}  // namespace zvrsit::test
