#include "css/css_references.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace zvrsit {
namespace {

// "import a.css, image b.png, other c.woff"
std::string Listed(const std::vector<CssReference>& found) {
  std::string listed;
  for (const CssReference& reference : found) {
    constexpr const char* kNames[] = {"import ", "image ", "other "};
    if (!listed.empty()) listed += ", ";
    listed += kNames[static_cast<int>(reference.kind)] + reference.text;
  }
  return listed;
}

std::string References(std::string_view text, CssSource source = CssSource::kSheet) {
  std::vector<CssReference> found;
  CollectCssReferences(text, source, found);
  return Listed(found);
}

struct Case {
  const char* text;
  const char* references;
};

TEST(CssReferences, OfSheets) {
  const Case cases[] = {
      // Every form of an import, and what stands behind its address.
      {"@import 'a.css'; @import url(b.css); @import url( 'c.css' ) screen; @IMPORT src(\"d\")",
       "import a.css, import b.css, import c.css, import d"},
      {"@import 'a.css' layer(x) supports(background: url(no.png)) screen;", "import a.css"},
      {"@import/**/'a\\2e css';<!-- @import 'b.css'; -->", "import a.css, import b.css"},
      {"@import; @import url(); @import foo 'x'; @import foo('x'); @import url(a b); @import 'a",
       "import a"},
      {"@import url(var(--x) 'no');", ""},
      // Where an import may stand.
      {"@charset 'x'; @layer a, b; @import 'a'; @unknown x; @import 'b';", "import a, import b"},
      {"@import 'a'; @layer b; @import 'no';", "import a"},
      {"@layer a {} @import 'no';", ""},
      {"p {} @import 'no'; @import url(no);", ""},
      {"@media print { @import 'no'; }", ""},
      {"@font-face {} @import url(no);", ""},
      {"@-webkit-keyframes x {} @import url(no);", ""},
      {"@import url(no) { } @import 'a';", "import a"},
      {"} @import 'no'; p { content: url(a) } @import 'no';", "image a"},
      {";@import 'no';", ""},
      {"@import 'a';; @import 'no'; p {} q { content: url(b) }", "import a, image b"},
      {"@layer a;; @import 'no';", ""},
      // Images and others.
      {"p { background: red url(a.png), URL('b.png') } q { behavior: url(c.htc) }",
       "image a.png, image b.png, other c.htc"},
      {"@font-face { src: url(f.woff) format('woff'), local('no'), src('g') }",
       "other f.woff, other g"},
      {"p { -webkit-mask-box-image:url(a); LIST-STYLE:url(b); cursor:url(c),auto; content:url(d);"
       "filter:url(e.svg#f); --bg:url(g); --content:url(h); x-mask:url(i) }",
       "image a, image b, image c, image d, other e.svg#f, other g, other h, other i"},
      {"p { background: image-set('a.png' type('no') 1x, url(b.png) 2x), foo('no'), 'no' }",
       "image a.png, image b.png"},
      {"p { back\\67round : url(a\\.p\\6e g) }", "image a.png"},
      // Nesting, within values and of rules.
      {"@media a { p { color: url(a); q:hover { content: url(b) } content: url(c) } }",
       "other a, image b, image c"},
      {"p { --x: { content: url(a); }; content: url(b) }", "other a, image b"},
      {"@page { @top-left { content: url(a) } }", "image a"},
      // A bracket left open holds everything behind it.
      {"p { x: (url(a) } q { background: url(b) }", "other a, other b"},
      {"p { x: [url(a)) ; ] ; content: url(b)", "other a, image b"},
      // What is no reference.
      {"@namespace url(no); @supports (background: url(no)) { p { fill: url(#no) } } "
       "a[b=url(no)]{}",
       ""},
      {"p { /* url(no) */ x: 'url(no)'; background: url( ), url(no'), url(\"\"), url(\\23 no) }",
       ""},
      {"p { content: url('no\n); color: red }", ""},
      {"p { content: url(a", "image a"},
      {"}} p { content: url(a) } } q { content: url(b) }", "image a, image b"},
  };
  for (const Case& row : cases) EXPECT_EQ(References(row.text), row.references) << row.text;
}

TEST(CssReferences, OfStyleAttributes) {
  const Case cases[] = {
      {"background:url(a.png);;behavior:url('b')", "image a.png, other b"},
      {"content: url(a) } ; content: url(b)", "image a, image b"},
      {"@import 'no'; @x url(no); color: red", ""},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(References(row.text, CssSource::kDeclarations), row.references) << row.text;
  }
}

TEST(CssReferences, OfValues) {
  const Case cases[] = {
      {"url(a.svg#b) red", "other a.svg#b"},
      {" URL('a') , src(\"b\")", "other a, other b"},
      {"url(#b)", ""},
      {"url(no);", ""},
      {"red; fill: url(no)", ""},
  };
  for (const Case& row : cases) {
    std::vector<CssReference> found;
    CollectCssReferencesOfValue(row.text, "fill", found);
    EXPECT_EQ(Listed(found), row.references) << row.text;
    CollectCssReferencesOfValue("url(c)", "mask", found);
    EXPECT_EQ(found.back().kind, CssReferenceKind::kImage);
  }
}

TEST(CssReferences, AnyTextEndsInLinearTimeAndWithoutRecursion) {
  constexpr std::string_view kPieces[] = {"{",    "}",          "(",        ")",  "[", "]",
                                          "url(", "'",          "@import ", ";",  ":", "a",
                                          "--x:", "image-set(", "/*",       "*/", "\\"};
  std::mt19937 random(11);
  for (int round = 0; round < 5000; ++round) {
    std::string text;
    for (int i = 0; i < 40; ++i) text += kPieces[random() % std::size(kPieces)];
    References(text);
    References(text, CssSource::kDeclarations);
  }
  for (const std::string_view piece : kPieces) {
    std::string text = "p{";
    while (text.size() < 200'000) text += piece;
    References(text + "content:url(a)");
  }
}

}  // namespace
}  // namespace zvrsit
