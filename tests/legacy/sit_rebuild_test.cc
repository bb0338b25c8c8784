// Real pages through the rebuild into the stores.
#include <gtest/gtest.h>

#include <filesystem>

#include "dom/dom.h"
#include "legacy/legacy_site.h"
#include "platform/code_page.h"

namespace zvrsit::test {
namespace {

using Rows = std::multiset<std::string>;

TEST(OlderRebuild, RegistersFilesFoldersAndEveryKindOfLink) {
  LegacySite site;
  site.write("index.html",
             "<html><head><title>Top &amp; more</title><meta name=Keywords content='zebra, cat'>"
             "<meta http-equiv=refresh content=late.html><link rel=StyleSheet href=style.css>"
             "<link rel=next href=next.html><script src=run.js></script></head>"
             "<body background=back.gif><a href='#top'>here</a><img src=i.gif alt=Picture>"
             "<img src=m.gif ismap mapfile=m.map><area href=area.html><form action=do.cgi></form>"
             "<input type=image src=button.gif alt=Go><embed src=tune.mid>"
             "<applet code=A.class codebase=classes></applet>"
             "<a href=HTTP://example.org/x>web</a><a href=javascript:go()>odd</a>");
  site.write("frames.html", "<frameset><frame src=index.html></frameset>");
  site.write("classes/A.class", "");
  site.write("classes/B.class", "");
  site.write("style.css", "body { background: url(unseen.gif) }");
  site.write("x#y.html", "");
  site.write("sjis.html", "<meta charset=shift_jis><title>\x95\x5C</title>");
  site.Open();
  ASSERT_EQ(site.mgr->SiteRebuildDB(1), 0);
  EXPECT_EQ(site.Links(), (Rows{
                              "index.html > late.html 13 late.html - 1",
                              "index.html > index.html 1 #top - 1",
                              "index.html > i.gif 2 i.gif Picture 1",
                              "index.html > m.gif 2 m.gif - 1",
                              "index.html > m.map 3 m.map - 1",
                              "index.html > next.html 5 next.html - 1",
                              "index.html > style.css 6 style.css - 1",
                              "index.html > back.gif 7 back.gif - 1",
                              "index.html > button.gif 8 button.gif Go 1",
                              "index.html > area.html 9 area.html - 1",
                              "index.html > do.cgi 10 do.cgi - 1",
                              "index.html > run.js 11 run.js - 1",
                              "index.html > tune.mid 12 tune.mid - 1",
                              "index.html > classes\\A.class 12 classes/A.class - 1",
                              "index.html > classes\\A.class 12 A.class - 1",
                              "index.html > classes\\B.class 12 B.class - 1",
                              "index.html > HTTP://example.org/x 1 HTTP://example.org/x - 1",
                              "index.html > javascript:go() 1 javascript:go() - 1",
                              "frames.html > index.html 4 index.html - 1",
                          }));
  SitUrlRec top;
  ASSERT_EQ(site.mgr->GetUrlProperty(site.path("index.html"), top), 0);
  EXPECT_EQ(top.title, "Top & more");
  EXPECT_EQ(top.keywords, "zebra, cat");
  EXPECT_EQ(top.fileType, 2);
  EXPECT_EQ(top.ftpMember, kMemberReached);
  EXPECT_EQ(site.Status("style.css"), kStatusFound);
  EXPECT_EQ(site.Status("late.html"), kStatusMissing);
  EXPECT_EQ(site.Status("x#y.html"), -1);
  EXPECT_EQ(Text(site.mgr->GetRel(site.path("classes/A.class"))), site.path("classes/"));
  SitUrlRec frames, sjis;
  site.mgr->GetUrlProperty(site.path("sjis.html"), sjis);
  EXPECT_EQ(platform::ToUtf8(sjis.title), "\u8868");
  site.mgr->GetUrlProperty(site.path("frames.html"), frames);
  EXPECT_EQ(frames.ftpMember, 0) << "no link leads there";
}

TEST(OlderRebuild, GivesTheSameTwiceAndAfterReopening) {
  LegacySite site;
  site.write("index.html", "<a href=a.html>1</a><a href=a.html>2</a><a href=b.html>3</a>");
  site.write("a.html", "<a href=index.html>up</a><a href=../out.html>out</a>");
  site.folder().write("out.html", "");
  site.Open();
  site.mgr->SiteRebuildDB(1);
  const auto links = site.Links();
  const auto entries = site.Entries();
  EXPECT_EQ(site.Status("../out.html"), -1);
  EXPECT_EQ(links.size(), 5u) << "two references in a row to one target are two records";
  for (const int complete : {1, 0, 1}) {
    EXPECT_EQ(site.mgr->SiteRebuildDB(complete), 0);
    EXPECT_EQ(site.Links(), links);
    EXPECT_EQ(site.Entries(), entries);
    site.Reopen();
    EXPECT_EQ(site.Links(), links);
    EXPECT_EQ(site.Entries(), entries);
  }
}

TEST(OlderRebuild, KeepsMarksAndDropsWhatIsGone) {
  LegacySite site;
  site.write("index.html", "<a href=linked.html>x</a>");
  for (const char* name : {"linked.html", "gone.html", "marked.html"}) site.write(name, "");
  site.Open();
  site.mgr->SiteRebuildDB(1);
  UrlID marked;
  site.mgr->UrlFind(site.path("marked.html"), marked);
  site.mgr->SetUrlFtpMember(marked, kMemberMarked);
  for (const char* name : {"linked.html", "gone.html", "marked.html"}) {
    std::filesystem::remove(site.folder().native(std::string("site/") + name));
  }
  ASSERT_EQ(site.mgr->SiteRebuildDB(0), 0);
  EXPECT_EQ(site.Status("linked.html"), kStatusMissing);
  EXPECT_EQ(site.Status("marked.html"), kStatusMissing);
  EXPECT_EQ(site.Status("gone.html"), -1);
  site.write("marked.html", "");
  ASSERT_EQ(site.mgr->SiteRebuildDB(1), 0);
  SitUrlRec record;
  site.mgr->GetUrlProperty(site.path("marked.html"), record);
  EXPECT_EQ(record.ftpMember, kMemberMarked);
}

TEST(OlderRebuild, AMissingFolderIsRefusedBeforeAnythingIsEmptied) {
  LegacySite site;
  site.write("index.html", "<a href=index.html>x</a>");
  site.Open();
  site.mgr->SiteRebuildDB(1);
  std::filesystem::remove_all(site.folder().native("site"));
  EXPECT_EQ(Error(*site.mgr, site.mgr->SiteRebuildDB(1)), 15);
  EXPECT_EQ(site.Links().size(), 1u);
}

TEST(OlderRebuild, RecoveringTakesTheFailedStepBackAndRebuilds) {
  LegacySite site;
  site.write("index.html", "<a href=index.html>x</a>");
  site.Open();
  site.mgr->SiteRebuildDB(1);
  EXPECT_EQ(site.mgr->Remove(site.path("index.html")), 0);
  EXPECT_EQ(site.mgr->Remove(site.path("unknown.html")), -1);
  EXPECT_EQ(site.mgr->RecoverFromLastError(), 0);
  EXPECT_EQ(site.mgr->GetLastError(), 0);
  EXPECT_EQ(site.Links().size(), 1u);
  EXPECT_EQ(site.Status("index.html"), kStatusFound);
}

// A page that is given parsed stays its giver's; the file on disk is not read.
TEST(OlderSave, ReadsTheDocumentThatItIsGiven) {
  LegacySite site;
  site.write("sub/page.html", "<a href=disk.html>x</a>");
  site.Open();
  DOM dom;
  site.mgr->setDom(&dom);
  Document* document = dom.createDocument("HTML");
  const std::string text = "<title>New</title><a href=given.html>x</a>";
  document->createNodes(text.data(), static_cast<int>(text.size()), nullptr, true);
  ASSERT_EQ(site.mgr->Save(site.path("sub/page.html"), document), 0);
  EXPECT_EQ(dom.deleteDocument(document), 0);
  EXPECT_EQ(site.Links(), (Rows{"sub\\page.html > sub\\given.html 1 given.html - 1"}));
  EXPECT_EQ(Text(site.mgr->GetChild(site.path("sub/"))), site.path("sub/page.html"));
  EXPECT_EQ(Text(site.mgr->GetSubFolder(site.dir())), site.path("sub/"));
  EXPECT_EQ(site.mgr->Save(site.path("sub/missing.html")), 0);
  EXPECT_EQ(site.Status("sub/missing.html"), kStatusMissing);
}

}  // namespace
}  // namespace zvrsit::test
