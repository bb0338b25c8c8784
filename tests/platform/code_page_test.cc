#include "platform/code_page_text.h"

#include <gtest/gtest.h>

#include "platform/utf8.h"
#include "support/code_page_scope.h"

namespace zvrsit::platform {
namespace {

using test::CodePageScope;
using namespace std::string_literals;

// The lead bytes of a page as ranges.
std::string LeadRanges() {
  std::string ranges;
  for (unsigned b = 0; b < 256; ++b) {
    const bool lead = LeadBytes()[b];
    char hex[4];
    std::snprintf(hex, sizeof hex, "%02X", b);
    if (lead && !LeadBytes()[b - 1]) ranges += (ranges.empty() ? "" : " ") + std::string(hex);
    if (lead && !LeadBytes()[b + 1]) ranges += "-" + std::string(hex);
  }
  return ranges;
}

TEST(CodePage, LeadBytesOfEveryPage) {
  const struct {
    unsigned page;
    const char* ranges;
  } kCases[] = {
      {932, "81-9F E0-FC"},        {936, "81-FE"}, {949, "81-FE"}, {950, "81-FE"},
      {1361, "84-D3 D8-DE E0-F9"}, {1252, ""},     {850, ""},      {65001, ""},
  };
  for (const auto& c : kCases) {
    const CodePageScope page(c.page);
    ASSERT_TRUE(page.known()) << c.page;
    EXPECT_EQ(CodePage(), c.page);
    EXPECT_EQ(LeadRanges(), c.ranges) << c.page;
    EXPECT_EQ(HasLeadBytes(), *c.ranges != '\0') << c.page;
  }
}

TEST(CodePage, AnUnknownPageChangesNothing) {
  const CodePageScope page(932);
  for (const unsigned unknown : {0u, 1u, 28602u, 1200u, 54936u, 65000u})
    EXPECT_EQ(SetCodePage(unknown), -1);
  EXPECT_EQ(CodePage(), 932u);
  EXPECT_TRUE(HasLeadBytes());
}

// Every page has ASCII where ASCII is, and nothing else becomes ASCII but the "?" of what it lacks:
// a yen or won sign that became a `\` would be a separator.
TEST(CodePage, OnlyAsciiBecomesAscii) {
  for (const unsigned number : {932u, 936u, 949u, 950u, 1361u, 437u, 874u, 1252u, 1258u, 28605u}) {
    const CodePageScope page(number);
    for (char32_t c = 0; c < 0x11000; ++c) {
      std::string out;
      AppendCodePoint(out, c);
      if (c < 0x80) {
        ASSERT_EQ(out, std::string(1, static_cast<char>(c))) << number;
        ASSERT_EQ(ToUtf8(out), out) << number;
      } else if (out != "?") {
        ASSERT_GE(static_cast<unsigned char>(out[0]), 0x80) << number << ' ' << +c;
        ASSERT_EQ(out.size(), IsDbcsLeadByte(static_cast<unsigned char>(out[0])) ? 2u : 1u);
      }
    }
  }
}

TEST(CodePage, CodePointsAreWrittenInThePage) {
  const struct {
    unsigned page;
    char32_t codePoint;
    std::string bytes;
  } kCases[] = {
      {65001, 0xE9, "\xC3\xA9"},
      {65001, 0x1F600, "\xF0\x9F\x98\x80"},
      {65001, 0xD800, "\xEF\xBF\xBD"},
      {65001, 0x110000, "\xEF\xBF\xBD"},
      {932, 0x8868, "\x95\\"},
      {932, 0xFF71, "\xB1"},
      {932, 0xE9, "?"},
      {936, 0x4E2D, "\xD6\xD0"},
      {949, 0xD55C, "\xC7\xD1"},
      {950, 0x4E2D, "\xA4\xA4"},
      {1361, 0xAC00, "\x88\x61"},
      {1252, 0x20AC, "\x80"},
      {1252, 0x81, "\x81"},
      {1252, 0x3042, "?"},
      {1251, 0x416, "\xC6"},
      {1252, 0x1F600, "?"},
  };
  for (const auto& c : kCases) {
    const CodePageScope page(c.page);
    std::string out = "a";
    AppendCodePoint(out, c.codePoint);
    EXPECT_EQ(out, "a" + c.bytes) << c.page << ' ' << +c.codePoint;
  }
}

TEST(Convert, LabelsOfTheWebAreDecoded) {
  const struct {
    const char* label;
    std::string bytes, utf8;
  } kCases[] = {
      {" UTF8\n", "\xC3\xA9", "\u00E9"},
      {"iso-8859-1", "\x80\xE9\x81", "\u20AC\u00E9\u0081"},
      {"ascii", "\xE9", "\u00E9"},
      {"Shift_JIS", "\x95\\\xB1 \x80", "\u8868\uFF71 \u0080"},
      {"x-sjis", "\x87\x40", "\u2460"},
      {"EUC-JP", "\xC9\xBD<\x8E\xB1\xAD\xA1\xF3\xFE\x8F\xB0\xA1",
       "\u8868<\uFF71\u2460\u9FA0\u4E02"},
      {"iso-2022-jp", "\x1B$BI=\x1B(B!\x1B(J\\~\x1B$@\"!\x1B(B\n", "\u8868!\u00A5\u203E\u25C6\n"},
      {"gb2312", "\xD6\xD0\x80", "\u4E2D\u20AC"},
      {"big5", "\xA4\xA4", "\u4E2D"},
      {"ks_c_5601-1987", "\xC7\xD1\x8C\x63", "\uD55C\uB620"},
      {"koi8-u", "\xC1\xAE", "\u0430\u045E"},
      {"macintosh", "\xDB\xF0", "\u20AC\uF8FF"},
      {"windows-1255", "\xE0\xCA", "\u05D0\u05BA"},
      {"iso-8859-9", "\xFD", "\u0131"},
      {"windows-874", "\xA1", "\u0E01"},
      {"x-user-defined", "a\x80", "a\uF780"},
      {"utf-16", "a\0\x3D\xD8\x00\xDE\x3D\xD8"s, "a\U0001F600\uFFFD"},
      {"utf-16be", "\0a\0"s, "a\uFFFD"},
  };
  for (const auto& c : kCases) {
    std::string out = "old";
    EXPECT_TRUE(ConvertToCodePage(c.bytes, c.label, out)) << c.label;
    EXPECT_EQ(out, c.utf8) << c.label;
  }
}

// FNV-1a over the code points of all pairs from 0x80 on, each between `prefix` and `suffix`. The
// sums are those of the decoders of a browser.
std::uint32_t SumOf(const char* label, const std::string& prefix, unsigned first, unsigned last,
                    unsigned second) {
  std::uint32_t sum = 0x811C9DC5;
  const auto add = [&sum](unsigned byte) { sum = (sum ^ byte) * 0x01000193; };
  for (unsigned lead = first; lead <= last; ++lead) {
    for (unsigned trail = second; trail <= (second == 0 ? 0xFF : last); ++trail) {
      const std::string bytes = prefix + static_cast<char>(lead) + static_cast<char>(trail) + '!';
      std::string out;
      EXPECT_TRUE(ConvertToCodePage(bytes, label, out));
      for (std::string_view rest = out; !rest.empty();) {
        const Utf8Step step = DecodeUtf8(rest);
        for (int shift = 0; shift < 24; shift += 8) add(step.codePoint >> shift & 0xFF);
        rest.remove_prefix(step.length);
      }
      add(0xFF);
    }
  }
  return sum;
}

TEST(Convert, EveryPairMeansWhatTheStandardSays) {
  EXPECT_EQ(SumOf("shift_jis", "", 0x80, 0xFF, 0), 0x1B4D99EAu);
  EXPECT_EQ(SumOf("gbk", "", 0x80, 0xFF, 0), 0x33BAE1F6u);
  EXPECT_EQ(SumOf("big5", "", 0x80, 0xFF, 0), 0x3F5E34F8u);
  EXPECT_EQ(SumOf("euc-kr", "", 0x80, 0xFF, 0), 0x44B9C429u);
  EXPECT_EQ(SumOf("euc-jp", "", 0x80, 0xFF, 0), 0xE2C7EAD9u);
  EXPECT_EQ(SumOf("euc-jp", "\x8F", 0xA1, 0xFE, 0xA1), 0x2B757CF8u);
  EXPECT_EQ(SumOf("iso-2022-jp", "\x1B$B", 0x21, 0x7E, 0x21), 0x39CDCF72u);
  EXPECT_EQ(SumOf("iso-2022-jp", "\x1B(I", 0, 0xFF, 0), 0x31273BE1u);
}

TEST(Convert, AnUnknownLabelIsToldAndTouchesNothing) {
  std::string out = "old";
  for (const char* label : {"", " ", "utf-7", "hz-gb-2312", "latin", "utf-8 utf8"}) {
    EXPECT_FALSE(ConvertToCodePage("x", label, out)) << label;
  }
  EXPECT_EQ(out, "old");
}

// Markup behind a cut double-byte character is kept.
TEST(Convert, MalformedPartsAreReplaced) {
  const struct {
    const char* label;
    std::string bytes, utf8;
  } kCases[] = {
      {"shift_jis", "a\x81<p>", "a\uFFFD<p>"},
      {"shift_jis", "\x81", "\uFFFD"},
      {"euc-kr", "\xA2\xFE\n\n", "\uFFFD\n\n"},
      {"gbk", "\xFF\x41", "\uFFFD\x41"},
      {"windows-1253", "\xD2z", "\uFFFDz"},
      {"euc-jp", "\xC9<\xA9\xA1<\x8E<\xFF\xFF\x8F\xB0", "\uFFFD<\uFFFD<\uFFFD<\uFFFD\uFFFD\uFFFD"},
      {"iso-2022-jp", "\x1B$BI\n\x1B(B\xFF<", "\uFFFD\uFFFD<"},
      {"iso-2022-jp", "\x1B$BI\x1B(B<\x0E\x1B(I1\x60\x1B(J\x1B(B\x1Bx",
       "\uFFFD<\uFFFD\uFF71\uFFFD\uFFFD\uFFFDx"},
      {"shift_jis", "\xA0\xFD\x81\x20\x81\xFF", "\uFFFD\uFFFD\uFFFD \uFFFD"},
      {"gb18030", "\x81\x30\x81\x41\x81\x30\xFF\x84\x31\xA5\x30\xFE\x39",
       "\uFFFD0\u4E04\uFFFD0\uFFFD\uFFFD\uFFFD"},
      {"gb18030", "<\x82\x35\x90\x37\x84\x31\x83\x35\x81\x30\x89\x38\x95\x32\x82\x36>",
       "<\u9FB4\uFE19\u00DF\U00020000>"},
      {"euc-jp", "\x8F\xA1\x41\x8F\xA1\xFF\xA0\x80", "\uFFFDA\uFFFD\uFFFD\uFFFD"},
      {"utf-8", "\xE2\x82z\xF0\x9F\x98", "\uFFFDz\uFFFD"},
      {"utf-8", "\xED\xA0\x80\xC0\xAF", "\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"utf-8", "\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& c : kCases) {
    std::string out;
    EXPECT_TRUE(ConvertToCodePage(c.bytes, c.label, out));
    EXPECT_EQ(out, c.utf8) << c.label;
  }
  const CodePageScope page(932);
  std::string out;
  EXPECT_TRUE(ConvertToCodePage("\xE8\xA1\xA8\xFF\xC3\xA9", "utf-8", out));
  EXPECT_EQ(out, "\x95\\??");
  EXPECT_EQ(ToUtf8(out), "\u8868??");
}

TEST(Utf8, ValidityIsThatOfEveryEncodedCodePoint) {
  std::string all;
  for (char32_t c = 0; c < 0x110000; ++c) {
    if (c < 0xD800 || c > 0xDFFF) AppendUtf8(all, c);
  }
  EXPECT_TRUE(IsValidUtf8(all));
  std::string repaired;
  AppendUtf8Repaired(repaired, all);
  EXPECT_EQ(repaired, all);
}

// A bad byte is found wherever it stands in the blocks that are looked at together.
TEST(Utf8, OneBadByteIsFoundAnywhere) {
  for (std::size_t length = 1; length < 100; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      std::string text(length, 'x');
      text[at] = '\x80';
      ASSERT_FALSE(IsValidUtf8(text)) << length << ' ' << at;
      ASSERT_EQ(AsciiPrefix(text), at);
    }
  }
  EXPECT_TRUE(IsCodePageUtf8("Utf-8"));
  EXPECT_FALSE(IsCodePageUtf8("latin1"));
}

}  // namespace
}  // namespace zvrsit::platform
