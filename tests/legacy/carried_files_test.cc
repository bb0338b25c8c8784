// The files of the older generation go from one system to another, byte for byte.
#include <gtest/gtest.h>

#include <memory>

#include "legacy/legacy_site.h"
#include "support/carried_files.h"

namespace zvrsit {
namespace {

using test::OpenSitMgr;
using test::Text;

constexpr std::int32_t kTime = 0x4F5E6D7C;

const test::CarriedFiles& Files() {
  static const test::CarriedFiles files(
      "older_site",
      {"sites", "sites_S", "servers", "servers_S", "demo/Url.db", "demo/Junk.db", "demo/Folder.db",
       "demo/Link.db", "demo/Link.dS", "demo/Rel.db", "demo/Rel.dS"});
  return files;
}

class CarriedOlderSite : public testing::Test {
 protected:
  CarriedOlderSite() {
    folder.write("site/index.html", "<title>Home</title><a href=page.html>p</a>");
    folder.write("site/page.html",
                 "<title>Page</title><meta name=keywords content='a, b'>"
                 "<a href=sub/b.html>b</a><a href=gone.html>x</a><img src=i.gif alt=picture>"
                 "<a href=http://x.example/>x</a><link rel=stylesheet href=s.css>");
    folder.write("site/sub/b.html", "<a href=../page.html>p</a><a href=../page.html>p</a>");
    folder.write("site/i.gif", "GIF");
    folder.write("site/s.css", "b { color: red }");
    Start();
  }
  void Start() {
    mgr = std::make_unique<OpenSitMgr>();
    mgr->setDB("db\\", "sites", "servers");
  }
  void MakeProfiles() {
    SitSiteProperty site;
    site.topFile = "site\\index.html";
    site.dir[1] = "site\\";
    site.servProf = "www";
    ASSERT_EQ(mgr->SetSiteProf("demo", site), 0);
    SitServProperty server;
    server.host = "ftp.example.org";
    server.password = "open sesame";
    server.fxferType = 1;
    ASSERT_EQ(mgr->SetServProf("www", server), 0);
  }
  // Times are those of the disk, which no two systems share.
  void FixTimes() {
    for (const char* name : {"index.html", "page.html", "sub\\b.html", "i.gif", "s.css"}) {
      const std::string path = std::string("site\\") + name;
      SitUrlRec record;
      ASSERT_EQ(mgr->GetUrlProperty(path, record), 0) << name;
      record.creationTime = record.modificationTime = record.accessTime = kTime;
      ASSERT_EQ(mgr->SetUrlProperty(path, record), 0) << name;
    }
  }

  test::WorkingFolder folder;
  std::unique_ptr<OpenSitMgr> mgr;
};

TEST_F(CarriedOlderSite, IsWrittenTheSameOnEverySystem) {
  MakeProfiles();
  ASSERT_EQ(mgr->SiteOpen("demo"), 0);
  ASSERT_EQ(mgr->FolderNew("site\\sub\\"), 0);
  for (const char* page : {"index.html", "page.html", "sub\\b.html"}) {
    ASSERT_EQ(mgr->Save(std::string("site\\") + page), 0);
  }
  ASSERT_EQ(mgr->UpdateLinkFamily(), 0);
  FixTimes();
  ASSERT_EQ(mgr->SiteClose(), 0);
  mgr.reset();
  Files().ExpectIn(folder);
}

TEST_F(CarriedOlderSite, AnswersAndGrowsWhereItIsCarriedTo) {
  mgr.reset();
  Files().PutInto(folder);
  Start();
  SitServProperty server;
  ASSERT_EQ(mgr->GetServProf("www", server), 0);
  EXPECT_EQ(server.password, "open sesame");
  ASSERT_EQ(mgr->SiteOpen("demo"), 0);
  SitLinkProperty link;
  ASSERT_EQ(mgr->GetLinkProperty("site\\page.html", "site\\i.gif", link), 0);
  EXPECT_EQ(link.imgAlt, "picture");
  SitUrlRec page;
  ASSERT_EQ(mgr->GetUrlProperty("site\\page.html", page), 0);
  EXPECT_EQ(page.title, "Page");
  EXPECT_EQ(page.keywords, "a, b");
  EXPECT_EQ(page.modificationTime, kTime);
  const int links = mgr->LinkNum();

  folder.write("site/new.html", "<a href=page.html>p</a>");
  ASSERT_EQ(mgr->Save("site\\new.html"), 0);
  ASSERT_EQ(mgr->SiteClose(), 0);
  ASSERT_EQ(mgr->SiteOpen("demo"), 0);
  EXPECT_EQ(mgr->LinkNum(), links + 1);
  EXPECT_EQ(Text(mgr->GetForeLinks("site\\new.html")), "site\\page.html");
}

}  // namespace
}  // namespace zvrsit
