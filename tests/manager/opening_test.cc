// Setting a manager up, and opening and closing its sites.
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <new>

#include "support/test_site.h"

namespace zvrsit::test {
namespace {

// The names are joined as they stand: only the part before the last separator is a folder, which is
// made.
TEST(SetDB, OpensTheProfilesBelowItsFolder) {
  TempFolder folder;
  for (const char* name : {"a/b/db/", "db"}) {
    SiteMgr mgr;
    mgr.setDB(folder.path(name).c_str(), "sites.R", "servers.R", 0);
    ASSERT_NE(mgr.GetSiteProf(), nullptr) << name;
    EXPECT_GE(mgr.GetSiteProf()->Add("one"), 0);
    EXPECT_TRUE(folder.has(std::string(name) + "sites.R"));
  }
  for (const char* none : {"relative", static_cast<const char*>(nullptr)}) {
    SiteMgr mgr;
    mgr.setDB(none, "sites.R", "servers.R", 0);
    EXPECT_EQ(mgr.GetSiteProf(), nullptr);
    EXPECT_EQ(mgr.GetServProf(), nullptr);
  }
}

TEST(SiteOpen, IsRefusedForWhatCannotBeOpened) {
  TestSite site;
  EXPECT_EQ(site.mgr->SiteOpen("", 0), -1);
  EXPECT_EQ(site.mgr->SiteOpen("other", 0), -1);
  EXPECT_EQ(site.mgr->OpenSite(-1, 0), -1);
  EXPECT_EQ(site.mgr->OpenSite(7, 0), -1);
  EXPECT_EQ(site.mgr->SiteClose(), -1);
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(site.Open(), -1) << "a site is open";
  EXPECT_NE(site.mgr->GetPathDB(), nullptr);
  EXPECT_EQ(site.mgr->SiteClose(), 0);
  EXPECT_EQ(site.mgr->GetPathDB(), nullptr);
  EXPECT_EQ(site.mgr->SiteClose(), -1);
}

TEST(SiteOpen, TellsAMissingTopFileOrFolderApart) {
  TestSite site;
  std::filesystem::remove(site.native("index.html"));
  EXPECT_EQ(site.Open(), -2);
  EXPECT_GE(site.mgr->GetSiteProf()->SetText(0, &SiteSiteRec::topFile, ""), 0);
  EXPECT_EQ(site.Open(), -1) << "no top file in the profile";
  std::filesystem::remove_all(site.native(""));
  EXPECT_EQ(site.Open(), -2);
}

TEST(SiteOpen, SucceedsWithoutTablesWhenOneIsDamaged) {
  TestSite site;
  site.folder().write("db/demo/LR", std::string("ZVR4.00-SITE0.01") + Word(0x7FFFFFFF) + Word(0));
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(site.mgr->GetPathDB(), nullptr);
  EXPECT_EQ(site.mgr->GetLinkDB(), nullptr);
  EXPECT_EQ(site.mgr->Save(site.path("index.html"), nullptr), -1);
  EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), -1);
  EXPECT_EQ(site.mgr->Remove(site.path("index.html"), 0), -1);
  EXPECT_EQ(site.mgr->TraverseLinks(site.dir(), site.path("index.html"), nullptr), -1);
  EXPECT_EQ(site.mgr->TraverseFamily(), -1);
  EXPECT_EQ(site.mgr->SetSiteProfTopFile(""), 0);
  EXPECT_EQ(site.mgr->TraverseFamily(), 0) << "there is nothing to mark";
  EXPECT_EQ(site.mgr->SiteClose(), 0);
}

// A profile whose default URL cannot be read counts as not open although its tables are there; the
// next opening starts afresh.
TEST(SiteOpen, KeepsTablesButNoSiteWhenTheDefaultUrlIsUnreadable) {
  TestSite site;
  SiteSiteProfDB& profiles = *site.mgr->GetSiteProf();
  EXPECT_GE(profiles.SetNumber(0, &SiteSiteRec::defaultUrl, 4000), 0);
  EXPECT_EQ(site.Open(), -1);
  EXPECT_EQ(site.mgr->GetOpenSiteId(), -1);
  EXPECT_NE(site.mgr->GetPathDB(), nullptr);
  EXPECT_EQ(site.mgr->SiteClose(), -1);
  EXPECT_GE(profiles.SetNumber(0, &SiteSiteRec::defaultUrl, -1), 0);
  EXPECT_EQ(site.Open(), 0);
}

// The copy is never destroyed: the original owns what both hold.
TEST(SiteMgrCopy, WorksOnTheTablesOfItsOriginal) {
  TestSite site;
  ASSERT_EQ(site.Open(), 0);
  alignas(SiteMgr) std::byte room[sizeof(SiteMgr)];
  SiteMgr* copy = new (room) SiteMgr(*site.mgr);
  EXPECT_EQ(copy->GetUrlDB(), site.mgr->GetUrlDB());
  EXPECT_EQ(copy->AddUrl("http://a.example/"), 0);
  EXPECT_EQ(site.mgr->AddUrl("http://a.example/"), 0);
}

// Calls that all have one answer.
template <class Expected, class... Results>
void ExpectAll(Expected expected, Results... results) {
  int number = 0;
  const auto expect = [&](const auto& result) {
    EXPECT_EQ(result, expected) << "result " << number;
    ++number;
  };
  (expect(results), ...);
}

// What every call says without a site, to a manager that has closed one and to one that has not
// even a database.
TEST(NothingOpen, EveryCallSaysSo) {
  TestSite site;
  ASSERT_EQ(site.Open(), 0);
  ASSERT_EQ(site.mgr->SiteClose(), 0);
  SiteMgr fresh;
  SiteLink link;
  const UrlID id(kKindPath, 0);
  for (SiteMgr* mgr : {static_cast<SiteMgr*>(site.mgr.get()), &fresh}) {
    ExpectAll(-1, mgr->AddUrl("x"), mgr->AddLink("x", id, id, 1), mgr->AddPath("\\x", "\\", 1),
              mgr->AddRel(id, id), mgr->CheckPath("\\x", "\\"), mgr->AddFolder("\\x\\", 1),
              mgr->DelUrl(0), mgr->DelPath(0), mgr->DelLink(0), mgr->DelFolder(0), mgr->DelRel(0),
              mgr->FindPath("\\x"), mgr->GetLink(0, link), mgr->GetUrlFileType(id),
              mgr->GetUrlFtpMember(id), mgr->SiteClose(), mgr->Save("\\x", nullptr),
              mgr->Remove("\\x", 0), mgr->UpdateLinkFamily());
    ExpectAll(nullptr, mgr->GetForeLinks(id), mgr->GetBackLinks(id), mgr->GetForeLinks("\\x"),
              mgr->GetBackLinks("\\x"), mgr->EnumLink(), mgr->EnumBrokenLink(),
              mgr->GetBrokenLinks(), mgr->EnumPath(), mgr->EnumUrl(), mgr->GetChildren("\\x\\"),
              mgr->GetSubFolders("\\x\\"), mgr->GetChild("\\x\\", 0), mgr->GetFtpMember(),
              mgr->GetUnusedFiles(), mgr->GetFilesByType(1), mgr->GetUrlTitle(id),
              mgr->FolderName(0), mgr->UrlPath(0), mgr->UrlUrl(0), mgr->GetSiteProfDir(0, -1),
              mgr->GetPathDB());
  }
  EXPECT_EQ(fresh.FixSite() + fresh.FixSiteProf() + fresh.FixServProf(), 0);
}

TEST(NoDatabase, EveryCallSaysSo) {
  SiteMgr mgr;
  SiteProfile site;
  ServProfile server;
  ExpectAll(-1, mgr.SiteOpen("a", 0), mgr.NeedToRebuild("a"), mgr.FindSiteProf("a"),
            mgr.GetSiteProf("a", site), mgr.SetSiteProf("a", site), mgr.AddSiteProf("a"),
            mgr.CopySiteProf("a", "b"), mgr.RenameSiteProf("a", "b"), mgr.DeleteSiteProf("a"),
            mgr.SetSiteProfDir(0, "x", 0), mgr.SetSiteProfUseDocRoot(1, 0),
            mgr.SetSiteProfLinkRules(1, 0), mgr.SetSiteProfDefaultUrl("x"),
            mgr.GetServProf("a", server), mgr.SetServProf("a", server), mgr.AddServProf("a"),
            mgr.RenameServProf("a", "b"), mgr.GetServProfLockDir("a"));
  ExpectAll(nullptr, mgr.EnumSiteProf(), mgr.EnumServProf(), mgr.GetSiteProfDir(0, 0),
            mgr.GetServProfHost("a"), mgr.EnumPathInSite("a"), mgr.EnumSiteHasPath("\\a"),
            mgr.GetSiteProf(), mgr.GetServProf());
}

}  // namespace
}  // namespace zvrsit::test
