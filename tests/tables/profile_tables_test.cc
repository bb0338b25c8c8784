#include <gtest/gtest.h>

#include <string>

#include "support/temp_folder.h"
#include "tables/site_site_prof_db.h"

namespace zvrsit {
namespace {

using test::TempFolder;

class SiteProfiles : public testing::Test {
 protected:
  SiteProfiles() { EXPECT_EQ(table_.Open(folder_.path("sites.R"), kOpenPlain), 0); }
  std::string Field(int number, std::int32_t SiteSiteRec::*field) {
    std::string text = "(none)";
    EXPECT_GE(table_.GetText(number, field, text), 0);
    return text;
  }

  TempFolder folder_;
  SiteSiteProfDB table_;
};

TEST_F(SiteProfiles, RefuseNamesThatNoFolderCanHaveAndThoseThatAreTaken) {
  ASSERT_EQ(table_.Add("Home"), 0);
  for (const char* name :
       {"", ".", "..", "nul", "a.", "a ", "a/b", "..\\a", "a:b", "a*", "Home", "hOME"}) {
    EXPECT_EQ(table_.Add(name), -1) << name;
    EXPECT_EQ(table_.Copy(0, name), -1) << name;
  }
  ASSERT_EQ(table_.Add("other"), 1);
  EXPECT_EQ(table_.Rename(1, "HOME"), -1);
  EXPECT_EQ(table_.Rename(1, "Other"), 0);
  EXPECT_EQ(table_.Find("Other"), 1);
  EXPECT_EQ(table_.Find("other"), -1);
  EXPECT_EQ(table_.Rename(1, "third"), 0);
  EXPECT_EQ(table_.Add("OTHER"), 2);
  EXPECT_EQ(table_.Delete(0), 0);
  EXPECT_EQ(table_.Add("HOME"), 3);
  EXPECT_EQ(table_.Add("Third"), -1);
}

TEST_F(SiteProfiles, AreRenamedCopiedAndDeletedWithAllTheirTexts) {
  ASSERT_EQ(table_.Add("one"), 0);
  EXPECT_EQ(table_.SetFolder(0, kSlotSiteFolder, "\\s\\"), 0);
  EXPECT_EQ(table_.SetFolder(0, 10, "\\s\\"), -1);
  EXPECT_EQ(table_.SetText(0, &SiteSiteRec::topFile, "\\s\\index.htm"), 0);
  EXPECT_EQ(table_.SetNumber(0, &SiteSiteRec::rebuildState, 2), 0);
  EXPECT_EQ(table_.SetNumber(0, &SiteSiteRec::linkRules, 1), 0);

  ASSERT_EQ(table_.Copy(0, "two"), 1);
  std::string folder;
  EXPECT_EQ(table_.GetFolder(1, kSlotSiteFolder, folder), 0);
  EXPECT_EQ(folder, "\\s\\");
  EXPECT_EQ(Field(1, &SiteSiteRec::pathFile), "two\\PR");
  SiteSiteRec record;
  ASSERT_EQ(table_.Get(1, record), 0);
  EXPECT_EQ(record.rebuildState, 0);
  EXPECT_EQ(record.linkRules, 1);

  ASSERT_EQ(table_.Rename(0, "three"), 0);
  EXPECT_EQ(table_.Find("one"), -1);
  EXPECT_EQ(table_.Find("three"), 0);
  EXPECT_EQ(Field(0, &SiteSiteRec::relFile), "three\\RR");
  EXPECT_EQ(Field(0, &SiteSiteRec::topFile), "\\s\\index.htm");
  EXPECT_EQ(table_.strings()->FindString("one\\RR"), -1);

  ASSERT_EQ(table_.Delete(0), 0);
  EXPECT_EQ(table_.strings()->FindString("three\\UR"), -1);
  EXPECT_EQ(Field(1, &SiteSiteRec::topFile), "\\s\\index.htm");
  ASSERT_EQ(table_.Delete(1), 0);
  // Every entry of the string store is dead.
  EXPECT_EQ(table_.strings()->deadBytes(), table_.strings()->endOffset() - 28);
  EXPECT_EQ(table_.Add("one"), 2);
}

TEST(ProfileModes, AGoodOpenIsBackedUpAndABadOneRestored) {
  TempFolder folder;
  const std::string path = folder.path("sites.R");
  {
    SiteSiteProfDB table;
    ASSERT_EQ(table.Open(path, kOpenPlain), 0);
    EXPECT_GE(table.Add("home"), 0);
    ASSERT_EQ(table.Close(), 0);
    EXPECT_FALSE(folder.has("sites.R_bak"));
  }
  for (const int mode : {kOpenBackUp, kOpenPlain}) {
    SiteSiteProfDB table;
    ASSERT_EQ(table.Open(path, mode), 0);
    ASSERT_EQ(table.Close(), 0);
    EXPECT_TRUE(folder.has("sites.R_bak") && folder.has("sites.S_bak"));
  }
  for (const char* damaged : {"sites.R", "sites.S"}) {
    std::string bytes = folder.read(damaged);
    bytes[19] = '\x7F';  // an id count beyond belief
    folder.write(damaged, bytes);
    SiteSiteProfDB plain;
    EXPECT_EQ(plain.Open(path, kOpenBackUp), -1);
    SiteSiteProfDB restored;
    ASSERT_EQ(restored.Open(path, kOpenRestore), 0) << damaged;
    EXPECT_EQ(restored.Find("home"), 0);
    EXPECT_EQ(restored.Open(path, kOpenRestore), -1);
    ASSERT_EQ(restored.Close(), 0);
  }
  // A file that was cut to nothing opens as an empty table; the backup outlives that.
  folder.write("sites.R", "");
  SiteSiteProfDB empty;
  ASSERT_EQ(empty.Open(path, kOpenRestore), 0);
  EXPECT_EQ(empty.Count(), 0);
  EXPECT_GT(folder.read("sites.R_bak").size(), 24u);
}

TEST(ProfileModes, AFileThatWouldHoldItsOwnStringsIsRefused) {
  const TempFolder folder;
  SiteSiteProfDB same, butForCase;
  EXPECT_EQ(same.Open(folder.path("siteS"), kOpenPlain), -1);
  EXPECT_FALSE(folder.has("siteS"));
  EXPECT_EQ(butForCase.Open(folder.path("sites"), kOpenPlain), platform::kNamesIgnoreCase ? -1 : 0);
}

}  // namespace
}  // namespace zvrsit
