#include "css/css_file_tree.h"

#include <gtest/gtest.h>

#include <string>

#include "css/css_control.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "platform/code_page.h"
#include "support/folder_link.h"
#include "support/padded.h"
#include "support/temp_folder.h"

namespace zvrsit {
namespace {

class CssFileTree : public testing::Test {
 protected:
  void SetUp() override {
    control_.SetObject(&dom_);
    Configure(LinkRules::Classic);
  }

  void Configure(LinkRules rules) {
    control_.ClearSiteOption();
    control_.SetSiteSaveDir(folder_.path("site") + "\\", "", "");
    control_.SetLinkRules(rules);
  }

  // "link a.css(image b.png, import c.css(...)), ..." for the children of a node.
  std::string Children(CCSSFileTree& tree, const std::string* node) {
    constexpr const char* kTypes[] = {"other ", "link ", "import ", "image "};
    std::string listed;
    for (const std::string* child = tree.getFirstChild(node); child != nullptr;
         child = tree.getNextSibling(child)) {
      if (!listed.empty()) listed += ", ";
      listed += kTypes[tree.getType(child)] + Relative(*child);
      if (tree.hasChildren(child)) listed += "(" + Children(tree, child) + ")";
    }
    return listed;
  }

  std::string OfPage(const std::string& html, const std::string& name = "site/p.htm") {
    Document* const page = dom_.createDocument("HTML");
    const std::string text = test::Padded(html);
    page->createNodesInPlace(text.data(), static_cast<int>(html.size()), true,
                             DocumentScope::kReferences);
    CCSSFileTree tree = control_.GetFileTree(folder_.path(name), page);
    const std::string listed = Children(tree, tree.getRoot());
    dom_.deleteDocument(page);
    return listed;
  }

  std::string OfSheet(const std::string& name) {
    CCSSFileTree tree = control_.GetFileTreeFromCSS(folder_.path(name));
    return Children(tree, tree.getRoot());
  }

  // Files of the site by their names below it, in the `/` form; others as they are.
  std::string Relative(std::string path) const {
    const std::string site = folder_.path("site") + "\\";
    if (path.compare(0, site.size(), site) == 0) path.erase(0, site.size());
    const std::string above = folder_.path() + "\\";
    if (path.compare(0, above.size(), above) == 0) path.replace(0, above.size(), "../");
    for (char& c : path) {
      if (c == '\\') c = '/';
    }
    return path;
  }

  test::TempFolder folder_;
  DOM dom_;
  CCSSControl control_;
};

TEST_F(CssFileTree, OfAPageHoldsItsLinksStylesAndStyleAttributes) {
  folder_.write("site/css/a.css", "@import 'b.css'; p { background: url(../i/1.gif) }");
  folder_.write("site/css/b.css", "@font-face { src: url(/f.woff) }");
  EXPECT_EQ(OfPage("<link rel=StyleSheet href='css/a.css'><link rel=icon href=x.ico>"
                   "<link rel=stylesheet><link rel=stylesheet href=''>"
                   "<style>@import url(css/b.css);\np{background:url(i/2.gif)}</style>"
                   "<style type=text/less>p{background:url(no.gif)}</style>"
                   "<template><style>p{background:url(no.gif)}</style></template>"
                   "<svg><style>p{cursor:url(i/3.cur)}</style></svg>"
                   "<p style='list-style:url(&#34;i/4.gif&quot;)'>"),
            "link css/a.css(import css/b.css(other f.woff), image i/1.gif), "
            "import css/b.css, image i/2.gif, image i/3.cur, image i/4.gif");
}

// An SVG style is made of its own texts and CDATA sections; comments and elements are no part of
// it.
TEST_F(CssFileTree, OfAPageHoldsWhatItsSvgRefersTo) {
  const std::string html =
      "<p fill='url(no.svg)'><svg mask='url(0)'><style>\n<![CDATA[ p{cursor:url(1)} ]]>"
      "<!-- p{cursor:url(no)} --> p{cursor:url(2&amp;)}</style><style type=x>p{cursor:url(no)}"
      "</style><style><!-- x --><g>p{cursor:url(no)}</g>p{cursor:url(3)}</style>p{cursor:url(no)}"
      "<style>p{cursor:url(5)} <style>p{cursor:url(6)}</style> p{cursor:url(7)}</style>"
      "<rect FILL='url(a.svg#b)' mask=url(4) "
      "clip-path='url(&quot;c&quot;)' stroke='url(#no)' filter='url(no);' marker='url(no)'/></svg>";
  const std::string styles = "image 1, image 2&, image 3, image 5, image 7, image 6";
  EXPECT_EQ(OfPage(html), styles);
  Configure(LinkRules::Web);
  EXPECT_EQ(OfPage(html), styles + ", image 0, other a.svg, image 4, other c");
}

// By the web rules: what a browser was seen to load.
TEST_F(CssFileTree, OfAPageIsWhatABrowserReads) {
  Configure(LinkRules::Web);
  const std::pair<const char*, const char*> cases[] = {
      {"<link rel=stylesheet type=text/less href=no><link rel=stylesheet type='' href=a>"
       "<link rel=stylesheet type=' TEXT/css;x=y' href=b>",
       "link a, link b"},
      {"<div><template ShadowRootMode=Open><link rel=stylesheet href=a><style>p{cursor:url(b)}"
       "</style><p style='cursor:url(c)'></template></div><template><div><template "
       "shadowrootmode=open><p style='cursor:url(no)'>",
       "link a, image b, image c"},
      {"<body><body style='cursor:url(a)'><body style='cursor:url(no)'>", "image a"},
      // What comes before a BASE is not taken from it, but for what is looked at last.
      {"<link rel=stylesheet href=a><style>@import 'b'</style><p style='cursor:url(c)'>"
       "<svg><g fill=url(d) /></svg><base href=x/><link rel=stylesheet href=a><p "
       "style='cursor:url(c)'>",
       "link a, link x/a, import b, image c, image x/c, other x/d"},
      {"<base href=x/><iframe srcdoc='<base href=y/><link rel=stylesheet href=a><style>p{cursor:"
       "url(b)}</style>'></iframe><p style='cursor:url(c)'><iframe srcdoc='<p style=cursor:url(d)>'"
       "></iframe>",
       "image x/c, link x/y/a, image x/y/b, image x/d"},
  };
  for (const auto& [html, listed] : cases) EXPECT_EQ(OfPage(html), listed) << html;
  Configure(LinkRules::Classic);
  EXPECT_EQ(OfPage(cases[1].first), "");
  EXPECT_EQ(OfPage(cases[4].first), "image c");
}

TEST_F(CssFileTree, ReferencesKeepHowTheyAreWritten) {
  folder_.write("site/a.css", "p { content: url(a\\ b.png), url(a\\ b.png), url(http://x/y.png) }");
  CCSSFileTree tree = control_.GetFileTreeFromCSS(folder_.path("site/a.css"));
  EXPECT_EQ(tree.getDeclaredText(tree.getRoot()), nullptr);
  const std::string* first = tree.getFirstChild(tree.getRoot());
  const std::string* second = tree.getNextSibling(first);
  ASSERT_NE(second, nullptr);  // the same reference again
  EXPECT_EQ(*second, folder_.path("site/a b.png"));
  EXPECT_EQ(*tree.getDeclaredText(second), "a b.png");
  const std::string* third = tree.getNextSibling(second);
  EXPECT_TRUE(tree.isExternal(third));
  EXPECT_EQ(*third, "http://x/y.png");
  EXPECT_EQ(tree.getNextSibling(third), nullptr);
}

TEST_F(CssFileTree, ReferencesTellWhereTheyStand) {
  folder_.write("site/a.css", "\xEF\xBB\xBFp { content: url(1.gif) }");
  folder_.write("site/b.css", "@charset \"latin1\";p { content: url(\xE4.gif) }");
  const std::string html =
      "<link rel=stylesheet href=a.css><link rel=stylesheet href=b.css>"
      "<style>\r\n@import 'c.css';</style><p style='cursor:url(c)'><p style='&#32;cursor:url(d)'>";
  folder_.write("site/p.htm", html);
  CCSSFileTree tree = control_.GetFileTree(folder_.path("site/p.htm"), nullptr);
  const std::string* node = tree.getFirstChild(tree.getRoot());
  EXPECT_EQ(tree.getOffset(tree.getRoot()), -1);
  EXPECT_EQ(tree.getOffset(tree.getFirstChild(node)), 3 + 13);
  for (const char* reference : {"a.css", "b.css", "'c.css'", "url(c)", "&#32;cursor"}) {
    EXPECT_EQ(tree.getOffset(node), static_cast<int>(html.find(reference))) << reference;
    node = tree.getNextSibling(node);
  }
  node = tree.getNextSibling(tree.getFirstChild(tree.getRoot()));
  EXPECT_EQ(tree.getOffset(tree.getFirstChild(node)), -1);  // the sheet had to be converted
}

// By the web rules the name of a page says how its text is read, also when the tree reads it.
TEST_F(CssFileTree, PagesFromTheDiskAreReadByTheirNames) {
  Configure(LinkRules::Web);
  for (const auto& [name, listed] : {std::pair("site/p.xhtml", "link a.css"), {"site/p.htm", ""}}) {
    folder_.write(name, "<title/><link rel='stylesheet' href='a.css'/>");
    CCSSFileTree tree = control_.GetFileTree(folder_.path(name), nullptr);
    EXPECT_EQ(Children(tree, tree.getRoot()), listed) << name;
  }
}

// Also where a link in the file system gives one sheet a new name on every way round.
TEST_F(CssFileTree, ImportCyclesEnd) {
  folder_.write("site/a.css", "@import 'b.css'; @import 'a.css';");
  folder_.write("site/b.css", "@import 'a.css'; @import 'b.css';");
  EXPECT_EQ(OfSheet("site/a.css"), "import b.css(import a.css, import b.css), import a.css");
  if (!test::LinkFolder(".", folder_.native("site/round"))) GTEST_SKIP() << "no links here";
  folder_.write("site/c.css", "@import 'round/c.css';");
  EXPECT_EQ(OfSheet("site/c.css"), "import round/c.css");
}

// Sheets that each import the next one twice would make a tree of 2^40 nodes.
TEST_F(CssFileTree, StaysLinearInItsSheets) {
  for (int i = 0; i < 40; ++i) {
    const std::string next = "'" + std::to_string(i + 1) + ".css';";
    folder_.write("site/" + std::to_string(i) + ".css", "@import " + next + "@import " + next);
  }
  EXPECT_LT(OfSheet("site/0.css").size(), 2000u);
}

TEST_F(CssFileTree, RulesDecideWhatIsExternalAndWhatIsRead) {
  folder_.write("out.css", "p { content: url(1.gif) }");
  const std::string html =
      "<base href='sub/'><link rel=stylesheet href='../out.css'>"
      "<style>p{ content: url(https://h/a.gif), url(//h/b.gif), url(data:,x), url(%61.gif), "
      "url(c/) }"
      "</style><p style='content:url(/d.gif)'>";
  EXPECT_EQ(OfPage(html),
            "link ../out.css(image ../1.gif), image https://h/a.gif, image /h/b.gif, "
            "image data:,x, image %61.gif, image c/, image d.gif");
  Configure(LinkRules::Web);
  EXPECT_EQ(OfPage(html),
            "link out.css, image https://h/a.gif, image //h/b.gif, "
            "image sub/a.gif, image sub/c/, image d.gif");
  EXPECT_EQ(OfPage("<link rel=stylesheet href='file:///x.css'><link rel=stylesheet href='q/x.css'>",
                   "site/../p.htm"),
            "link file:///x.css, link ../q/x.css");
}

// One page after another, of one folder and of others, with the same references.
TEST_F(CssFileTree, AReferenceIsTakenFromThePageAtHand) {
  const std::string link = "<link rel=stylesheet href=a.css><p style='content:url(/b.gif)'>";
  const std::string self = "<p style='content:url(?q),url(\" #x\"),url(a.css)'>";
  const std::string base = "<base href='x/y'>";
  for (const LinkRules rules : {LinkRules::Classic, LinkRules::Web}) {
    Configure(rules);
    const bool isWeb = rules == LinkRules::Web;
    EXPECT_EQ(OfPage(link), "link a.css, image b.gif");
    EXPECT_EQ(OfPage(link, "site/q.htm"), "link a.css, image b.gif");
    EXPECT_EQ(OfPage(link, "site/sub/p.htm"), "link sub/a.css, image b.gif");
    EXPECT_EQ(OfPage(base + link), isWeb ? "link x/a.css, image b.gif" : "link a.css, image b.gif");
    EXPECT_EQ(OfPage(link), "link a.css, image b.gif");
  }
  EXPECT_EQ(OfPage(self), "image p.htm, image p.htm, image a.css");
  EXPECT_EQ(OfPage(self, "site/q.htm"), "image q.htm, image q.htm, image a.css");
}

}  // namespace
}  // namespace zvrsit
