// What cut, flipped and spoiled files and failing calls do to the stores: they answer, end, and
// stay usable.
#include <gtest/gtest.h>

#if defined(__linux__)
#include <stdlib.h>
#include <unistd.h>
#endif

#include "legacy/legacy_site.h"
#include "legacy/sit_peeper.h"
#include "support/damage.h"
#include "support/file_fault.h"

namespace zvrsit {
namespace {

using test::LegacySite;
using test::OpenSitMgr;
using test::TempFolder;

const std::vector<std::string> kFiles = {"db/sites",        "db/sites_S",       "db/demo/Url.db",
                                         "db/demo/Link.db", "db/demo/Link.dS",  "db/demo/Junk.db",
                                         "db/demo/Rel.db",  "db/demo/Folder.db"};

// On Windows, where a file call takes many times as long, one run in so many is made.
#if defined(_WIN32)
constexpr int kOneIn = 4;  // has no part in the counts of ways to spoil a word or a byte
#else
constexpr int kOneIn = 1;
#endif

// The first files are the profiles, which lead to a site.
bool IsOfSite(std::size_t file) {
  return file >= 2;
}

class DamagedSite : public ::testing::Test {
 protected:
  // Files are replaced thousands of times here, for which some disks take a millisecond each.
  static void SetUpTestSuite() {
#if defined(__linux__)
    if (access("/dev/shm", R_OK | W_OK | X_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
#endif
  }

  DamagedSite() {
    site.write("index.html", "<title>T</title><a href=b.html>b</a><img src=c.gif alt=A>");
    site.Open();
    site.mgr->SiteRebuildDB(1);
    site.mgr->UrlAdd(3, "http://x/");
    site.mgr->SiteClose();
    site.mgr.reset();
    for (const std::string& file : kFiles) bytes.push_back(site.folder().read(file));
  }

  bool IsSampled() {
    return run++ % kOneIn == 0;
  }

  void Restore() {
    for (std::size_t i = 0; i < kFiles.size(); ++i) {
      if (site.folder().read(kFiles[i]) != bytes[i]) site.folder().write(kFiles[i], bytes[i]);
    }
  }

  // Everything that a program does with a site, whatever the files hold.
  void UseAll() {
    Use(true);
  }

  // Without `stores` the five files of the site are opened and closed only.
  void Use(bool stores) {
    OpenSitMgr mgr;
    mgr.setDB(site.folder().path("db") + "\\", "sites", "servers");
    mgr.EnumSiteProf(1);
    while (std::string* name = mgr.EnumSiteProf(0)) mgr.DeleteString(name);
    SitSiteProperty property;
    mgr.GetSiteProf("demo", property);
    if (mgr.SiteOpen("demo") == 0 && stores) UseSite(mgr);
    mgr.SiteClose();
    SitPeeper peeper;
    peeper.setDB(site.folder().path("db") + "\\", "sites", "servers");
    if (auto* paths = peeper.EnumPath("demo")) {
      for (std::string* path : *paths) peeper.DeleteString(path);
      delete paths;
    }
  }

  void UseSite(OpenSitMgr& mgr) {
    std::string* from = nullptr;
    std::string* to = nullptr;
    mgr.EnumLink(1, nullptr, nullptr);
    for (int i = 0; i < 50 && mgr.GetLastError() != kSitPastEnd; ++i) {
      if (mgr.EnumLink(0, &from, &to) != 0) continue;
      mgr.DeleteString(from);
      mgr.DeleteString(to);
    }
    while (std::string* target = mgr.GetForeLinks(site.path("index.html"))) {
      mgr.DeleteString(target);
    }
    SitLinkProperty link;
    mgr.GetLinkProperty(site.path("index.html"), site.path("b.html"), link);
    mgr.Save(site.path("index.html"));
    mgr.Remove(site.path("b.html"));
    mgr.Undo();
    mgr.Undo();
    mgr.UpdateLinkFamily();
  }

  // After any damage to the stores of the site, a complete rebuild makes it whole.
  void ExpectRebuildHeals(const std::string& what) {
    LegacySite* whole = &site;
    whole->Start();
    if (whole->Open() != 0) return;
    ASSERT_EQ(whole->mgr->SiteRebuildDB(1), 0) << what;
    EXPECT_EQ(whole->Links().size(), 2u) << what;
    whole->mgr->SiteClose();
    whole->mgr.reset();
  }

  LegacySite site;
  std::vector<std::string> bytes;
  int run = 0;
};

TEST_F(DamagedSite, CutAtEveryByte) {
  for (std::size_t i = 0; i < kFiles.size(); ++i) {
    test::CutAtEveryByte(bytes[i], [&](std::string_view cut) {
      if (!IsSampled()) return;
      Restore();
      site.folder().write(kFiles[i], cut);
      Use(IsOfSite(i));
      if (IsOfSite(i) && cut.size() % 32 == 5) ExpectRebuildHeals(kFiles[i]);
    });
  }
}

TEST_F(DamagedSite, EveryWordSpoiledAndBytesFlipped) {
  for (std::size_t i = 0; i < kFiles.size(); ++i) {
    const bool flips = kFiles[i].ends_with("Link.db") || kFiles[i].ends_with("Url.db");
    const auto use = [&](const std::string& damaged, std::size_t offset) {
      if (!IsSampled()) return;
      Restore();
      site.folder().write(kFiles[i], damaged);
      Use(IsOfSite(i));
      if (IsOfSite(i) && offset % 64 == 4) ExpectRebuildHeals(kFiles[i] + std::to_string(offset));
    };
    // All words of the header and the first records, and a third of those that are like them.
    test::SpoilEveryWord(bytes[i], [&](const std::string& damaged, std::size_t offset) {
      if (offset < 100 || offset % 12 == 0) use(damaged, offset);
    });
    if (!flips) continue;
    // A fifth of the bytes, at other places in each record.
    test::FlipEveryByte(bytes[i], [&](const std::string& damaged, std::size_t offset) {
      if (offset % 5 == 0) use(damaged, offset);
    });
  }
}

TEST_F(DamagedSite, EachFileCallFailsOnce) {
  const int calls = test::FailEachCall([&] { Restore(); }, [&] { UseAll(); },
                                       [&](const test::FailedRun&) { UseAll(); }, kOneIn);
  EXPECT_GT(calls, 100 / kOneIn);
}

// No answer is invented: what a packed store gives after a failed call is a part of what was there.
TEST(FailingPack, LosesNothing) {
  TempFolder folder;
  const auto prepare = [&] {
    std::filesystem::remove(folder.native("url"));
    SitBlockDB db;
    db.Open(folder.path("url"), SitBlockDB::kUrlFile, 5);
    for (const char* key : {"a", "b", "c"}) {
      SitUrlRec record;
      record.key = key;
      db.Add(record);
    }
    db.Delete(1);
  };
  const auto pack = [&] {
    SitBlockDB db;
    if (db.Open(folder.path("url"), SitBlockDB::kUrlFile, 5) == 0) db.Pack(true);
  };
  test::FailEachCall(prepare, pack, [&](const test::FailedRun& run) {
    SitBlockDB db;
    ASSERT_EQ(db.Open(folder.path("url"), SitBlockDB::kUrlFile, 5), 0) << run.call;
    EXPECT_EQ(db.Find("a"), 0) << run.call;
    EXPECT_EQ(db.Find("c"), 2) << run.call;
    EXPECT_EQ(db.LiveNum(), 2) << run.call;
  });
}

}  // namespace
}  // namespace zvrsit
