// The rebuild of a site from its files.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <vector>

#include "support/dialog_recorder.h"
#include "support/file_fault.h"
#include "support/folder_link.h"
#include "support/test_site.h"

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace zvrsit::test {
namespace {

// A site of all that rebuilds meet: `pages` pages in folders of ten, with links to each other, to
// missing files, out of the site and to the Web, shared sheets, anchors and repeated links.
void WriteSite(const TestSite& site, int pages) {
  std::mt19937 random(7);
  const auto name = [](int page) {
    return "d" + std::to_string(page / 10) + "/p" + std::to_string(page) + ".html";
  };
  for (int page = 0; page < pages; ++page) {
    std::string text = "<title>Page</title><link rel=stylesheet href=../s.css><a name=top></a>";
    for (int link = 0; link < 8; ++link) {
      text += "<a href=../" + name(static_cast<int>(random() % pages)) + "#top>x</a>";
    }
    if (page % 3 == 0) text += "<img src=gone.gif><img src=gone.gif alt=G>";
    if (page % 4 == 0) text += "<a href=http://x.example/" + std::to_string(page % 8) + ">x</a>";
    if (page % 5 == 0) text += "<a href=missing.html>x</a><a href=../d0/>x</a>";
    if (page % 7 == 0) text += "<a href=../../outside.html>x</a><a href=../LOGO.gif>x</a>";
    site.write(name(page), text);
  }
  site.write("s.css", "@import 't.css'; body { background: url(logo.gif) } i { src: url(f.ttf) }");
  site.write("t.css", "@import 's.css'; b { background: url(http://x.example/b.gif) }");
  site.write("logo.gif", "gif");
  site.write("c#.html", "<a href=never.html>x</a>");
  site.write("index.html", "<meta http-equiv=refresh content=d0/p0.html><a href=d0/p1.html>x</a>");
  site.folder().write("outside.html", "<a href=inner.html>x</a>");
}

class Rebuilding : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(site.Open(), 0); }
  std::string RebuiltDump(TestSite& of) {
    EXPECT_EQ(of.mgr->SiteRebuildComplete(nullptr), 0);
    return of.Dump();
  }

  TestSite site;
};

TEST_F(Rebuilding, TellsTheDialogEveryStep) {
  site.write("a.html", "<title>A</title>");
  site.write("b.gif", "");
  site.write("c.css", "");
  DialogRecorder recorder;
  EXPECT_EQ(site.mgr->SiteRebuildComplete(&recorder.dialog), 0);
  EXPECT_EQ(
      recorder.lines,
      (std::vector<std::string>{
          "401 0 640000", "402 5", "status 8131", "402 10", "status 8131", "402 15", "402 15",
          "file " + site.path("a.html"), "402 35", "file ", "402 55", "file " + site.path("c.css"),
          "402 75", "file " + site.path("index.html"), "file ", "status 8133", "402 100"}));
}

// Wherever the user cancels, the rebuild ends there and its failure is what the profile holds.
TEST_F(Rebuilding, StopsWhereTheUserCancels) {
  site.write("d/a.html", "");
  DialogRecorder whole;
  ASSERT_EQ(site.mgr->SiteRebuildDiff(&whole.dialog), 0);
  for (std::size_t at = 1; at + 4 < whole.lines.size(); ++at) {
    DialogRecorder recorder;
    recorder.cancelAt = at;
    EXPECT_EQ(site.mgr->SiteRebuildDB(static_cast<int>(at % 2), &recorder.dialog), 0);
    EXPECT_EQ(site.mgr->GetSiteProfRebuildState(), 1) << at;
    EXPECT_LE(recorder.lines.size(), at + 2);
    EXPECT_EQ(site.mgr->GetLinksChanged(), 1);
  }
  EXPECT_EQ(site.mgr->SiteRebuildDB(1, nullptr), 0);
  EXPECT_EQ(site.mgr->GetSiteProfRebuildState(), 2);
}

TEST_F(Rebuilding, KeepsItsStateInTheProfile) {
  EXPECT_EQ(site.mgr->NeedToRebuild("demo"), 0);
  EXPECT_EQ(site.mgr->NeedToRebuild("other"), -1);
  EXPECT_EQ(site.mgr->NeedToRebuild(""), -1);
  EXPECT_EQ(site.mgr->SetSiteProfRebuildState(2, -1), 0);
  EXPECT_EQ(site.mgr->NeedToRebuild("demo"), 2);
  site.mgr->SiteClose();
  EXPECT_EQ(site.mgr->GetSiteProfRebuildState(), -1);
  EXPECT_EQ(site.mgr->SetSiteProfRebuildState(1, -1), -1);
  EXPECT_EQ(site.mgr->SetSiteProfRebuildState(1, 0), 0);
  EXPECT_EQ(site.mgr->NeedToRebuild("demo"), 1);
  EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), -1);
  EXPECT_EQ(site.mgr->SiteRebuildDB(1, nullptr), -1);
}

TEST_F(Rebuilding, GivesTheTablesOfTheOneBefore) {
  TestSite web(LinkRules::Web);
  ASSERT_EQ(web.Open(), 0);
  for (TestSite* each : {&site, &web}) {
    WriteSite(*each, 60);
    if (each == &site) RebuiltDump(*each);  // an outside file stops its page once
    const std::string first = RebuiltDump(*each);
    EXPECT_EQ(first.find("never.html"), std::string::npos) << "a page with # in its name";
    EXPECT_GT(first.size(), 10000u);
    EXPECT_EQ(RebuiltDump(*each), first);
    EXPECT_EQ(each->mgr->SiteRebuildDiff(nullptr), 0);
    EXPECT_EQ(each->Dump(), first);
    each->mgr->SiteClose();
    ASSERT_EQ(each->Open(), 0);
    EXPECT_EQ(each->Dump(), first) << "as it was saved";
    EXPECT_TRUE(each->mgr->GetLinkDB()->IsWorthPacking());
    EXPECT_EQ(each->mgr->PackSite(), 0);
    EXPECT_EQ(each->Dump(), first);
    EXPECT_EQ(RebuiltDump(*each), first) << "on packed files";
    EXPECT_TRUE(each->mgr->SkippedByRebuild().empty());
  }
}

TEST_F(Rebuilding, SeesWhatHasChangedOnDisk) {
  site.write("index.html", "<title>Old</title><a name=n></a><a href=a.html>x</a>");
  site.write("a.html", "");
  site.write("b.html", "");
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  const int a = site.Number("a.html"), b = site.Number("b.html");
  site.mgr->SetFtpFamily(UrlID(kKindPath, a), 8);
  site.write("index.html", "<a href=b.html>x</a>");
  std::filesystem::remove(site.native("a.html"));
  site.write("sub/c.html", "12345");
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.Number("a.html"), a) << "entries keep their numbers";
  EXPECT_EQ(site.Record("a.html").exists, 0);
  EXPECT_EQ(site.Record("a.html").membership, 8);
  EXPECT_EQ(site.Record("b.html").membership, 1);
  EXPECT_EQ(site.Record("index.html").title, -1);
  EXPECT_EQ(site.Record("index.html").listCount, 0);
  EXPECT_EQ(site.Record("sub/c.html").size, 5);
  EXPECT_EQ(site.Links(), "index.html -> b.html b.html 40 1\n");

  // The second kind also drops what is gone, unless it is marked or linked to.
  std::filesystem::remove(site.native("b.html"));
  std::filesystem::remove(site.native("sub/c.html"));
  ASSERT_EQ(site.mgr->SiteRebuildDiff(nullptr), 0);
  EXPECT_EQ(site.Number("a.html"), a);
  EXPECT_EQ(site.Number("b.html"), b);
  EXPECT_EQ(site.Record("b.html").exists, 0);
  EXPECT_EQ(site.Number("sub/c.html"), -1);
}

std::vector<std::string> NamesOfPaths(const TestSite& site) {
  std::vector<std::string> names;
  for (int i = 0; i < site.mgr->GetPathDB()->Count(); ++i) {
    std::string name;
    EXPECT_GE(site.mgr->GetPathDB()->Name(i, name), 0);
    names.push_back(name.substr(site.dir().size()));
  }
  return names;
}

// Links among folders neither hang the walk nor lead it out of the site; what is no file and no
// folder is left out.
TEST_F(Rebuilding, WalksOnlyRealFoldersOfTheSite) {
  site.write("real/page.html", "");
  site.folder().write("elsewhere/out.html", "");
  if (!LinkFolder("..", site.native("real/up"))) GTEST_SKIP() << "no links here";
  LinkFolder(site.native("real"), site.native("again"));
  LinkFolder(site.folder().native("elsewhere"), site.native("away"));
#if !defined(_WIN32)
  std::filesystem::create_symlink("nowhere", site.native("dangling.html"));
  ASSERT_EQ(::mkfifo(site.native("pipe.html").c_str(), 0600), 0);
  site.write("two\nlines.html", "");
  const std::vector<std::string> files = {"index.html", "real\\page.html", "two\nlines.html"};
#else
  const std::vector<std::string> files = {"index.html", "real\\page.html"};
#endif
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  std::vector<std::string> found = NamesOfPaths(site);
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, files);
}

TEST_F(Rebuilding, MendsAPageWhoseAnchorListIsDamaged) {
  site.write("a.html", "<a name=x></a><a href=b.html>b</a>");
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  const std::string sound = site.Dump();
  SitePathDB& paths = *site.mgr->GetPathDB();
  EXPECT_GE(paths.SetNumber(site.Number("a.html"), &SitePathRec::listCount, 3), 0);
  EXPECT_GE(paths.SetNumber(site.Number("a.html"), &SitePathRec::listData, 4000), 0);
  EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.Dump(), sound);
}

// Whichever file call fails while a site is opened, rebuilt, packed and closed, nothing crashes and
// the site can be rebuilt to the same tables afterwards.
TEST(Rebuild, SurvivesEveryFailingFileCall) {
  TestSite site;
  site.write("index.html", "<a href=a.html>x</a><link rel=stylesheet href=s.css>");
  site.write("s.css", "b { background: url(x.gif) }");
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteRebuildDiff(nullptr), 0);
  const std::string links = site.Links();
  const int calls = FailEachCall(
      [&] {
        site.Start();
        ASSERT_EQ(site.mgr->SiteOpen("other", 0), -1);
      },
      [&] {
        site.Open();
        site.mgr->SiteRebuildDB(0, nullptr);
        site.mgr->PackSite();
        site.mgr->SiteClose();
      },
      [&](const FailedRun& run) {
        site.Start();
        ASSERT_EQ(site.Open(), 0) << run.call;
        if (site.mgr->GetPathDB() == nullptr) {
          FAIL() << "tables lost by call " << run.call << " of kind "
                 << static_cast<int>(run.failedCall);
        }
        ASSERT_EQ(site.mgr->SiteRebuildDiff(nullptr), 0) << run.call;
        ASSERT_EQ(site.Links(), links) << run.call;
      });
  EXPECT_GT(calls, 40);
}

}  // namespace
}  // namespace zvrsit::test
