// A tree of real pages through a whole life: rebuild, queries, save, remove, move, undo of each,
// closing (which packs) and opening again. The tree is named by ZVRSIT_LEGACY_TREE, a folder that
// holds index.html; debian_tree.sh fetches one. Nothing in it is changed.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>

#include "legacy/legacy_site.h"
#include "legacy/sit_block_db.h"
#include "legacy/sit_pair_db.h"

namespace zvrsit {
namespace {

using test::OpenSitMgr;
using test::Text;

using Rows = std::multiset<std::string>;

std::string PairName(const SitPairRec& record) {
  return std::to_string(record.from.id) + ">" + std::to_string(record.to.kind) + "/" +
         std::to_string(record.to.id);
}

// The pairs of entries that have more than one record.
std::set<std::string> PairsOfSeveral(OpenSitMgr& mgr) {
  std::set<std::string> all;
  std::set<std::string> several;
  for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
    const std::string name = PairName(*mgr.links().Read(id));
    if (!all.insert(name).second) several.insert(name);
  }
  return several;
}

// Every link by its ends, and every entry's bytes. Undo adds a pair as it is added at first, so
// the numbers and counts of links are left out, and the texts of pairs of several records.
Rows Snapshot(OpenSitMgr& mgr, const std::set<std::string>& several) {
  Rows rows;
  std::set<std::string> pairs;
  for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
    const SitPairRec record = *mgr.links().Read(id);
    const std::string name = PairName(record);
    if (!several.contains(name)) {
      rows.insert(name + " " + std::to_string(record.linkType) + " " +
                  mgr.links().GetString(record.asIsUrlId).value_or("-") + " " +
                  mgr.links().GetString(record.imgAltId).value_or("-"));
    } else if (pairs.insert(name).second) {
      rows.insert(name);
    }
  }
  for (const int kind : {kKindPath, kKindUrl}) {
    for (int i = 0; i < mgr.UrlNum(kind); ++i) {
      SitUrlRec record;
      if (mgr.GetUrlRec({kind, i}, record) == 0) {
        record.accessTime = 0;  // reading a page changes it
        rows.insert(std::to_string(kind) + "/" + std::to_string(i) + EncodeUrlRec(record));
      }
    }
  }
  return rows;
}

// The rows that only one of two snapshots has.
Rows Difference(const Rows& a, const Rows& b) {
  Rows rows;
  std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(),
                                std::inserter(rows, rows.end()));
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
  ASSERT_TRUE(platform::FromNativePath(std::filesystem::canonical(tree).string(), site));
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
  const auto several = PairsOfSeveral(mgr);
  const auto whole = Snapshot(mgr, several);
  int broken = 0;
  for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
    broken += (mgr.GetLinkStatus(id) & kStatusBroken) != 0 ? 1 : 0;
  }
  std::cout << mgr.UrlNum(kKindPath) << " files, " << mgr.UrlNum(kKindUrl) << " URLs, "
            << mgr.LinkNum() << " links, " << broken << " broken, rebuilt in " << took.count()
            << " s\n";

  const std::string top = site + "\\index.html";
  UrlID topId;
  ASSERT_EQ(mgr.UrlFind(top, topId), 0);
  const auto fore = mgr.links().Matching(topId, kAnyUrlID).size();
  EXPECT_GT(fore, 0u);
  EXPECT_EQ(CountOf(mgr, &SitMgr::GetForeLinks, top), static_cast<int>(fore));
  EXPECT_EQ(CountOf(mgr, &SitMgr::GetBackLinks, top),
            static_cast<int>(mgr.links().Matching(kAnyUrlID, topId).size()));

  ASSERT_EQ(mgr.Save(top), 0);
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows())
      << "saving an unchanged page changes nothing";
  mgr.Undo();
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows()) << "Save";
  ASSERT_EQ(mgr.Remove(top), 0);
  EXPECT_NE(Snapshot(mgr, several), whole);
  mgr.Undo();
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows()) << "Remove";
  ASSERT_EQ(mgr.Move(top, site + "\\moved-nowhere.html"), 0);
  EXPECT_NE(Snapshot(mgr, several), whole);
  mgr.Undo();
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows()) << "Move";

  ASSERT_EQ(mgr.SiteClose(), 0);
  ASSERT_EQ(mgr.SiteOpen("tree"), 0);
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows()) << "closed and opened";
  ASSERT_EQ(mgr.SiteRebuildDB(0), 0);
  EXPECT_EQ(Difference(Snapshot(mgr, several), whole), Rows()) << "rebuilt with the numbers kept";
}

}  // namespace
}  // namespace zvrsit
