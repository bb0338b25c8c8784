// Pages in double-byte code pages, whose trail bytes look like markup.
#include <gtest/gtest.h>

#include "dom/page.h"

namespace zvrsit::test {
namespace {

using Strings = std::vector<std::string>;

TEST(DoubleByte, TrailBytesAreNoMarkupInShiftJis) {
  CodePageScope page932(932);
  ASSERT_TRUE(page932.known());
  // 0x83 0x5C: a backslash; 0x81 0x5B and 0x5D: brackets; 0x83 0x61 and 0x41: letters.
  Page page(
      "<a href=\"\x83\x5C.htm\" name=\x83\x41>\x83\x41</a><\x83\x61 href=x>"
      "<a href='\x81\x5B&amp;\x81\x5D'><script><\x81/script></script><a HREF=2>");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"\x83\x5C.htm", "\x81\x5B&\x81\x5D", "2"}));
  EXPECT_EQ(page.Values("A", "NAME")[0], "\x83\x41");
  EXPECT_EQ(page.FirstText("A"), "\x83\x41");
  Page names("<b \x83\x61=1 \x83\x41=2>");
  EXPECT_EQ(names.First("B").attributes().getNamedItem("\x83\x41").value(), "2");
}

TEST(DoubleByte, ANameEndsBeforeADoubleByteCharacter) {
  CodePageScope page932(932);
  // Without masking, 0x83 0x48 "hr" and 0x83 0x61 would read as letters of a name.
  Page page("<a\x83\x61 href=1><a href\x83\x46=2 href=3><title>x</title\x83\x61</title>");
  EXPECT_EQ(page.Values("A", "HREF"), Strings{"3"});
  EXPECT_EQ(page.FirstText("TITLE"), "x</title\x83\x61");
}

TEST(DoubleByte, MarkupBytesAreTrailBytesInJohab) {
  CodePageScope page1361(1361);
  ASSERT_TRUE(page1361.known());
  // 0x88 is a lead byte; 0x3C, 0x3D and 0x3E are "<", "=" and ">".
  Page page(
      "<p>\x88<a href=no></p><a href=\x88>.htm><img alt\x88==1 src=2 alt=\x88\x3D>"
      "<title>\x88<b</title><!-- --\x88> --><a href='3'>");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"\x88>.htm", "3"}));
  EXPECT_EQ(page.Values("IMG", "SRC"), Strings{"2"});
  EXPECT_EQ(page.Values("IMG", "ALT"), Strings{"\x88\x3D"});
  EXPECT_EQ(page.FirstText("P"), "\x88<a href=no>");
  EXPECT_EQ(page.FirstText("TITLE"), "\x88<b");
}

// A broken character must not swallow the quote or the bracket behind it.
TEST(DoubleByte, ALeadByteAloneEndsWithItself) {
  CodePageScope page932(932);
  Page page("<a href=\"x\x83\"><b>\x83<a href='2'>\x83");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"x\x83", "2"}));
}

TEST(DoubleByte, OtherCodePagesAreNotMasked) {
  CodePageScope page1252(1252);
  ASSERT_TRUE(page1252.known());
  Page page("<a href='\x83\x5C' name=\xE9&eacute;&#x3042;>");
  EXPECT_EQ(page.Values("A", "HREF"), Strings{"\x83\x5C"});
  EXPECT_EQ(page.Values("A", "NAME"), Strings{"\xE9\xE9?"});
}

}  // namespace
}  // namespace zvrsit::test
