#include <gtest/gtest.h>

#include "platform/single_byte.h"
#include "support/code_page_scope.h"
#include "util/elf_hash.h"
#include "util/file_type.h"
#include "util/mb_string.h"
#include "util/scramble.h"
#include "util/site_name.h"

namespace zvrsit {
namespace {

using test::CodePageScope;
constexpr std::size_t npos = std::string::npos;

TEST(MbString, SearchesStepOverDoubleByteCharacters) {
  EXPECT_EQ(FindHash("a#b#c"), 1u);
  EXPECT_EQ(FindQuery("a?b"), 1u);
  EXPECT_EQ(FindLastHashMB("a#b#c"), 3u);
  EXPECT_EQ(FindLastBackslashMB("plain"), npos);
  EXPECT_EQ(FindLastBackslashMB("\\a\\\x95\\"), 4u);
  const CodePageScope page(932);
  EXPECT_EQ(FindLastBackslashMB("\\a\\\x95\\"), 2u);
  EXPECT_EQ(FindLastBackslashMB("\x95\\"), npos);
  EXPECT_EQ(FindChar("\x95\\", '\\'), 1u);
  // A lead byte before a lead byte takes it as its trail byte; one at the end stands alone.
  EXPECT_EQ(FindLastBackslashMB("\x95\x95\\\x95"), 2u);
}

TEST(MbString, ChangesLeaveDoubleByteCharactersAlone) {
  std::string text = "aZ[`{\x95z\xE9#";
  EXPECT_EQ(ToUpperMB(text), 0);
  EXPECT_EQ(text, "AZ[`{\x95Z\xE9#");
  EXPECT_EQ(ToLowerMB(text), 0);
  EXPECT_EQ(text, "az[`{\x95z\xE9#");
  const CodePageScope page(932);
  text = "a\x95z\xB1z\x83\\\\";
  EXPECT_EQ(ToUpperMB(text), 0);
  EXPECT_EQ(text, "A\x95z\xB1Z\x83\\\\");
  EXPECT_EQ(ReplaceCharMB(text, '\\', '/'), 0);
  EXPECT_EQ(text, "A\x95z\xB1Z\x83\\/");
  text.clear();
  EXPECT_EQ(ToLowerMB(text), 0);
}

// The trail bytes of some characters are letters; those are no two cases of one letter.
TEST(SiteName, ComparesDoubleByteCharactersWhole) {
  EXPECT_TRUE(platform::EqualButForCase("Home-\xE9", "hOME-\xE9"));
  EXPECT_FALSE(platform::EqualButForCase("home", "homes"));
  const CodePageScope page(932);
  EXPECT_TRUE(platform::EqualButForCase("\203AB", "\203Ab"));
  EXPECT_FALSE(platform::EqualButForCase("\203A", "\203a"));
  EXPECT_FALSE(platform::EqualButForCase("a\x83", "a\x84"));
  EXPECT_TRUE(IsSiteName("\x83\\"));
  EXPECT_FALSE(IsSiteName("\x83\\\\"));
}

TEST(FileType, IsThatOfTheLastExtension) {
  const struct {
    std::uint32_t type;
    std::initializer_list<const char*> names;
  } kCases[] = {
      {1, {"", "README", "file.", "archive.tar.gz", "photo.jpeg2", "dir.x\\file", "a.htm\\b", "."}},
      {2, {"index.HTML", "Index.Htm", "page.SHTML", "a.shtm", "http://h/x.html", ".htm"}},
      {4, {"styles.min.css"}},
      {0x10, {"photo.JPE", "a.jpg", "a.jpeg"}},
      {0x20, {"a.gif"}},
      {0x40, {"a.bmp"}},
      {0x80, {"a.png"}},
      {0x100, {"a.tif", "a.TIFF"}},
      {0x200, {"a.mid", "a.midi"}},
      {0x400, {"a.wav"}},
      {0x800, {"a.au"}},
      {0x1000, {"applet.class", "lib.jar"}},
      {0x2000, {"a.js"}},
      {0x10000, {"a.txt"}},
      {0x20000, {"a.csv"}},
      {0x40000, {"a.cdf"}},
      {0x80000, {"a.xbm"}},
      {0x100000, {"a.fpx"}},
      {0x200000, {"a.pcd"}},
      {0x400000, {"a.mif"}},
      {0x800000, {"a.dcm"}},
  };
  std::uint32_t all = 0;
  for (const auto& c : kCases) {
    all |= c.type;
    for (const char* name : c.names) EXPECT_EQ(ClassifyFileType(name), c.type) << name;
  }
  EXPECT_EQ(all, kAllFileTypes);
  EXPECT_EQ(all & 0x00C008, 0u);
}

TEST(FileType, ATrailByteIsNeitherADotNorALetter) {
  const CodePageScope page(932);
  EXPECT_EQ(ClassifyFileType("\x83\x67.htm"), FT_HTML);
  EXPECT_EQ(ClassifyFileType("a.\x83htm"), FT_OTHER);
  EXPECT_EQ(ClassifyFileType("a.ht\x83M"), FT_OTHER);
  // A lead byte swallows whatever follows it, a "." too.
  EXPECT_EQ(ClassifyFileType("a\x83.htm"), FT_OTHER);
}

// Values of the formula, worked out by hand.
TEST(ElfHash, FoldsTheTopFourBits) {
  static_assert(ElfHash("") == 0);
  static_assert(ElfHash("a") == 0x61);
  static_assert(ElfHash("ab") == 0x672);
  EXPECT_EQ(ElfHash("printf"), 0x077905a6u);
  EXPECT_EQ(ElfHash("exit"), 0x0006cf04u);
  EXPECT_EQ(ElfHash("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"), 0x10EFu);
}

TEST(Scramble, GroupsOfThreeBecomeFourCharacters) {
  const struct {
    std::string_view text, scrambled;
  } kCases[] = {{"", ""}, {"abc", "SQD^"}, {"a", "SZ"}, {"ab", "SQF"}, {"abcd", "SQD^TJ"}};
  for (const auto& c : kCases) {
    EXPECT_EQ(Scramble(c.text), c.scrambled);
    EXPECT_EQ(Unscramble(c.scrambled), c.text);
  }
}

TEST(Scramble, EveryTextComesBackAndNoBytesBreakTheInverse) {
  std::string text;
  for (int byte = 0; byte < 256; ++byte) {
    text += static_cast<char>(byte);
    EXPECT_EQ(Unscramble(Scramble(text)), text);
    EXPECT_LE(Unscramble(text).size(), text.size());
  }
  EXPECT_EQ(Unscramble("S"), "");
  EXPECT_EQ(Unscramble("SQD^T"), "abc");
}

}  // namespace
}  // namespace zvrsit
