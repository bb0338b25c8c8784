// The example site, against its list of links, which was worked out by hand for the newer
// generation under the classic rules. The older generation differs in this:
//
//   - style sheets are not read: no links from a sheet, and none that a page's STYLE or style
//     attributes hold; the sheets that LINK names are linked, as type 6
//   - a site has no default document name: a target that ends in "/" leads to the folder itself
//   - a link to a file outside of the site is kept, and the page goes on behind it
//   - one pair of entries has one record for several references, with the type and texts of the
//     first; references in a row make records of their own
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sstream>

#include "legacy/legacy_site.h"
#include "links/link_type.h"
#include "support/code_page_scope.h"
#include "util/mb_string.h"

namespace zvrsit::test {
namespace {

struct References {
  std::set<int> types;
  std::set<std::string> texts;
  int count = 0;
};
using Pairs = std::map<std::string, References>;

std::vector<std::string> Fields(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, '|');) {
    const std::size_t first = field.find_first_not_of(' ');
    field = first == std::string::npos ? "" : field.substr(first);
    field.erase(field.find_last_not_of(' ') + 1);
    fields.push_back(field);
  }
  return fields;
}

// What the list lets the older generation find.
Pairs Expected(const std::string& list) {
  Pairs pairs;
  std::istringstream in(InCodePage(ReadWhole(list)));
  for (std::string line; std::getline(in, line);) {
    const std::vector<std::string> row = Fields(line);
    if (row.size() < 9 || (row[0] != "both" && row[0] != "classic" && row[0] != "later")) continue;
    const int type = SitLinkTypeOf(LinkTypeOfName(row[4].c_str()));
    if (type == 0 || row[1].ends_with(".css")) continue;
    std::string to = row[2];
    if (row[6].ends_with("/")) to.erase(to.rfind('/') + 1);
    // What the code page lacks is "?" there, and ends the name of a file.
    if (row[3] == "2") to = to.substr(0, to.find('?'));
    References& pair = pairs[row[1] + " > " + to];
    pair.types.insert(type);
    pair.texts.insert(row[6]);
    pair.count += std::stoi(row[8]);
  }
  pairs["links.htm > ../outside.htm"] = {{kSitLinkAnchor}, {"../outside.htm"}, 1};
  return pairs;
}

class ExampleSite : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::path native(ZVRSIT_SOURCE_DIR "/examples/site");
    if (!std::filesystem::exists(native)) GTEST_SKIP() << "no example site";
    if (InCodePage("\u6E2F") == "?") {
      GTEST_SKIP() << "a file of the site has no name in code page " << platform::CodePage();
    }
    platform::FromNativePath(native.make_preferred().string(), site);
    mgr.setDB(folder.path("db") + "\\", "sites", "servers");
    SitSiteProperty property;
    property.dir[1] = site + "\\";
    property.topFile = site + "\\index.htm";
    ASSERT_EQ(mgr.SetSiteProf("example", property), 0);
    ASSERT_EQ(mgr.SiteOpen("example"), 0);
    ASSERT_EQ(mgr.SiteRebuildDB(1), 0);
  }

  // The name of an entry as the list has it.
  std::string Name(const UrlID& id) {
    std::string text = Text(mgr.UrlUrl(id));
    if (id.kind == kKindUrl) return text;
    const std::string above = site.substr(0, site.rfind('\\') + 1);
    std::string native;
    if (text.starts_with(site + "\\")) {
      native = text.substr(site.size() + 1);
    } else if (text.starts_with(above)) {
      native = "..\\" + text.substr(above.size());
    }
    ReplaceCharMB(native, '\\', '/');
    return native;
  }

  Pairs Actual() {
    Pairs pairs;
    for (const int id : mgr.links().Matching(kAnyUrlID, kAnyUrlID)) {
      const auto record = mgr.links().Read(id);
      References& pair = pairs[Name(record->from) + " > " + Name(record->to)];
      pair.types.insert(record->linkType);
      pair.texts.insert(mgr.links().GetString(record->asIsUrlId).value_or(""));
      pair.count += record->refCount;
    }
    return pairs;
  }

  const CodePageScope page{PageOfFileNames()};
  TempFolder folder;
  std::string site;
  OpenSitMgr mgr;
};

TEST_F(ExampleSite, ItsLinksAgreeWithTheList) {
  const Pairs expected = Expected(ZVRSIT_SOURCE_DIR "/examples/site.links");
  ASSERT_GT(expected.size(), 60u);
  Pairs actual = Actual();
  for (const auto& [name, wanted] : expected) {
    ASSERT_TRUE(actual.contains(name)) << name;
    const References& found = actual[name];
    EXPECT_EQ(found.count, wanted.count) << name;
    for (const int type : found.types) EXPECT_TRUE(wanted.types.contains(type)) << name;
    for (const std::string& text : found.texts) EXPECT_TRUE(wanted.texts.contains(text)) << text;
  }
  for (const auto& [name, found] : actual) EXPECT_TRUE(expected.contains(name)) << name;
}

TEST_F(ExampleSite, ItsPagesAreReadInTheirCharsets) {
  SitUrlRec record;
  ASSERT_EQ(mgr.GetUrlProperty(site + "\\news\\sjis.htm", record), 0);
  EXPECT_FALSE(record.title.empty());
  SitLinkProperty link;
  ASSERT_EQ(mgr.GetLinkProperty(site + "\\news\\sjis.htm", site + "\\img\\logo.png", link), 0);
  EXPECT_EQ(platform::ToUtf8(link.imgAlt), "\u8868\u793a");
  EXPECT_EQ(link.status, kStatusFound);
  ASSERT_EQ(mgr.GetUrlProperty(site + "\\orphan.htm", record), 0);
  EXPECT_EQ(record.ftpMember, 0);
  ASSERT_EQ(mgr.GetUrlProperty(site + "\\boats\\alder.htm", record), 0);
  EXPECT_EQ(record.ftpMember, kMemberReached);
}

}  // namespace
}  // namespace zvrsit::test
