// A tree of real pages through a whole life: rebuild, queries, save, remove, move, undo of each,
// closing (which packs) and opening again. The tree is named by ZVRSIT_LEGACY_TREE, a folder that
// holds index.html; debian_tree.sh fetches one. Nothing in it is changed.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "legacy/legacy_site.h"

namespace zvrsit {
namespace {

using test::OpenSitMgr;
using test::Text;

// Every link by its ends, and every entry's bytes, with the numbers of links left out.
std::multiset<std::string> Snapshot(OpenSitMgr& mgr) {
  std::multiset<std::string> rows;
  for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
    SitPairRec record = *mgr.links().Read(id);
    rows.insert(std::to_string(record.from.id) + ">" + std::to_string(record.to.kind) + "/" +
                std::to_string(record.to.id) + " " + std::to_string(record.linkType) + " " +
                mgr.links().GetString(record.asIsUrlId).value_or("-"));
  }
  for (const int kind : {kKindPath, kKindUrl}) {
    for (int i = 0; i < mgr.UrlNum(kind); ++i) {
      SitUrlRec record;
      if (mgr.GetUrlRec({kind, i}, record) == 0) {
        rows.insert(std::to_string(kind) + "/" + std::to_string(i) + EncodeUrlRec(record));
      }
    }
  }
  return rows;
}

int CountOf(SitMgr& mgr, std::string* (SitMgr::*next)(const std::string&), const std::string& url) {
  int count = 0;
  while (std::string* text = (mgr.*next)(url)) {
    mgr.DeleteString(text);
    ++count;
  }
  return count;
}

TEST(TreeOfRealPages, LivesThroughEverything) {
  const char* tree = std::getenv("ZVRSIT_LEGACY_TREE");
  if (tree == nullptr) GTEST_SKIP() << "ZVRSIT_LEGACY_TREE names no tree";
  std::string site;
  ASSERT_TRUE(platform::FromNativePath(std::filesystem::canonical(tree).native(), site));
  test::TempFolder folder;
  OpenSitMgr mgr;
  mgr.setDB(folder.path("db") + "\\", "sites", "servers");
  SitSiteProperty property;
  property.dir[1] = site + "\\";
  property.topFile = site + "\\index.html";
  ASSERT_EQ(mgr.SetSiteProf("tree", property), 0);
  ASSERT_EQ(mgr.SiteOpen("tree"), 0);

  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(mgr.SiteRebuildDB(1), 0);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  const auto whole = Snapshot(mgr);
  int broken = 0;
  for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
    broken += (mgr.GetLinkStatus(id) & kStatusBroken) != 0 ? 1 : 0;
  }
  std::cout << mgr.UrlNum(kKindPath) << " files, " << mgr.UrlNum(kKindUrl) << " URLs, "
            << mgr.LinkNum() << " links, " << broken << " broken, rebuilt in " << took.count()
            << " s\n";

  // Each page has as many fore links as its record count says, and each leads back to it.
  const std::string top = site + "\\index.html";
  UrlID topId;
  ASSERT_EQ(mgr.UrlFind(top, topId), 0);
  const auto fore = mgr.links().Matching(topId, kAnyUrlID).size();
  EXPECT_GT(fore, 0u);
  EXPECT_EQ(CountOf(mgr, &SitMgr::GetForeLinks, top), static_cast<int>(fore));
  EXPECT_EQ(CountOf(mgr, &SitMgr::GetBackLinks, top),
            static_cast<int>(mgr.links().Matching(kAnyUrlID, topId).size()));

  ASSERT_EQ(mgr.Save(top), 0);
  EXPECT_EQ(Snapshot(mgr), whole) << "saving an unchanged page changes nothing";
  mgr.Undo();
  EXPECT_EQ(Snapshot(mgr), whole) << "Save";
  ASSERT_EQ(mgr.Remove(top), 0);
  EXPECT_NE(Snapshot(mgr), whole);
  mgr.Undo();
  EXPECT_EQ(Snapshot(mgr), whole) << "Remove";
  ASSERT_EQ(mgr.Move(top, site + "\\moved-nowhere.html"), 0);
  EXPECT_NE(Snapshot(mgr), whole);
  mgr.Undo();
  EXPECT_EQ(Snapshot(mgr), whole) << "Move";

  ASSERT_EQ(mgr.SiteClose(), 0);
  ASSERT_EQ(mgr.SiteOpen("tree"), 0);
  EXPECT_EQ(Snapshot(mgr), whole) << "closed and opened";
  ASSERT_EQ(mgr.SiteRebuildDB(0), 0);
  EXPECT_EQ(Snapshot(mgr), whole) << "rebuilt with the numbers kept";
}

}  // namespace
}  // namespace zvrsit
