// Seeded mutations of a page: whatever the bytes, nothing lies outside of the text, and the
// searches agree. Most of its worth is in the sanitizer build.
#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "dom/attr_table.h"
#include "dom/code_conv.h"
#include "dom/html_text.h"
#include "dom/page.h"
#include "dom/token_dump.h"

namespace zvrsit::test {
namespace {

constexpr std::string_view kPage =
    "<!DOCTYPE html PUBLIC \"-//W3C//DTD\" 'http://x'><html><head><meta charset=\"utf-8\">"
    "<title>A &amp; B</title><style>b{}</style><base href='/x/'></head><!-- c --><body a=b>"
    "<a href=\"x.htm?a=1&amp;b&notit;#c\" name=n>text &#x41;&#65; &NotEqualTilde;</a><img src=a "
    "ismap/><svg><title>t<![CDATA[ d ]]></title><a xlink:href=e /><foreignObject><p></svg>"
    "<script><!-- <script> </script> --></script><template><i></template><math><annotation-xml "
    "encoding=text/html><mi></math><textarea>f</textarea \r\n><plaintext>g";

constexpr std::string_view kPieces[] = {
    "<",        ">",          "/",           "=",
    "\"",       "'",          "&",           ";",
    "-",        "!",          "?",           "]",
    "\r",       "\n",         " ",           "\x83",
    "\x88",     "\xE9",       "<!",          "</",
    "-->",      "<!--",       "<![CDATA[",   "]]>",
    "<script>", "</script>",  "<svg>",       "&#",
    "</svg>",   "<title>",    "</title>",    "<font color>",
    "</p>",     "<template>", "</template>", std::string_view("\0", 1),
    " href=\"", " class=\"",  "</b>",        "<code id=\"i\" title=\"t\">"};

std::string Mutate(std::mt19937& random) {
  std::string text(kPage);
  const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
  for (std::size_t count = 1 + below(12); count > 0; --count) {
    const std::size_t at = below(text.size());
    switch (random() % 4) {
      case 0:
        text[at] = static_cast<char>(random());
        break;
      case 1:
        text.insert(at, kPieces[below(std::size(kPieces))]);
        break;
      case 2:
        text.erase(at, 1 + below(8));
        break;
      default:
        text.insert(below(text.size()), text.substr(at, below(60)));
    }
    if (text.empty()) text = "x";
  }
  return text.substr(0, below(8) == 0 ? below(text.size()) : text.size());
}

void ExpectInside(std::string_view part, std::string_view text) {
  if (part.empty()) return;
  ASSERT_GE(part.data(), text.data());
  ASSERT_LE(part.data() + part.size(), text.data() + text.size());
}

void CheckElement(const Document& document, const Element& element) {
  ASSERT_LT(element.offset(), document.text().size());
  ASSERT_EQ(document.text()[element.offset()], '<');
  ExpectInside(element.name(), document.text());
  const AttributeList attributes = element.attributes();
  for (std::size_t i = 0; i < attributes.size(); ++i) {
    const Attribute attribute = attributes.item(i);
    ASSERT_FALSE(attribute.name().empty());
    ExpectInside(attribute.name(), document.text());
    ExpectInside(attribute.rawValue(), document.text());
    ASSERT_TRUE(attributes.getNamedItem(attribute.name()));
    attribute.value();
  }
  const Node child = element.firstChild();
  if (child.isText()) ExpectInside(child.asText().rawData(), document.text());
  if (child.isElement()) {
    ASSERT_EQ(child.asElement().index(), element.index() + 1);
  }
}

void CheckDocument(Page& page) {
  ASSERT_EQ(page.result, 0);
  std::size_t listed = 0;
  for (std::size_t tag = 0; tag < kTagCount; ++tag) {
    std::int64_t last = -1;
    for (const std::uint32_t index : page->elementsOf(static_cast<Tag>(tag))) {
      ASSERT_GT(index, last);
      last = index;
      ++listed;
    }
  }
  std::size_t inTemplate = 0;
  for (std::uint32_t i = 0; i < page->elementCount(); ++i) {
    CheckElement(*page, page->element(i));
    inTemplate += page->element(i).inTemplate() ? 1 : 0;
  }
  ASSERT_EQ(listed + inTemplate, page->elementCount());
}

TEST(Mutation, EveryPageIsReadWithinItsText) {
  std::mt19937 random(20260101);
  for (const unsigned codePage : {65001u, 932u, 1361u}) {
    CodePageScope scope(codePage);
    Page page("");
    for (int round = 0; round < 3000; ++round) {
      const std::string text = Mutate(random);
      page.Read(text);
      CheckDocument(page);
      CodeConv conv;
      ASSERT_TRUE(conv.Import(text.data(), text.size(), 0));
      if (testing::Test::HasFatalFailure()) FAIL() << "code page " << codePage << "\n" << text;
      ASSERT_TRUE(Tokenize<DefaultSearch>(text) == Tokenize<PortableSearch>(text)) << text;
    }
  }
}

// Every search finds the first byte wherever it stands, and nothing behind the end.
TEST(Mutation, SearchesAgreeAtEveryOffset) {
  for (std::size_t length = 0; length < 80; ++length) {
    for (std::size_t at = 0; at <= length; ++at) {
      std::string text(length, 'x');
      if (at < length) text[at] = '<';
      const std::string padded = Padded(text);
      const char* end = padded.data() + length;
      for (const char* from = padded.data(); from <= padded.data() + at; ++from) {
        ASSERT_EQ(DefaultSearch::Byte(from, end, '<'), padded.data() + at);
        ASSERT_EQ(PortableSearch::Byte(from, end, '<'), padded.data() + at);
      }
    }
  }
}

// What stands behind a value does not count.
TEST(Mutation, OnlyTheBytesOfAValueDecideWhetherItIsDecoded) {
  for (const char special : {'&', '\r', '\0'}) {
    for (std::size_t length = 0; length < 40; ++length) {
      for (std::size_t at = 0; at < length + 16; ++at) {
        std::string text(length + 16, 'x');
        text[at] = special;
        const std::string padded = Padded(text);
        ASSERT_EQ(NeedsDecoding(std::string_view(padded).substr(0, length)), at < length);
      }
    }
  }
}

// Every byte in every place of every known name: only its other case names the same.
TEST(Mutation, NamesAreKnownInAnyCaseAndNoOthersAre) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  const auto check = [&](const std::string& known, auto&& isKnown) {
    for (std::size_t at = 0; at < known.size(); ++at) {
      for (int byte = 0; byte < 256; ++byte) {
        std::string name = known;
        name[at] = static_cast<char>(byte);
        ASSERT_EQ(isKnown(name), lower(name[at]) == known[at]) << name << " for " << known;
      }
    }
    ASSERT_FALSE(isKnown(known + '\0'));
    ASSERT_FALSE(isKnown('\0' + known));
  };
  for (std::size_t i = 1; i <= static_cast<std::size_t>(Tag::kMath); ++i) {
    const auto tag = static_cast<Tag>(i);
    check(std::string(TagName(tag)), [tag](const std::string& name) {
      return HtmlTagOfPadded(Padded(name).data(), name.size()) == tag && HtmlTagOf(name) == tag;
    });
  }
  for (std::size_t i = 1; i < kAttrCount; ++i) {
    const auto attr = static_cast<Attr>(i);
    check(std::string(AttrName(attr)), [attr](const std::string& name) {
      return AttrOfPadded(Padded(name).data(), name.size()) == attr && AttrOf(name) == attr;
    });
  }
}

}  // namespace
}  // namespace zvrsit::test
