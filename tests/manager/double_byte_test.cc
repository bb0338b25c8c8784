// A site whose file names hold double-byte characters of Shift_JIS, with trail bytes that look like
// separators and letters.
#include <gtest/gtest.h>

#include <algorithm>

#include "manager/answers.h"
#include "platform/file.h"
#include "support/code_page_scope.h"
#include "support/test_site.h"

namespace zvrsit::test {
namespace {

// Names by what they mean in Unicode: U+8868, U+30BD and U+80FD end in 5C, the `\`; U+30A2 ends in
// "A", U+30C2 in "a"; U+30DD in 7C.
const std::string kTable = "\x95\x5C.html", kSo = "\x83\x5C.html", kAbility = "\x94\x5C",
                  kA = "\x83\x41.html", kJi = "\x83\x61.html", kPo = "\x83\x7C.gif";

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  std::sort(lines.begin(), lines.end());
  return lines;
}

class DoubleByteSite : public testing::TestWithParam<LinkRules> {
 protected:
  void SetUp() override {
#if defined(_WIN32)
    if (::GetACP() != 932) GTEST_SKIP() << "the system's code page is " << ::GetACP();
#endif
    ASSERT_EQ(platform::MakeFolderOfPath(InFolder("")), 0);
    ASSERT_EQ(site.Open(), 0);
  }

  // The path of a file in the folder with the double-byte name.
  std::string InFolder(const std::string& name) const {
    return site.dir() + kAbility + "\\" + name;
  }
  void WriteSite() {
    site.write(kTable, "<meta charset=shift_jis><title>" + kTable + "</title><a href=" + kSo +
                           ">x</a><a href=" + kAbility + "/" + kA + ">x</a><img src=" + kPo + ">");
    site.write(kSo,
               "<meta charset=utf-8><a href=\u8868.html>x</a><a href=\u80FD/\u30C2.html>x</a>");
    site.write(kPo, "gif");
    site.write(kAbility + "/" + kA, "<meta charset=shift_jis><a href=../" + kTable + ">x</a>");
    site.write("index.html", "<meta charset=shift_jis><a href=" + kTable + ">x</a>");
  }
  bool Exists(const std::string& path) {
    SitePathRec rec;
    const int number = site.mgr->GetPathDB()->Find(path);
    EXPECT_EQ(site.mgr->GetPathDB()->Get(number, rec), 0) << path;
    return rec.exists != 0;
  }

  const CodePageScope page{932};
  TestSite site{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Rules, DoubleByteSite, testing::Values(LinkRules::Classic, LinkRules::Web),
                         [](const auto& rules) {
                           return rules.param == LinkRules::Web ? "Web" : "Classic";
                         });

TEST_P(DoubleByteSite, IsRebuiltWithEveryNameWhole) {
  WriteSite();
  ASSERT_EQ(site.mgr->SiteRebuildComplete(nullptr), 0);
  EXPECT_TRUE(site.mgr->SkippedByRebuild().empty());
  const std::string a = kAbility + "\\" + kA, ji = kAbility + "\\" + kJi;
  std::vector<std::string> expected = {
      "index.html -> " + kTable + " " + kTable + " 40 1",
      kTable + " -> " + kSo + " " + kSo + " 40 1",
      kTable + " -> " + a + " " + kAbility + "/" + kA + " 40 1",
      kTable + " -> " + kPo + " " + kPo + " 200 1",
      kSo + " -> " + kTable + " " + kTable + " 40 1",
      kSo + " -> " + ji + " " + kAbility + "/" + kJi + " 40 1",
      a + " -> " + kTable + " ../" + kTable + " 40 1",
  };
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(Lines(site.Links()), expected);
  EXPECT_TRUE(Exists(InFolder(kA)));
  EXPECT_FALSE(Exists(InFolder(kJi))) << "one letter in two cases, but two characters";
  EXPECT_EQ(site.mgr->GetPathDB()->TextView(site.Record(kTable).title), kTable);

  site.mgr->SiteClose();
  ASSERT_EQ(site.Open(), 0);
  EXPECT_EQ(Lines(site.Links()), expected);
  EXPECT_GE(site.mgr->GetFolderDB()->Find(InFolder("")), 0);
}

}  // namespace
}  // namespace zvrsit::test
