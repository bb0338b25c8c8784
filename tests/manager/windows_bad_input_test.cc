// Names and files that Windows refuses: each call says so, and nothing that was there is lost.
#include <gtest/gtest.h>
#include <windows.h>

#include "manager/answers.h"
#include "platform/file.h"
#include "support/test_site.h"
#include "support/windows_lock.h"

namespace zvrsit::test {
namespace {

class BadInput : public testing::Test {
 protected:
  BadInput() {
    site.write("index.html", "<a href=a.html>a</a>");
    site.write("a.html", "<a href=index.html>home</a>");
  }
  void Rebuild() {
    ASSERT_EQ(site.Open(), 0);
    ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
    site.mgr->SiteClose();
  }
  void ExpectSite() {
    ASSERT_EQ(site.Open(), 0);
    ASSERT_NE(site.mgr->GetLinkDB(), nullptr);
    ExpectLinks();
  }
  void ExpectLinks() {
    const std::string home = "index.html -> a.html a.html 40 1\n";
    const std::string back = "a.html -> index.html index.html 40 1\n";
    const std::string links = site.Links();
    EXPECT_TRUE(links == home + back || links == back + home) << links;
  }
  void SetReadOnly(const std::string& name, bool readOnly) {
    ::SetFileAttributesA(site.folder().native(name).c_str(),
                         readOnly ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL);
  }

  TestSite site;
};

// Thai letters are in none of the pages that these tests run under.
TEST_F(BadInput, WhatTheCodePageHasNoNameForIsLeftOutOfARebuild) {
  const std::filesystem::path folder(site.native(""));
  std::filesystem::create_directory(folder / L"\u0E01");
  for (const wchar_t* name : {L"\u0E02.html", L"\u0E01\\x.html"}) {
    const HANDLE file =
        ::CreateFileW((folder / name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    ::CloseHandle(file);
  }
  Rebuild();
  ExpectSite();
  EXPECT_EQ(site.mgr->GetPathDB()->Count(), 2);
  EXPECT_EQ(site.mgr->GetFolderDB()->Count(), 1);
  EXPECT_TRUE(std::filesystem::exists(folder / L"\u0E01\\x.html"));
}

TEST_F(BadInput, ALockedPageIsSkippedAndReadTheNextTime) {
  Rebuild();
  ASSERT_EQ(site.Open(), 0);
  {
    const Lock lock(site.native("a.html"));
    ASSERT_TRUE(lock.holds());
    EXPECT_EQ(site.mgr->SiteRebuildDiff(nullptr), 0);
    EXPECT_EQ(site.mgr->SkippedByRebuild(), std::vector<std::string>{site.path("a.html")});
    EXPECT_EQ(site.Record("a.html").exists, 1);
    EXPECT_EQ(site.mgr->Save(site.path("a.html"), nullptr), 0) << "as an empty page";
  }
  EXPECT_EQ(site.mgr->Save(site.path("a.html"), nullptr), 0);
  ExpectLinks();
  EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_TRUE(site.mgr->SkippedByRebuild().empty());
  ExpectLinks();
}

TEST_F(BadInput, AFolderThatCannotBeListedIsSkipped) {
  site.write("closed/c.html", "");
  ASSERT_EQ(site.Open(), 0);
  const Lock closed(site.native("closed"));
  ASSERT_TRUE(closed.holds());
  EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_EQ(site.mgr->SkippedByRebuild(), std::vector<std::string>{site.path("closed") + "\\"});
}

TEST_F(BadInput, TablesThatCannotBeOpenedKeepWhatTheyHold) {
  Rebuild();
  for (const char* name : {"db/demo/UR", "db/demo/PS", "db/demo/LR"}) {
    const auto expectNoTables = [&] {
      ASSERT_EQ(site.Open(), 0);
      EXPECT_EQ(site.mgr->GetPathDB(), nullptr) << name;
      EXPECT_EQ(site.mgr->Save(site.path("a.html"), nullptr), -1);
      EXPECT_EQ(site.mgr->SiteRebuildComplete(nullptr), -1);
      site.Start();
    };
    {
      const Lock lock(site.folder().native(name));
      ASSERT_TRUE(lock.holds());
      expectNoTables();
    }
    SetReadOnly(name, true);
    expectNoTables();
    SetReadOnly(name, false);
    ExpectSite();
    site.Start();
  }
}

// Another program reads a table file while this one works on the site.
TEST_F(BadInput, AFileThatSomebodyReadsIsSavedToButNotPacked) {
  Rebuild();
  ASSERT_EQ(site.Open(), 0);
  {
    const Lock reader(site.folder().native("db/demo/LS"), FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(reader.holds());
    EXPECT_EQ(site.mgr->Save(site.path("a.html"), nullptr), 0);
    EXPECT_EQ(site.mgr->PackSite(), -1);
    site.Start();
    EXPECT_EQ(site.mgr->RenameSiteProf("demo", "other"), -1);
    EXPECT_EQ(site.mgr->RenameSiteProf("other", "demo"), -1) << "the name has gone back";
  }
  ExpectSite();
  EXPECT_EQ(site.mgr->PackSite(), 0);
  ExpectLinks();
}

TEST_F(BadInput, ProfilesThatCannotBeOpenedKeepWhatTheyHold) {
  ASSERT_GE(site.mgr->AddServProf("www"), 0);
  ASSERT_EQ(site.mgr->SetServProfHost("www", "old"), 0);
  {
    const Lock lock(site.folder().native("db/servers.R"));
    ASSERT_TRUE(lock.holds());
    EXPECT_EQ(site.mgr->SetServProfHost("www", "new"), -1);
    EXPECT_EQ(Take(site.mgr->GetServProfHost("www")), "(null)");
  }
  EXPECT_EQ(Take(site.mgr->GetServProfHost("www")), "old");
  site.mgr.reset();
  SetReadOnly("db/sites.R", true);
  site.Start();
  EXPECT_EQ(site.Open(), -1);
  site.mgr.reset();
  SetReadOnly("db/sites.R", false);
  site.Start();
  EXPECT_EQ(site.Open(), 0);
}

}  // namespace
}  // namespace zvrsit::test
