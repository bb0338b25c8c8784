#include "legacy/sit_peeper.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "legacy/legacy_site.h"

namespace zvrsit::test {
namespace {

// The strings of a result, which is given back.
std::vector<std::string> Texts(SitPeeper& peeper, std::vector<std::string*>* result) {
  std::vector<std::string> texts;
  if (result == nullptr) return {"(null)"};
  for (std::string* text : *result) texts.push_back(Text(text));
  EXPECT_EQ(peeper.DeleteStrings(result), 0);
  EXPECT_TRUE(result->empty());
  delete result;
  return texts;
}

using Names = std::vector<std::string>;

TEST(SitPeeper, WithoutProfilesThereIsNoAnswer) {
  SitPeeper peeper;
  EXPECT_EQ(peeper.EnumPath("demo"), nullptr);
  EXPECT_EQ(peeper.GetSiteByPath("x"), nullptr);
  EXPECT_EQ(peeper.DeleteStrings(nullptr), -1);
}

TEST(SitPeeper, LooksIntoSitesWithoutOpeningThem) {
  LegacySite site;
  site.Open();
  for (const char* path : {"\\x\\a.htm", "\\x\\b.htm", "\\x\\c.htm"}) site.mgr->UrlAdd(2, path);
  site.mgr->UrlDel({2, 1});
  site.mgr->SiteClose();
  site.mgr->SiteProfAdd("other");
  site.mgr->SiteProfAdd("deleted");
  site.mgr->SiteProfDel("deleted");
  site.mgr->SiteOpen("other");
  site.mgr->UrlAdd(2, "\\x\\a.htm");
  site.mgr->SiteClose();

  SitPeeper original;
  original.setDB(site.folder().path("db") + "\\", "sites", "servers");
  SitPeeper peeper(original);
  EXPECT_EQ(Texts(peeper, peeper.EnumPath("demo")), (Names{"\\x\\a.htm", "\\x\\c.htm"}));
  EXPECT_EQ(peeper.EnumPath("Demo"), nullptr);
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\a.htm")), (Names{"demo", "other"}));
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\A.htm")), Names());
  EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\b.htm")), Names());
  EXPECT_FALSE(site.folder().has("db/deleted"));

  EXPECT_TRUE(peeper.IsWhole("demo"));
  for (const char* bytes : {"damaged", "", static_cast<const char*>(nullptr)}) {
    std::filesystem::remove(site.folder().native("db/other/Url.db"));
    if (bytes != nullptr) site.folder().write("db/other/Url.db", bytes);
    EXPECT_EQ(Texts(peeper, peeper.GetSiteByPath("\\x\\a.htm")), Names{"demo"});
    EXPECT_EQ(peeper.EnumPath("other"), nullptr);
    EXPECT_EQ(peeper.lastError(), 5);
    EXPECT_FALSE(peeper.IsWhole("other"));
  }
  EXPECT_FALSE(site.folder().has("db/other/Url.db")) << "looking makes no file";
  site.folder().write("db/demo/Url.db", site.folder().read("db/demo/Url.db") + "more");
  EXPECT_FALSE(peeper.IsWhole("demo"));
}

}  // namespace
}  // namespace zvrsit::test
