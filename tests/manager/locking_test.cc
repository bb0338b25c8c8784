// Managers that share one database, each as a process of its own would.
#include <gtest/gtest.h>

#include "support/test_site.h"

namespace zvrsit::test {
namespace {

using Locking = SiteMgr::Locking;

// Another manager on the files of a site.
class Other {
 public:
  Other(const TestSite& site, Locking locking) {
    mgr.setDom(&dom_);
    mgr.SetLocking(locking, 50);
    mgr.setDB((site.folder().path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
  }
  int Open() { return mgr.SiteOpen("demo", 0); }
  std::size_t Sites() {
    std::vector<std::string*>* const names = mgr.EnumSiteProf();
    if (names == nullptr) return 0;
    const std::size_t count = names->size();
    for (std::string* name : *names) SiteMgr::DeleteString(name);
    delete names;
    return count;
  }

 private:
  DOM dom_;

 public:
  SiteMgr mgr;
};

// A site on disk whose own manager is gone.
class SharedSite : public TestSite {
 public:
  SharedSite() {
    write("a.html", "");
    write("b.html", "");
    mgr.reset();
  }
};

TEST(Locking, ProfilesOfTwoManagersAreAllKept) {
  const SharedSite site;
  Other first(site, Locking::kChange);
  Other second(site, Locking::kChange);
  Other asking(site, Locking::kAsk);
  ASSERT_EQ(first.Open(), 0);
  for (int i = 0; i < 20; ++i) {
    Other& other = i % 2 == 0 ? first : second;
    const std::string name = "site" + std::to_string(i);
    const int number = other.mgr.AddSiteProf(name);
    ASSERT_GE(number, 0) << i;
    Other& next = i % 2 == 0 ? second : first;
    EXPECT_EQ(next.mgr.SetSiteProfTopFile("\\" + name + ".html", number), 0);
    EXPECT_GE(other.mgr.AddServProf(name), 0);
    EXPECT_EQ(next.mgr.SetServProfHost(name, "host"), 0);
    const std::unique_ptr<std::string> top(asking.mgr.GetSiteProfTopFile(number));
    ASSERT_NE(top, nullptr);
    EXPECT_EQ(*top, "\\" + name + ".html");
  }
  EXPECT_EQ(asking.Sites(), 21u);
  EXPECT_EQ(asking.mgr.AddSiteProf("none"), -1);
  EXPECT_EQ(first.mgr.SetSiteProfRebuildState(2, -1), 0);
  EXPECT_EQ(asking.mgr.NeedToRebuild("demo"), 2);
  ASSERT_EQ(first.mgr.LockProfiles(), 0);
  EXPECT_EQ(asking.Sites(), 0u);
  EXPECT_TRUE(asking.mgr.FoundInUse());
  first.mgr.UnlockProfiles();
  EXPECT_EQ(asking.Sites(), 21u);
}

TEST(Locking, OneThatAsksSharesAndWritesNothing) {
  TestSite before;
  before.write("a.html", "<a href=index.html>");
  ASSERT_EQ(before.Open(), 0);
  ASSERT_EQ(before.mgr->SiteRebuildDB(1, nullptr), 0);
  before.mgr->SiteClose();
  before.mgr.reset();
  const auto files = [&] {
    std::string all;
    for (const char* file : {"sites.R", "sites.S", "servers.R", "demo/UR", "demo/US", "demo/PR",
                             "demo/PS", "demo/LR", "demo/LS", "demo/FR", "demo/FS", "demo/RR"}) {
      all += before.folder().read(std::string("db/") + file) + "|";
    }
    return all;
  };
  const std::string bytes = files();
  Other first(before, Locking::kAsk);
  Other second(before, Locking::kAsk);
  Other changing(before, Locking::kChange);
  ASSERT_EQ(first.Open(), 0);
  ASSERT_EQ(second.Open(), 0);
  EXPECT_EQ(changing.Open(), -1);
  EXPECT_EQ(first.mgr.UpdateLinkFamily(), 0);
  EXPECT_EQ(first.mgr.Remove(before.path("a.html"), 0), 0);
  EXPECT_EQ(first.mgr.FlushSite(), -1);
  EXPECT_EQ(first.mgr.PackSite(), -1);
  EXPECT_EQ(first.mgr.SetSiteProfRebuildState(0, -1), -1);
  EXPECT_EQ(first.mgr.SetServProfHost("host", "h"), -1);
  first.mgr.SiteClose();
  // Let go of, a site still answers, and is free.
  second.mgr.UnlockSite(second.mgr.GetOpenSiteId());
  EXPECT_EQ(changing.Open(), 0);
  const std::unique_ptr<std::vector<int>> links(second.mgr.EnumLink());
  EXPECT_EQ(links->size(), 1u);
  EXPECT_EQ(files(), bytes);
}

}  // namespace
}  // namespace zvrsit::test
