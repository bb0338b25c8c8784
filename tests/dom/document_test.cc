// Documents, also of double-byte code pages, whose trail bytes look like markup.
#include <gtest/gtest.h>

#include "dom/document.h"
#include "dom/page.h"
#include "support/padded.h"

namespace zvrsit::test {
namespace {

using Strings = std::vector<std::string>;

TEST(Document, FindsElementsInDocumentOrderInAnyCase) {
  Page page("<a HREF=1><p><A href='2'><Custom-Thing x><b><a name=n></p><custom-thing y>");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"1", "2", "-"}));
  EXPECT_EQ(page.Values("CUSTOM-THING", "X"), (Strings{"", "-"}));
  EXPECT_EQ(page.Values("OTHER", "X"), Strings());
  EXPECT_EQ(page.Values("IMG", "SRC"), Strings());
  EXPECT_EQ(page->elementsOf(Tag::kA).size(), 3u);
  EXPECT_EQ(page->elementCount(), 7u);
}

TEST(Document, AttributesKeepTheirPlaceAndDecodeOnDemand) {
  const std::string html =
      "<p>x</p><img alt = 'a&lt;b' SRC=\"p&amp;q.gif?a=1&copy=2\" ismap src=no>";
  Page page(html);
  const AttributeList attributes = page.First("IMG").attributes();
  ASSERT_EQ(attributes.size(), 4u);
  const Attribute src = attributes.find(Attr::kSrc);
  EXPECT_EQ(src.name(), "SRC");
  EXPECT_EQ(src.value(), "p&q.gif?a=1&copy=2");
  EXPECT_EQ(src.rawValue(), "p&amp;q.gif?a=1&copy=2");
  EXPECT_EQ(html.compare(src.valueOffset(), 3, "p&a"), 0);
  EXPECT_EQ(attributes.getNamedItem("ALT").value(), "a<b");
  EXPECT_TRUE(attributes.getNamedItem("ISMAP"));
  EXPECT_EQ(attributes.getNamedItem("ISMAP").value(), "");
  EXPECT_FALSE(attributes.getNamedItem("USEMAP"));
  EXPECT_EQ(page.First("IMG").offset(), html.find("<img"));
  EXPECT_EQ(page.First("IMG").name(), "img");
}

TEST(Document, FirstChildIsTheTextOrElementBehindTheStartTag) {
  EXPECT_EQ(Page("<title>A &amp; B\r\n<i></title>").FirstText("TITLE"), "A & B\n<i>");
  EXPECT_EQ(Page("<title></title>x").FirstText("TITLE"), "-");
  EXPECT_EQ(Page("<style>a&amp;b</style>").FirstText("STYLE"), "a&amp;b");
  EXPECT_EQ(Page("<title>open end").FirstText("TITLE"), "open end");
  EXPECT_EQ(Page("<a>1 < 2<b>").FirstText("A"), "1 < 2");
  EXPECT_EQ(Page("<a><!-- no --></a>").FirstText("A"), "-");
  EXPECT_EQ(Page("<svg><style><![CDATA[a&b]]></style>").FirstText("SVG"), "-");
  Page nested("<p><img>text");
  EXPECT_EQ(nested.First("P").firstChild().asElement(), nested.First("IMG"));
  EXPECT_FALSE(nested.First("IMG").firstChild());
  Page svg("<svg><style><![CDATA[a&amp;b]]></style></svg>");
  const Element style = svg->element(svg->elementsOf(Tag::kSvgStyle)[0]);
  EXPECT_EQ(style.firstChild().asText().data(true), "a&amp;b");
}

TEST(Document, RawTextHidesMarkupAndNoscriptDoesNot) {
  Page page(
      "<script>'<a href=1>'<!-- <script> </script> <a href=2> --></script>"
      "<textarea><a href=3></textarea><iframe><a href=4></iframe><xmp><a href=5></xmp>"
      "<noscript><a href=6></noscript><!-- <a href=7> --><style><a href=8></style x>"
      "<title><a href=9></title><a href=10><plaintext><a href=11>");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"6", "10"}));
}

TEST(Document, TemplateContentIsNotListed) {
  Page page(
      "<template><a href=1><template></template><img src=x></template><a href=2>"
      "<template><svg></template><a href=3></template><a href=4>");
  EXPECT_EQ(page.Values("A", "HREF"), (Strings{"2", "3", "4"}));
  EXPECT_EQ(page.Values("IMG", "SRC"), Strings());
  EXPECT_TRUE(page->element(1).inTemplate());
  EXPECT_EQ(page->attributesNamed(Attr::kHref).size(), 3u);
}

struct ForeignCase {
  const char* html;
  std::size_t htmlAnchors;
  std::size_t svgAnchors;
};

// An `a` is HTML or not by where it stands.
TEST(Document, SvgAndMathMlEndWhereBrowsersEndThem) {
  const ForeignCase cases[] = {
      {"<svg><a></a></svg><a>", 1, 1},
      {"<svg/><a>", 1, 0},
      {"<svg><g/><a/></svg><a>", 1, 1},
      {"<svg><g><p><a>", 1, 0},
      {"<div><svg></div><a>", 1, 0},
      {"<svg><foreignObject><a></a></foreignObject><a></svg><a>", 2, 1},
      {"<svg><foreignObject></svg><a>", 1, 0},
      {"<svg><foreignObject><svg></foreignObject><a>", 0, 1},
      {"<svg><title><a></title><a>", 2, 0},
      {"<svg><title><a></a></title><a>", 1, 1},
      {"<svg><svg></svg><a></svg><a>", 1, 1},
      {"<svg><title/><a>", 0, 1},
      {"<svg><font><a>", 0, 1},
      {"<svg><font color=red><a>", 1, 0},
      {"<svg><![CDATA[<a>]]><a></svg><![CDATA[<a>]]><a>", 1, 1},
      {"<svg><title><![CDATA[</title><a>]]></title></svg><p><![CDATA[<a>]]>", 0, 0},
      {"<math><mi><a></a></mi><a></math><a>", 2, 0},
      {"<math><annotation-xml><a></math>", 0, 0},
      {"<math><annotation-xml encoding='Text/HTML'><a></math>", 1, 0},
      {"<svg><script><a></script></svg><script><a></script>", 0, 1},
      {"<a></svg><svg></math><a>", 1, 1},
      {"<section><svg></section><a>", 1, 0},
      {"<my-icon-of-more-letters><svg></my-icon-of-more-letters><a>", 1, 0},
      {"<svg><my-icon></my-icon></font-face><a>", 0, 1},
      {"<svg><section></section><a></svg><a>", 1, 1},
      {"<svg><template><a></a></template><a></svg><a>", 1, 2},
      {"<div><template><svg><template></template></template><a>", 1, 0},
      {"<template><svg><template></template><a></svg></template><a>", 1, 0},
      {"<svg><form><![CDATA[<a>]]></form><a>", 0, 1},
      // An end tag that ends nothing in SVG ends HTML around it, if there is such an element.
      {"<svg></div><a>", 0, 1},
      {"<section></section><svg></section><a>", 0, 1},
      {"<svg></p><a>", 1, 0},
      {"<svg><g></br><a>", 1, 0},
      {"<div><svg><g></span><a></g></svg><a>", 1, 1},
      {"<a><svg></a><a>", 2, 0},
      {"<svg><path><path></svg><a>", 1, 0},
      {"<svg><script></img><g></script><a>", 0, 1},
      {"<template><div><svg></span><a></div></template><a>", 1, 0},
      {"<form><svg></form><a>", 0, 1},
      {"<b><p><i><svg></b><a>", 1, 0},
      {"<table><tr><td><svg><desc></td><a>", 1, 0},
      {"<svg><desc><table><p><table></table></desc><a>", 0, 1},
      {"<svg><desc><li><ul></li></ul></desc><a>", 1, 0},
      // MathML has an `svg` of its own.
      {"<math><svg><a></a></svg><mi><a>", 1, 0},
      {"<math><annotation-xml><mrow><svg><a>", 0, 0},
      {"<math><annotation-xml><svg><a></annotation-xml><svg><a></math><a>", 1, 1},
      // An HTML element that is open keeps its part of SVG open; its end tag may be missing.
      {"<svg><desc><p></desc><a>", 1, 0},
      {"<svg><desc><p>1<p>2</p></desc><a>", 0, 1},
      {"<svg><desc><b><p></b></desc><a>", 1, 0},
      {"<svg><foreignObject><ul><li><li></ul></foreignObject><a>", 0, 1},
      {"<svg><foreignObject><table><tr><td><td><tr></table><a></svg><svg><a>", 1, 1},
      {"<svg><foreignObject><div><svg></div></foreignObject><a>", 0, 1},
      {"<svg><foreignObject><div><svg></div><a>", 1, 0},
      {"<svg><desc><div></span></p></desc></svg></div></desc><a>", 0, 1},
  };
  for (const ForeignCase& row : cases) {
    Page page(row.html);
    EXPECT_EQ(page->elementsOf(Tag::kA).size(), row.htmlAnchors) << row.html;
    EXPECT_EQ(page->elementsOf(Tag::kSvgA).size(), row.svgAnchors) << row.html;
  }
}

TEST(Document, TextThatCannotBeReadLeavesItEmpty) {
  Page page("<a href=1>");
  const std::string text = "<b>";
  EXPECT_EQ(page->createNodes(nullptr, 3, nullptr, true), -1);
  EXPECT_EQ(page->elementCount(), 0u);
  EXPECT_EQ(page->createNodes(text.data(), -1, nullptr, true), -1);
  Node parent;
  EXPECT_EQ(page->createNodes(text.data(), 3, &parent, true), -1);
  EXPECT_EQ(page->createNodes(text.data(), 0, nullptr, true), 0);
  EXPECT_FALSE(page.First("A"));
  EXPECT_EQ(page->createNodes(text.data(), 2, nullptr, true), 0);
  EXPECT_EQ(page->elementCount(), 0u);
}

TEST(Dom, HandsTheMemoryOfADeletedDocumentToTheNext) {
  DOM dom;
  EXPECT_EQ(dom.createDocument("XML"), nullptr);
  EXPECT_EQ(dom.createDocument(nullptr), nullptr);
  Document* first = dom.createDocument("html");
  ASSERT_NE(first, nullptr);
  const std::string html = "<a href=1>";
  ASSERT_EQ(first->createNodes(html.data(), static_cast<int>(html.size()), nullptr, true), 0);
  const char* memory = first->text().data();
  EXPECT_EQ(dom.deleteDocument(first), 0);
  EXPECT_EQ(dom.deleteDocument(first), -1);
  EXPECT_EQ(dom.deleteDocument(nullptr), -1);
  Document* second = dom.createDocument("HTML");
  EXPECT_EQ(second->elementCount(), 0u);
  ASSERT_EQ(second->createNodes(html.data(), 3, nullptr, true), 0);
  EXPECT_EQ(second->text().data(), memory);
  EXPECT_EQ(second->elementCount(), 0u);
}

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

}  // namespace
}  // namespace zvrsit::test
