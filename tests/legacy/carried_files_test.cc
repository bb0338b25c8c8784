// The files of the older generation go from one system to another: every system writes the same
// bytes.
#include <gtest/gtest.h>

#include "legacy/legacy_site.h"
#include "support/carried_files.h"

namespace zvrsit::test {
namespace {

void MakeProfiles(SitMgr& mgr) {
  SitSiteProperty site;
  site.topFile = "site\\index.html";
  site.dir[1] = "site\\";
  site.servProf = "www";
  ASSERT_EQ(mgr.SetSiteProf("demo", site), 0);
  SitServProperty server;
  server.host = "ftp.example.org";
  server.password = "open sesame";
  server.fxferType = 1;
  ASSERT_EQ(mgr.SetServProf("www", server), 0);
}

// Times are those of the disk, which no two systems share.
void FixTimes(SitMgr& mgr) {
  for (const char* name : {"index.html", "page.html", "sub\\b.html", "i.gif", "s.css"}) {
    const std::string path = std::string("site\\") + name;
    SitUrlRec record;
    ASSERT_EQ(mgr.GetUrlProperty(path, record), 0) << name;
    record.creationTime = record.modificationTime = record.accessTime = 0x4F5E6D7C;
    ASSERT_EQ(mgr.SetUrlProperty(path, record), 0) << name;
  }
}

TEST(CarriedOlderSite, IsWrittenTheSameOnEverySystem) {
  const WorkingFolder folder;
  folder.write("site/index.html", "<title>Home</title><a href=page.html>p</a>");
  folder.write("site/page.html",
               "<title>Page</title><meta name=keywords content='a, b'>"
               "<a href=sub/b.html>b</a><a href=gone.html>x</a><img src=i.gif alt=picture>"
               "<a href=http://x.example/>x</a><link rel=stylesheet href=s.css>");
  folder.write("site/sub/b.html", "<a href=../page.html>p</a><a href=../page.html>p</a>");
  folder.write("site/i.gif", "GIF");
  folder.write("site/s.css", "b { color: red }");
  {
    OpenSitMgr mgr;
    mgr.setDB("db\\", "sites", "servers");
    MakeProfiles(mgr);
    ASSERT_EQ(mgr.SiteOpen("demo"), 0);
    ASSERT_EQ(mgr.FolderNew("site\\sub\\"), 0);
    for (const char* page : {"index.html", "page.html", "sub\\b.html"}) {
      ASSERT_EQ(mgr.Save(std::string("site\\") + page), 0);
    }
    ASSERT_EQ(mgr.UpdateLinkFamily(), 0);
    FixTimes(mgr);
    ASSERT_EQ(mgr.SiteClose(), 0);
  }
  folder.ExpectImages("older_site", {"sites", "sites_S", "servers", "servers_S", "demo/Url.db",
                                     "demo/Junk.db", "demo/Folder.db", "demo/Link.db",
                                     "demo/Link.dS", "demo/Rel.db", "demo/Rel.dS"});
}

}  // namespace
}  // namespace zvrsit::test
