// Pages that would cost a parser its time, its stack or its memory. The bounds are generous: what
// is not linear here takes minutes.
#include <gtest/gtest.h>

#include <chrono>

#include "dom/page.h"

namespace zvrsit::test {
namespace {

constexpr double kSeconds = 20;

std::string Repeat(std::string_view piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  while (count-- > 0) text += piece;
  return text;
}

class Stopwatch {
 public:
  ~Stopwatch() {
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - begin_;
    EXPECT_LT(spent.count(), kSeconds);
  }

 private:
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

TEST(Limits, NestingCostsNothing) {
  for (const char* tag :
       {"<div>", "<a>", "<svg>", "<template>", "<svg><desc>", "<math><mi>", "<b><p><svg>"}) {
    Stopwatch watch;
    Page page(Repeat(tag, 300'000) + Repeat("</b></desc></template></svg></div>", 100'000));
    EXPECT_GE(page->elementCount(), 300'000u) << tag;
  }
}

TEST(Limits, AMillionAttributesOnOneTag) {
  Stopwatch watch;
  std::string html = "<a";
  for (int i = 0; i < 1'000'000; ++i) html += " x" + std::to_string(i) + "=1 href=2";
  html += ">";
  Page page(html);
  const AttributeList attributes = page.First("A").attributes();
  EXPECT_EQ(attributes.size(), 2'000'000u);
  EXPECT_EQ(attributes.getNamedItem("X999999").value(), "1");
  EXPECT_EQ(page->attributesNamed(Attr::kHref).size(), 1u);
}

// Each of these begins something that never ends, again and again.
TEST(Limits, UnfinishedMarkupIsReadOnce) {
  for (const std::string piece : {"<",
                                  "</",
                                  "<!--",
                                  "<!--->",
                                  "--!",
                                  "<![CDATA[",
                                  "]]>",
                                  "<!doctype ",
                                  "&",
                                  "&#",
                                  "&#x1",
                                  "&CounterClockwise",
                                  "<a b='",
                                  "<a b=",
                                  "<script><!--<script>",
                                  "</script",
                                  "<title></titl",
                                  "<svg><![CDATA[]]",
                                  "<textarea>",
                                  "<font ",
                                  "\r",
                                  "-->",
                                  "<plaintext"}) {
    Stopwatch watch;
    Page page(Repeat(piece, 2'000'000 / piece.size()));
    EXPECT_EQ(page.result, 0);
    for (const ElementAttribute& found : page->attributesNamed(Attr::kOther)) {
      found.attribute.value();
    }
  }
}

TEST(Limits, ALargePageIsGivenBackWhenItIsDeleted) {
  Stopwatch watch;
  const std::string html =
      Repeat("<p class=a>some text of a page <a href=\"b.htm\">b</a>\n", 400'000);
  DOM dom;
  Document* document = dom.createDocument("HTML");
  ASSERT_EQ(document->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true), 0);
  EXPECT_EQ(document->elementsOf(Tag::kA).size(), 400'000u);
  dom.deleteDocument(document);
  EXPECT_EQ(dom.createDocument("HTML")->text().data(), nullptr);
}

TEST(Limits, BinaryBytesAreAPageToo) {
  std::string bytes;
  for (int i = 0; i < 1'000'000; ++i) bytes += static_cast<char>(i * 7 ^ i >> 8);
  EXPECT_EQ(Page(bytes).result, 0);
  EXPECT_EQ(Page(std::string(1'000'000, '\0')).result, 0);
  Page page(std::string("<a\0b href\0=1 c=\0>\0<p \0>", 23));
  EXPECT_EQ(page->element(0).name(), std::string_view("a\0b", 3));
  EXPECT_EQ(page->element(0).attributes().item(1).value(), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace zvrsit::test
