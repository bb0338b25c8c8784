// The files of a site go from one system to another, byte for byte.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "manager/answers.h"
#include "platform/file.h"
#include "support/carried_files.h"
#include "support/test_site.h"
#include "util/file_type.h"

namespace zvrsit::test {
namespace {

constexpr std::int32_t kTime = 0x4F5E6D7C;
constexpr const char* kPage =
    "<title>Page</title><meta name=keywords content='a, b'><a name=top></a><a name=end></a>"
    "<link rel=stylesheet href=s.css><a href=sub/b.html>b</a><a href=sub/b.html>b</a>"
    "<a href=gone.html>x</a><img src=i.gif alt=picture><a href=http://x.example/>x</a>";

const CarriedFiles& Files() {
  static const CarriedFiles files(
      "site", {"sites.R", "sites.S", "servers.R", "servers.S", "demo/UR", "demo/US", "demo/PR",
               "demo/PS", "demo/LR", "demo/LS", "demo/FR", "demo/FS", "demo/RR", "demo/RS"});
  return files;
}

class CarriedSite : public testing::Test {
 protected:
  CarriedSite() {
    folder.write("site/index.html", "<title>Home</title><a href=page.html>p</a>");
    folder.write("site/page.html", kPage);
    folder.write("site/sub/b.html", "<a href=../page.html#top>top</a>");
    folder.write("site/s.css", "@import 't.css'; b { background: url(i.gif) }");
    folder.write("site/t.css", "b { color: red }");
    folder.write("site/i.gif", "GIF");
    Start();
  }
  void Start() {
    mgr = std::make_unique<OpenMgr>();
    mgr->setDom(&dom);
    mgr->setDB("db\\", "sites.R", "servers.R", 0);
  }
  void MakeProfiles() {
    SiteSiteProfDB& profiles = *mgr->GetSiteProf();
    profiles.Add("old");
    const int demo = profiles.Add("demo");
    profiles.SetFolder(demo, kSlotSiteFolder, "site\\");
    profiles.SetText(demo, &SiteSiteRec::topFile, "site\\index.html");
    profiles.SetText(demo, &SiteSiteRec::defaultUrl, "index.html");
    profiles.SetNumber(demo, &SiteSiteRec::linkRules, static_cast<int>(LinkRules::Web));
    mgr->DeleteSiteProf("old");
    mgr->AddServProf("www");
    mgr->SetServProfHost("www", "ftp.example.org");
    mgr->SetServProfPassword("www", "open sesame");
    mgr->SetServProfFxferType("www", 1);
    platform::MakeFolderOfPath("db\\demo\\UR");
  }
  // Times are those of the disk, which no two systems share.
  void FixTimes() {
    SitePathDB& paths = *mgr->GetPathDB();
    for (int i = paths.NextNumber(0); i >= 0; i = paths.NextNumber(i + 1)) {
      for (const auto time :
           {&SitePathRec::creationTime, &SitePathRec::modificationTime, &SitePathRec::accessTime}) {
        paths.SetNumber(i, time, kTime + i);
      }
    }
  }
  void MakeSite() {
    MakeProfiles();
    ASSERT_EQ(mgr->SiteOpen("demo", 0), 0);
    for (const char* page : {"index.html", "page.html", "sub\\b.html"}) {
      ASSERT_EQ(mgr->Save(std::string("site\\") + page, nullptr), 0);
    }
    FixTimes();  // they stay in the slot of the record that the next save leaves behind
    folder.write("site/index.html", "<title>New</title><a href=page.html>p</a>");
    ASSERT_EQ(mgr->Save("site\\index.html", nullptr), 0);
    ASSERT_EQ(mgr->UpdateLinkFamily(), 0);
    FixTimes();
    ASSERT_EQ(mgr->SiteClose(), 0);
  }
  UrlID Path(const std::string& name) { return UrlID(kKindPath, mgr->GetPathDB()->Find(name)); }
  std::vector<std::string> BackLinks(const std::string& name) {
    return Take(mgr->GetBackLinks("site\\" + name), "site\\");
  }

  WorkingFolder folder;
  DOM dom;
  std::unique_ptr<OpenMgr> mgr;
};

TEST_F(CarriedSite, IsWrittenTheSameOnEverySystem) {
  MakeSite();
  mgr.reset();
  Files().ExpectIn(folder);
}

TEST_F(CarriedSite, AnswersAndGrowsWhereItIsCarriedTo) {
  mgr.reset();
  Files().PutInto(folder);
  Start();
  EXPECT_EQ(Take(mgr->GetServProfPassword("www")), "open sesame");
  ASSERT_EQ(mgr->SiteOpen("demo", 0), 0);
  EXPECT_EQ(BackLinks("page.html"), (std::vector<std::string>{"sub\\b.html 1", "index.html 1"}));
  EXPECT_EQ(BackLinks("i.gif").size(), 2u);
  EXPECT_EQ(Take(mgr->GetForeLinks(Path("site\\page.html"))).size(), 5u);
  SitePathRec page;
  ASSERT_EQ(mgr->GetPathDB()->Get(Path("site\\page.html").id, page), 0);
  EXPECT_EQ(page.listCount, 2);
  EXPECT_EQ(page.fileType, static_cast<std::int32_t>(FT_HTML));
  EXPECT_EQ(page.size, static_cast<std::int32_t>(std::string_view(kPage).size()));
  EXPECT_EQ(page.modificationTime, kTime + page.id);
  EXPECT_EQ(page.membership, 1);

  folder.write("site/new.html", "<a href=page.html>p</a>");
  ASSERT_EQ(mgr->Save("site\\new.html", nullptr), 0);
  ASSERT_EQ(mgr->SiteClose(), 0);
  ASSERT_EQ(mgr->SiteOpen("demo", 0), 0);
  EXPECT_EQ(BackLinks("page.html").size(), 3u);
  EXPECT_EQ(BackLinks("sub\\b.html"), std::vector<std::string>{"page.html 1"});
  EXPECT_EQ(mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(BackLinks("page.html").size(), 3u);
}

}  // namespace
}  // namespace zvrsit::test
