#include "links/extractor.h"

#include <gtest/gtest.h>

#include <sstream>

#include "dom/document.h"
#include "links/html_values.h"
#include "support/padded.h"

namespace zvrsit {
namespace {

class Extractor : public testing::Test {
 protected:
  // The rows of a page, which are the same when only its references are kept.
  PageRows& Extract(const std::string& html, LinkRules rules = LinkRules::Web) {
    const int length = static_cast<int>(html.size());
    const std::string padded = test::Padded(html);
    EXPECT_EQ(document_.createNodesInPlace(padded.data(), length, true, DocumentScope::kReferences),
              0);
    ExtractPage(document_, rules, rows_);
    const std::string ofReferences = AllOf(rows_);
    EXPECT_EQ(document_.createNodes(html.data(), length, nullptr, true), 0);
    ExtractPage(document_, rules, rows_);
    EXPECT_EQ(AllOf(rows_), ofReferences) << html;
    return rows_;
  }

  static std::string AllOf(const PageRows& rows) {
    std::ostringstream all;
    all << rows.hasTitle << rows.title << '\n';
    for (const PageBase& base : rows.parts.bases()) all << base.around << base.href << '\n';
    for (const MetaRow& meta : rows.metas) {
      all << static_cast<int>(meta.key) << ' ' << meta.offset << ' ' << meta.content << '\n';
    }
    for (const LinkRow& row : rows.links) {
      all << row.type << ' ' << row.offset << ' ' << row.target << ' ' << row.alternative << ' '
          << row.withAlternative << row.ofSameElement << row.base << '\n';
    }
    all << rows.anchorLinks;
    for (const std::string_view anchor : rows.anchors) all << '\n' << anchor;
    return all.str();
  }

  // One line a row: the type without its "LT_", the target, and the alternative text if stored.
  std::string Links(const std::string& html, LinkRules rules = LinkRules::Web) {
    std::string lines;
    for (const LinkRow& row : Extract(html, rules).links) {
      lines += std::string(LinkTypeName(row.type)).substr(3) + ' ' + std::string(row.target);
      if (row.withAlternative) lines += " [" + std::string(row.alternative) + "]";
      lines += '\n';
    }
    return lines;
  }
  std::string ClassicLinks(const std::string& html) { return Links(html, LinkRules::Classic); }

  Document document_;
  PageRows rows_;
};

// The rows come in the order of the kinds, not of the page.
TEST_F(Extractor, ReadsTheClassicReferencesInTheirOrder) {
  const std::string page = R"(
      <applet code=A.class archive=a.jar></applet><form action=f.cgi></form><embed src=e.mid>
      <script src=s.js></script><area href=ar.htm><input src=in.gif alt="I&amp;O"><input src=x.gif>
      <th background=th.gif><td background=td.gif><tr background=tr.gif><table background=ta.gif>
      <body background=b.gif><frame src=fr.htm><link href=l.htm rel=next>
      <link rel=StyleSheet href=no.css><link rel="alternate stylesheet" href=alt.css>
      <img src=1.gif alt=One><img src=2.gif ismap><img src=3.gif ismap usemap=#m mapfile=no.map>
      <img src=4.gif ismap mapfile=4.map><img src=5.gif mapfile=no.map><img alt=none>
      <a href=a.htm>x</a><a>y</a><A HREF="b.htm?q=1&amp;r=2#z">
      <iframe src=w.htm></iframe><video src=w.mp4></video>)";
  EXPECT_EQ(ClassicLinks(page),
            "ANCHOR a.htm\nANCHOR b.htm?q=1&r=2#z\n"
            "IMG 1.gif [One]\nIMG_ISMAP 2.gif []\nIMG_USEMAP 3.gif []\nIMG_ISMAP 4.gif []\n"
            "IMG_MAPFILE 4.map\nIMG 5.gif []\n"
            "LINK l.htm\nLINK alt.css\nFRAME fr.htm\n"
            "BODY_BACKGROUND b.gif\nTABLE_BACKGROUND ta.gif\nTR_BACKGROUND tr.gif\n"
            "TD_BACKGROUND td.gif\nTH_BACKGROUND th.gif\n"
            "INPUT in.gif [I&O]\nINPUT x.gif []\nAREA ar.htm\nSCRIPT s.js\nEMBED e.mid\n"
            "FORM f.cgi\nAPPLET a.jar\n");
  EXPECT_EQ(rows_.anchorLinks, 2U);
}

TEST_F(Extractor, JoinsAnAppletToItsCodeBase) {
  const auto applet = [this](const std::string& attributes) {
    return ClassicLinks("<applet " + attributes + ">");
  };
  EXPECT_EQ(applet("code=A.class codebase=c"), "APPLET c/A.class\n");
  EXPECT_EQ(applet("code=A.class codebase=c/"), "APPLET c/A.class\n");
  EXPECT_EQ(applet("code=/A.class codebase=c"), "APPLET c/A.class\n");
  EXPECT_EQ(applet("code=/A.class codebase=c/"), "APPLET c/A.class\n");
  EXPECT_EQ(applet("code=A.class codebase=''"), "APPLET /A.class\n");
  EXPECT_EQ(applet("codebase=c object=o"), "");
  EXPECT_EQ(Links("<applet code=A.class codebase=''>"), "APPLET A.class\n");
}

TEST_F(Extractor, ReadsWhatABrowserLoadsToo) {
  EXPECT_EQ(Links(R"(<iframe src=i.htm></iframe><object data=o.svg></object>
      <video src=v.mp4 poster=v.png><track src=v.vtt><source src=v.webm></video>
      <audio src=a.ogg></audio><embed src=e.pdf>
      <picture><source srcset="p1.png 1x, p2.png 2x"><img src=p.png srcset="p.png,q.png 640w">
      </picture><link rel=preload as=image imagesrcset="r.png">
      <button formaction=go.cgi></button><input formaction=in.cgi>
      <link rel=icon href=i.ico>)"),
            "IMG p.png []\nLINK i.ico\nEMBED e.pdf\nIFRAME i.htm\nOBJECT o.svg\nMEDIA v.mp4\n"
            "MEDIA v.png\nMEDIA a.ogg\nMEDIA v.webm\nMEDIA v.vtt\nSRCSET p.png,q.png\n"
            "SRCSET p1.png\nSRCSET p2.png\nSRCSET r.png\nFORMACTION go.cgi\nFORMACTION in.cgi\n");
}

TEST_F(Extractor, TellsSvgFromHtml) {
  const std::string page = R"(<svg><title>Drawing</title><a href=sa.htm xlink:href=no.htm></a>
      <a xlink:href=xa.htm></a><use href="#here"></use><use xlink:href="icons.svg#i"></use>
      <image href=im.png></image><script href=s.js></script><a name=no></a></svg>
      <title>Page</title><image src=old.gif>)";
  EXPECT_EQ(Links(page),
            "IMG old.gif []\nSVG sa.htm\nSVG xa.htm\nSVG icons.svg#i\nSVG im.png\nSVG s.js\n");
  EXPECT_EQ(rows_.title, "Page");
  EXPECT_TRUE(rows_.anchors.empty());
  EXPECT_EQ(ClassicLinks(page), "IMG old.gif []\n");
}

TEST_F(Extractor, CountsNoscriptAndNotTemplateOrComment) {
  EXPECT_EQ(Links("<noscript><img src=n.gif></noscript><template><a href=t.htm></a><base "
                  "href=/t/></template><!-- <a href=c.htm> --><script>'<a href=s.htm>'</script>"),
            "IMG n.gif []\n");
  EXPECT_TRUE(rows_.parts.bases().empty());
}

TEST_F(Extractor, ReadsTitleAndAnchors) {
  Extract("<title><b></title><title> A &amp;\n B </title><a name=x><a name=''><a NAME='y&lt;'>");
  EXPECT_EQ(rows_.title, "<b>");
  ASSERT_EQ(rows_.anchors.size(), 2U);
  EXPECT_EQ(rows_.anchors[1], "y<");
  const std::string page = "<title></title><title> A &amp;\n B </title>";
  EXPECT_EQ(Extract(page).title, "A & B");
  EXPECT_EQ(Extract(page, LinkRules::Classic).title, " A &\n B ");
  EXPECT_FALSE(Extract("<title></title><p>").hasTitle);
}

TEST_F(Extractor, ReadsMetaProperties) {
  const std::string page = R"(<meta name=Keywords content=one><meta name=KEYWORDS content=two>
      <meta http-equiv=Content-Type name=keywords content=t><meta content=alone>
      <meta name=description><meta name=description content=""><meta name=author content=x>
      <meta name=refresh content="1;url=n.htm"><meta http-equiv=REFRESH content="1;url=r.htm">)";
  const auto metas = [this] {
    std::string lines;
    for (const MetaRow& meta : rows_.metas) {
      lines += std::to_string(static_cast<int>(meta.key)) + ' ' + std::string(meta.content) + '\n';
    }
    return lines;
  };
  Extract(page, LinkRules::Classic);
  EXPECT_EQ(metas(), "3 one\n3 two\n5 t\n6 1;url=n.htm\n6 1;url=r.htm\n");
  Extract(page);
  EXPECT_EQ(metas(), "3 one\n3 two\n5 t\n6 r.htm\n");
}

// "IMG a.gif" with the bases that the target is taken from behind it, the outermost first.
TEST_F(Extractor, TellsWhatAReferenceIsTakenFrom) {
  const auto links = [this](const std::string& html) {
    std::string lines;
    for (const LinkRow& row : Extract(html).links) {
      lines += std::string(LinkTypeName(row.type)).substr(3) + ' ' + std::string(row.target);
      rows_.parts.ForEachBase(row.base, [&](const std::string& href) { lines += " < " + href; });
      lines += '\n';
    }
    return lines;
  };
  EXPECT_EQ(links("<a href=1><img src=2><object data=3></object><base target=t><base href=x/>"
                  "<base href=no/><a href=4><img src=5>"),
            "ANCHOR 1 < x/\nANCHOR 4 < x/\nIMG 2\nIMG 5 < x/\nOBJECT 3 < x/\n");
  EXPECT_EQ(links("<base href=''><base href=no/><a href=1>"), "ANCHOR 1\n");
  EXPECT_EQ(
      links("<iframe srcdoc='<a href=1>'></iframe><base href=x/><iframe src=no srcdoc='<base "
            "href=y/><title>no</title><a name=no href=2><iframe srcdoc=&quot;<img src=3>&quot;"
            ">'></iframe>"),
      "ANCHOR 1\nANCHOR 2 < x/ < y/\nIMG 3 < x/ < y/\n");
  EXPECT_FALSE(rows_.hasTitle);
  EXPECT_TRUE(rows_.anchors.empty());
}

// Row by row what a browser was seen to load, or not.
TEST_F(Extractor, LeavesOutWhatABrowserDoesNotFollow) {
  const std::pair<const char*, const char*> cases[] = {
      {"<table><thead background=1><tbody background=2><tfoot background=3></table>",
       "TABLE_BACKGROUND 1\nTABLE_BACKGROUND 2\nTABLE_BACKGROUND 3\n"},
      {"<a href=1 ping=' 2\n3 '><area ping='4&amp;'>",
       "ANCHOR 1\nFORMACTION 2\nFORMACTION 3\nFORMACTION 4&\n"},
      {"<body><body background=1><body background=no>", "BODY_BACKGROUND 1\n"},
      {"<form action=1><form action=no></form><form action=2></form><form><form action=no>"
       "<template><form action=no></template></form></form><form action=3>",
       "FORM 1\nFORM 2\nFORM 3\n"},
      {"<form><svg></form></svg><form action=1></form>", "FORM 1\n"},
      {"<script type=' Text/JScript ' src=1></script><script type='' src=2></script><script "
       "type=MODULE src=3></script><script language=JavaScript1.2 src=4></script><script language="
       "'' src=5></script>",
       "SCRIPT 1\nSCRIPT 2\nSCRIPT 3\nSCRIPT 4\nSCRIPT 5\n"},
      {"<script type=text/template src=no></script><script language=vbscript src=no></script>"
       "<script type='text/javascript;x=y' src=no></script><script type=importmap src=no></script>"
       "<script type=' ' src=no></script><svg><script type=x/y href=no /></svg>",
       ""},
      {"<div><template shadowrootmode=open><img src=1><base href=no><a name=no><title>no</title>"
       "<template><img src=no></template></template><template shadowrootmode=open><img src=no>"
       "</template></div><template><p><template shadowrootmode=open><img src=no></template>"
       "</template><template shadowrootmode=x><img src=no></template>",
       "IMG 1 []\n"},
      // Of which elements a template can be the shadow root, one of each.
      {"<head><template shadowrootmode=open><img src=no></template><body>"
       "<ul><li><template shadowrootmode=open><img src=no></template></ul>"
       "<a><template shadowrootmode=open><img src=no></template></a>"
       "<my-el class=x><b>x</b><template shadowrootmode=OPEN><img src=1></template></my-el>"
       "<div><p>x<ul></ul><template shadowrootmode=closed><img src=2></template></div>"
       "<table><td><template shadowrootmode=open><img src=no></template></table>"
       "<template shadowrootmode=open><img src=3></template>",
       "IMG 1 []\nIMG 2 []\nIMG 3 []\n"},
  };
  for (const auto& [html, rows] : cases) {
    EXPECT_EQ(Links(html), rows) << html;
    EXPECT_FALSE(rows_.hasTitle);
    EXPECT_TRUE(rows_.parts.bases().empty());
    EXPECT_TRUE(rows_.anchors.empty());
  }
  EXPECT_EQ(ClassicLinks(cases[1].first), "ANCHOR 1\n");
  EXPECT_EQ(ClassicLinks(cases[2].first), "BODY_BACKGROUND 1\nBODY_BACKGROUND no\n");
  EXPECT_EQ(ClassicLinks("<form action=1><form action=2>"), "FORM 1\nFORM 2\n");
  EXPECT_EQ(ClassicLinks("<script type=x src=1></script>"), "SCRIPT 1\n");
  EXPECT_EQ(ClassicLinks(cases[7].first), "");
}

// Decoded values lie in blocks of memory that the next page takes over.
TEST_F(Extractor, KeepsDecodedValuesApart) {
  for (int page = 0; page < 3; ++page) {
    std::string html;
    for (int i = 0; i < 3000; ++i) {
      html += "<a href='&#" + std::to_string('a' + i % 26) + ";" + std::string(i % 97, 'x') + "'>";
    }
    html += "<a href='&amp;" + std::string(200000, 'y') + "'>";
    Extract(html);
    ASSERT_EQ(rows_.links.size(), 3001U);
    for (int i = 0; i < 3000; ++i) {
      ASSERT_EQ(rows_.links[i].target,
                std::string(1, static_cast<char>('a' + i % 26)) + std::string(i % 97, 'x'));
    }
    EXPECT_EQ(rows_.links[3000].target, '&' + std::string(200000, 'y'));
  }
}

TEST(HtmlValues, SplitsImageCandidates) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {" , ", ""},
      {"a.png", "a.png|"},
      {"a.png 1x, b.png 2.5x", "a.png|b.png|"},
      {"a.png,b.png 2x", "a.png,b.png|"},
      {"a.png, b.png,, c.png", "a.png|b.png|c.png|"},
      {"data:,x 1x, b.png 320w 200h", "data:,x|b.png|"},
      {"a.png f(1,2), b.png", "b.png|"},
      {"a.png 0w, b.png -1x, c.png 1e2x, d.png 5q, e.png 7h, f.png 1x 2w", "c.png|"},
      {"a.png 1x (", ""},
      {"a.png 1zx, b.png 1e-1x", "b.png|"},
  };
  for (const auto& [srcset, expected] : cases) {
    std::vector<std::string_view> urls;
    AppendImageCandidates(srcset, urls);
    std::string joined;
    for (const std::string_view url : urls) joined.append(url).append("|");
    EXPECT_EQ(joined, expected) << srcset;
  }
}

TEST(HtmlValues, FindsTheTargetOfARefresh) {
  const std::pair<const char*, const char*> cases[] = {
      {"0;url=a.htm", "a.htm"},
      {" 5.5 , URL = 'a b.htm' x", "a b.htm"},
      {"3 a.htm", "a.htm"},
      {"3; \"a.htm", "a.htm"},
      {"3;urn.htm", "urn.htm"},
      {"3;url", "url"},
      {".5;url=a.htm", "a.htm"},
      {"3", ""},
      {"", ""},
      {"a.htm", ""},
      {"3x;url=a.htm", ""},
      {"3;url=", ""},
  };
  for (const auto& [content, target] : cases) EXPECT_EQ(RefreshTarget(content), target) << content;
}

}  // namespace
}  // namespace zvrsit
