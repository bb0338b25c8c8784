// What single moves change in files, byte for byte.
#include <gtest/gtest.h>

#include "repair/moved_site.h"

namespace zvrsit {
namespace {

using test::Files;
using test::FromHex;
using test::MovedSite;

// A move in a small site, and what becomes of one of its files.
struct Row {
  const char* what;
  const char* from;
  const char* to;
  const char* file;  // by its name of before
  std::string before;
  std::string after;
  Files others = {};
  const char* kept = "";  // the texts that stay, a space after each
};

struct Profile {
  LinkRules rules = LinkRules::Web;
  const char* baseUrl = "";
  const char* extensions = "";
  const char* defaultName = "";
};

void Check(const Row& row, const Profile& profile) {
  SCOPED_TRACE(row.what);
  MovedSite site(profile.rules);
  for (const auto& [name, bytes] : row.others) site.write(name, bytes);
  site.write(row.file, row.before);
  site.SetProfile(profile.baseUrl, profile.extensions, profile.defaultName);
  ASSERT_TRUE(site.Rebuild());
  RepairPlan plan;
  ASSERT_EQ(site.Plan(row.from, row.to, plan), 0);
  EXPECT_TRUE(site.Change(plan));
  EXPECT_EQ(test::ReadWhole(site.native(row.file)), row.after);
  std::string kept;
  for (const KeptReference& one : plan.kept) kept += one.text + " ";
  EXPECT_EQ(kept, row.kept);
}

void CheckAll(const std::vector<Row>& rows, const Profile& profile = {}) {
  for (const Row& row : rows) Check(row, profile);
}

TEST(MovePlan, WhatIsAroundAValueStaysAsItIs) {
  const Files b{{"b.html", ""}};
  CheckAll({
      {"quotes", "b.html", "c.html", "a.html",
       "<a href = 'b.html'><a HREF=\"b.html\"><a href=b.html>",
       "<a href = 'c.html'><a HREF=\"c.html\"><a href=c.html>", b},
      {"query and fragment", "b.html", "c.html", "a.html", "<a href='b.html?q=1&amp;r=&#50;&s#x'>",
       "<a href='c.html?q=1&amp;r=&#50;&s#x'>", b},
      {"quotes that are needed", "b.html", "x/c'd.html", "a.html", "<a href=b.html>",
       "<a href=\"x/c'd.html\">", b},
      {"a quote within quotes", "b.html", "c'd.html", "a.html", "<a href='b.html'>",
       "<a href='c&#39;d.html'>", b},
      {"an ampersand", "b.html", "c&amp.html", "a.html", "<a href='b.html'>",
       "<a href='c&amp;amp.html'>", b},
      {"an ampersand among bare ones", "b.html", "c&-.html", "a.html", "<a href='b.html?a&b&=c'>",
       "<a href='c&-.html?a&b&=c'>", b},
      {"white space", "b.html", "c.html", "a.html", "<a href='\n b.html '>",
       "<a href='\n c.html '>", b},
      {"references in the part that stays",
       "d/b.html",
       "d/c.html",
       "a.html",
       "<a href='&#100;/b.html'>",
       "<a href='&#100;/c.html'>",
       {{"d/b.html", ""}}},
      {"places", "b.html", "c.html", "a.html", "\xEF\xBB\xBF<p>\r\n<a href='b.html'>\r\n",
       "\xEF\xBB\xBF<p>\r\n<a href='c.html'>\r\n", b},
  });
}

TEST(MovePlan, EveryPlaceOfAReference) {
  const Files p{{"p.png", ""}};
  const Files b{{"b.html", ""}};
  const Files s{{"s.css", ""}};
  const Files j{{"m.js", ""}};
  CheckAll({
      {"srcset", "p.png", "i/p,.png", "a.html", "<img src=p.png srcset='p.png 1x, q.png 2x,p.png'>",
       "<img src=i/p,.png srcset='i/p%2C.png 1x, q.png 2x,i/p%2C.png'>", p},
      {"a candidate of a source", "p.png", "p 2.png", "a.html",
       "<picture><source srcset=p.png></picture>", "<picture><source srcset=p%202.png></picture>",
       p},
      {"refresh", "b.html", "c.html", "a.html",
       "<meta http-equiv=refresh content=\"3; URL='b.html'\">",
       "<meta http-equiv=refresh content=\"3; URL='c.html'\">", b},
      {"style element", "p.png", "i/p.png", "a.html",
       "<style>@import 'p.png';p{background:url( p.png ) url(\"p.png\")}</style>",
       "<style>@import 'i/p.png';p{background:url( i/p.png ) url(\"i/p.png\")}</style>", p},
      {"style attribute", "p.png", "i/(p\".png", "a.html",
       "<p style=\"background:url(p.png), url('p.png'), url(&quot;p.png&quot;)\">",
       "<p style=\"background:url(i/\\(p%22.png), url('i/(p%22.png'), "
       "url(&quot;i/(p%22.png&quot;)\">",
       p},
      {"image-set", "p.png", "q.png", "a.html",
       "<p style='background:image-set(\"p.png\" 1x,url(p.png) 2x)'>",
       "<p style='background:image-set(\"q.png\" 1x,url(q.png) 2x)'>", p},
      {"svg",
       "p.svg",
       "i/p.svg",
       "a.html",
       "<svg><use xlink:href='p.svg#a'/><image href=p.svg /><path fill='url(p.svg#b)'/>"
       "<style>p{fill:url(p.svg)}</style></svg>",
       "<svg><use xlink:href='i/p.svg#a'/><image href=i/p.svg /><path fill='url(i/p.svg#b)'/>"
       "<style>p{fill:url(i/p.svg)}</style></svg>",
       {{"p.svg", "<svg/>"}}},
      {"srcdoc", "b.html", "x&y.html", "a.html",
       "<iframe srcdoc=\"<a href='b.html'><p style=&quot;background:url(&amp;quot;b.html&amp;quot;)"
       "&quot;>\">",
       "<iframe srcdoc=\"<a href='x&amp;amp;y.html'><p style=&quot;background:url(&amp;quot;"
       "x&amp;amp;y.html&amp;quot;)&quot;>\">",
       b},
      {"shadow root", "b.html", "c.html", "a.html",
       "<div><template shadowrootmode=open><a href=b.html></template></div><template><a "
       "href=b.html>"
       "</template>",
       "<div><template shadowrootmode=open><a href=c.html></template></div><template><a "
       "href=b.html>"
       "</template>",
       b},
      {"import map", "m.js", "lib/m.js", "a.html",
       "<script type=importmap>{\"imports\":{\"m\":\"./m.js\",\"n\":\"\\u002e\\/m.js\"}}</script>",
       "<script type=importmap>{\"imports\":{\"m\":\"./lib/m.js\",\"n\":\"\\u002e\\/lib\\/m.js\"}}"
       "</script>",
       j},
      {"import map upwards", "x/a.html", "a.html", "x/a.html",
       "<script type=importmap>{\"imports\":{\"m\":\"../m.js\"}}</script>",
       "<script type=importmap>{\"imports\":{\"m\":\"./m.js\"}}</script>", j},
      {"linked data", "p.png", "q.png", "a.html",
       "<script type='application/ld+json'>{\"image\":[\"p.png\"],\"name\":\"p.png\"}</script>",
       "<script type='application/ld+json'>{\"image\":[\"q.png\"],\"name\":\"p.png\"}</script>", p},
      {"og:image", "p.png", "q.png", "a.html", "<meta property='og:image' content='p.png'>",
       "<meta property='og:image' content='q.png'>", p},
      {"ping and cite", "b.html", "c d.html", "a.html", "<a ping='b.html b.html'><q cite=b.html>",
       "<a ping='c%20d.html c%20d.html'><q cite=c%20d.html>", b},
      {"sheet", "s.css", "css/s.css", "a.html", "<link rel=stylesheet href=s.css>",
       "<link rel=stylesheet href=css/s.css>", s},
      {"in a sheet", "p.png", "i/a b'.png", "s.css",
       "@import url(t.css);a{src:url(p.png);b:url('p.png')}/*p.png*/",
       "@import url(t.css);a{src:url(i/a%20b\\'.png);b:url('i/a%20b\\'.png')}/*p.png*/", p},
      {"a sheet that moves",
       "css/s.css",
       "s.css",
       "css/s.css",
       "@import \"t.css\";p{background:url(../p\\.png)}",
       "@import \"css/t.css\";p{background:url(p\\.png)}",
       {{"p.png", ""}, {"css/t.css", ""}}},
      {"applet",
       "b/C.class",
       "d/C.class",
       "a.html",
       "<applet codebase=b code=C.class></applet>",
       "<applet codebase=d code=C.class></applet>",
       {{"b/C.class", ""}}},
      {"xhtml", "b.html", "c&d.html", "a.xhtml", "<html><a href='b.html'/></html>",
       "<html><a href='c&amp;d.html'/></html>", b},
      {"server code",
       "x/a.php",
       "a.php",
       "x/a.php",
       "<?php echo '<a href=b.html>' ?><a href='b.html?<?= $q ?>'><a href='<?= $x ?>/b.html'>",
       "<?php echo '<a href=b.html>' ?><a href='b.html?<?= $q ?>'><a href='<?= $x ?>/b.html'>",
       {{"x/b.html", ""}},
       "b.html?\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F "
       "\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F\x7F/b.html "},
  });
}

TEST(MovePlan, AReferenceStaysOfItsKind) {
  const Files d{{"d/b.html", ""}, {"d/e/f.html", ""}};
  CheckAll({
      {"relative", "x/a.html", "a.html", "x/a.html",
       "<a href='../d/b.html'><a href='../d/e/f.html'>", "<a href='d/b.html'><a href='d/e/f.html'>",
       d},
      {"relative, down", "a.html", "d/e/a.html", "a.html", "<a href='d/b.html'><a href=d/e/f.html>",
       "<a href='../b.html'><a href=f.html>", d},
      {"with a dot", "d/b.html", "d/c.html", "a.html", "<a href='./d/b.html'>",
       "<a href='./d/c.html'>", d},
      {"from the root", "d/b.html", "g/b.html", "x/a.html", "<a href='/d/b.html'>",
       "<a href='/g/b.html'>", d},
      {"from the root stays", "x/a.html", "d/e/a.html", "x/a.html",
       "<a href='/d/b.html'><a href='#x'><a href='?q'>",
       "<a href='/d/b.html'><a href='#x'><a href='?q'>", d},
      {"with a slash too many", "x/a.html", "a.html", "x/a.html", "<a href='../d/b.html'>",
       "<a href='d/b.html'>", d},
      {"a folder that moves", "d/", "g/", "a.html", "<a href=d/b.html><a href=d/missing.html>",
       "<a href=g/b.html><a href=g/missing.html>", d},
      {"within a folder that moves",
       "d/",
       "x/g/",
       "d/b.html",
       "<a href=e/f.html><a href=../d/b.html><a href=../a.html>",
       "<a href=e/f.html><a href=../../x/g/b.html><a href=../../a.html>",
       {{"d/e/f.html", ""}, {"a.html", ""}}},
      {"to a folder",
       "d/",
       "g/",
       "a.html",
       "<a href=d/><a href=d><a href=d/.>",
       "<a href=g/><a href=g><a href=g/>",
       {{"d/index.html", ""}}},
      {"to its own folder",
       "d/x.html",
       "g/x.html",
       "d/x.html",
       "<a href=.><a href=./><a href=..>",
       "<a href=../d/><a href=../d/><a href=..>",
       {{"d/index.html", ""}}},
      {"the document gets another name",
       "d/index.html",
       "d/b.html",
       "a.html",
       "<a href=d/#x>",
       "<a href=d/b.html#x>",
       {{"d/index.html", ""}}},
      {"the document goes to another folder",
       "d/index.html",
       "g/index.html",
       "a.html",
       "<a href=d/#x><a href=d>",
       "<a href=g/#x><a href=g>",
       {{"d/index.html", ""}}},
      {"a better document comes",
       "b.html",
       "d/index.html",
       "a.html",
       "<a href=d/><a href=b.html>",
       "<a href=d/index.htm><a href=d/index.html>",
       {{"d/index.htm", ""}, {"b.html", ""}}},
      {"percent",
       "d/%61 \xC3\xA9.html",
       "g/%61 \xC3\xA9.html",
       "a.html",
       "<a href='d/%2561%20%c3%a9.html'>",
       "<a href='g/%2561%20%c3%a9.html'>",
       {{"d/%61 \xC3\xA9.html", ""}}},
      {"percent of another name",
       "d/\xC3\xA9.html",
       "d/\xC3\xBC ?.html",
       "a.html",
       "<a href='d/%c3%a9.html'><a href='d/\xC3\xA9.html'><a href='d/%C3%A9.html'>",
       "<a href='d/%c3%bc%20%3f.html'><a href='d/\xC3\xBC%20%3F.html'><a "
       "href='d/%C3%BC%20%3F.html'>",
       {{"d/\xC3\xA9.html", ""}}},
      {"a colon in the name",
       "b.html",
       "x:b.html",
       "a.html",
       "<a href='b.html'>",
       "<a href='./x:b.html'>",
       {{"b.html", ""}}},
      {"backslashes", "d/b.html", "g/b.html", "a.html", "<a href='d\\b.html'>",
       "<a href='g\\b.html'>", d},
      {"base",
       "d/b.html",
       "d/c.html",
       "a.html",
       "<base href='d/'><a href=b.html><a href='#x'>",
       "<base href='d/'><a href=c.html><a href='#x'>",
       {{"d/b.html", ""}, {"d/index.html", ""}}},
      {"base of a page that moves", "a.html", "x/a.html", "a.html",
       "<base href='d/'><a href=b.html>", "<base href='../d/'><a href=b.html>", d},
      {"base that moves", "d/", "g/", "a.html", "<base href='d/'><a href=b.html><a href=../a.html>",
       "<base href='g/'><a href=b.html><a href=../a.html>", d},
      {"too many dots",
       "x/y/a.html",
       "x/a.html",
       "x/y/a.html",
       "<a href='../../b.html'>",
       "<a href='../b.html'>",
       {{"b.html", ""}}},
      {"by way of the top",
       "x/y/a.html",
       "x/a.html",
       "x/y/a.html",
       "<a href='../../x/y/b.html'>",
       "<a href='../x/y/b.html'>",
       {{"x/y/b.html", ""}}},
      {"by way of the top still",
       "x/b.html",
       "x/c/d.html",
       "x/y/a.html",
       "<a href='./../../x/b.html'><a href='../b.html'>",
       "<a href='./../../x/c/d.html'><a href='../c/d.html'>",
       {{"x/b.html", ""}}},
      {"a link within", "a.html", "x/a.html", "a.html", "<a href='a.html#x'><a href='./a.html'>",
       "<a href='a.html#x'><a href='./a.html'>"},
  });
}

TEST(MovePlan, OfASiteWithAnAddress) {
  const Files d{{"d/b.html", ""}};
  const Profile profile{LinkRules::Web, "https://Example.org/docs/", "", ""};
  CheckAll(
      {
          {"with a host", "d/b.html", "g/b.html", "a.html",
           "<a href='https://EXAMPLE.org:443/docs/d/b.html#x'><a "
           "href='//example.org/docs/d/b.html'>"
           "<a href='http://example.org/docs'>",
           "<a href='https://EXAMPLE.org:443/docs/g/b.html#x'><a "
           "href='//example.org/docs/g/b.html'>"
           "<a href='http://example.org/docs'>",
           d},
          {"from the root of the server", "d/b.html", "g/b.html", "a.html",
           "<a href='/docs/d/b.html'><a href='/other.html'>",
           "<a href='/docs/g/b.html'><a href='/other.html'>", d},
          {"out of the site", "a.html", "x/a.html", "a.html", "<a href='../other.html'>",
           "<a href='/other.html'>", d},
          {"sitemap", "d/b.html", "d/c&d.html", "sitemap.xml",
           "<urlset><url><loc> https://example.org/docs/d/b.html </loc></url><url><loc><![CDATA["
           "https://example.org/docs/d/b.html]]></loc></url></urlset>",
           "<urlset><url><loc> https://example.org/docs/d/c&amp;d.html "
           "</loc></url><url><loc><![CDATA["
           "https://example.org/docs/d/c&d.html]]></loc></url></urlset>",
           d},
          {"robots.txt",
           "sitemap.xml",
           "s/sitemap.xml",
           "robots.txt",
           "User-agent: *\r\nSitemap: https://example.org/docs/sitemap.xml # here\r\n",
           "User-agent: *\r\nSitemap: https://example.org/docs/s/sitemap.xml # here\r\n",
           {{"sitemap.xml", "<urlset/>"}}},
      },
      profile);
}

TEST(MovePlan, OfSiteData) {
  const Files d{{"d/b.html", ""}, {"d/index.html", ""}, {"i.png", ""}};
  CheckAll({
      {"manifest", "i.png", "i/i.png", "app.webmanifest",
       "{\"start_url\":\"d/b.html\",\"icons\":[{\"src\":\"\\/i.png\"}],\"scope\":\"./\"}",
       "{\"start_url\":\"d/b.html\",\"icons\":[{\"src\":\"\\/i\\/i.png\"}],\"scope\":\"./\"}", d},
      {"scope", "d/", "g/", "app.webmanifest", "{\"scope\":\"d/\"}", "{\"scope\":\"g/\"}", d},
      {"manifest that moves", "app.webmanifest", "m/app.webmanifest", "app.webmanifest",
       "{\"start_url\":\"d/b.html\",\"scope\":\"./\"}",
       "{\"start_url\":\"../d/b.html\",\"scope\":\"../\"}", d},
      {"_redirects", "d/b.html", "g/x y.html", "_redirects",
       "/old /d/b.html 301 # d/b.html\n/older /old\n/d/b.html /d/b.html 302\n/p/* /d/:splat\n",
       "/old /g/x%20y.html 301 # d/b.html\n/older /old\n/d/b.html /g/x%20y.html 302\n/p/* "
       "/d/:splat\n",
       d},
      {"a rule with placeholders", "d/", "g h/", "_redirects", "/p/* /d/:splat 302\n/q/:x /:x\n",
       "/p/* /g%20h/:splat 302\n/q/:x /:x\n", d},
      {"served by a rule with placeholders",
       "d/",
       "g/",
       "a.html",
       "<a href=/p/b.html>",
       "<a href=/p/b.html>",
       {{"d/b.html", ""}, {"_redirects", "/p/* /d/:splat\n"}}},
      {"served by a rule",
       "d/b.html",
       "g/c.html",
       "a.html",
       "<a href=/old#x><a href=d/b.html>",
       "<a href=/old#x><a href=g/c.html>",
       {{"d/b.html", ""}, {"_redirects", "/old /d/b.html\n"}}},
      {"a page that moves keeps its rules",
       "x/a.html",
       "a.html",
       "x/a.html",
       "<a href=../old#x>",
       "<a href=old#x>",
       {{"d/b.html", ""}, {"_redirects", "/old /d/b.html\n"}}},
      {"a file comes in the place of a rule",
       "d/c.html",
       "old.html",
       "a.html",
       "<a href=old.html><a href=d/c.html>",
       "<a href=d/b.html><a href=old.html>",
       {{"d/b.html", ""}, {"d/c.html", ""}, {"_redirects", "/old.html /d/b.html\n"}}},
  });
  CheckAll(
      {
          {"without an extension", "d/b.html", "g/c.html", "a.html",
           "<a href=d/b?q><a href=d/b.html>", "<a href=g/c?q><a href=g/c.html>", d},
          {"another extension", "d/b.html", "d/b.php", "a.html", "<a href=d/b>", "<a href=d/b.php>",
           d},
          {"a file comes before one with an extension", "i.png", "d/b", "a.html", "<a href=d/b>",
           "<a href=d/b.html>", d},
      },
      {LinkRules::Web, "", "html", ""});
}

TEST(MovePlan, ByTheClassicRules) {
  const Files b{{"b.html", ""}, {"d/home.htm", ""}};
  CheckAll(
      {
          {"raw names", "b.html", "d/c %20.html", "a.html",
           "<a href='b.html?q#x'><a href='/b.html'>",
           "<a href='d/c %20.html?q#x'><a href='/d/c %20.html'>", b},
          {"a page that moves", "x/a.html", "a.html", "x/a.html",
           "<a href='../b.html'><a href='https://x.org/'><a href='javascript:f()'><a href=../d/>"
           "<meta http-equiv=refresh content='0;url=../b.html'><a href='?q'><a href='#x'>",
           "<a href='b.html'><a href='https://x.org/'><a href='javascript:f()'><a href=d/>"
           "<meta http-equiv=refresh content='0;url=b.html'><a href='?q'><a href='#x'>",
           b},
          {"a refresh to a file that moves", "b.html", "c.html", "a.html",
           "<meta http-equiv=refresh content='0;url=b.html'>",
           "<meta http-equiv=refresh content='0;url=c.html'>", b},
          {"default document", "d/home.htm", "e/home.htm", "a.html",
           "<a href=d/><a href=d/home.htm>", "<a href=e/><a href=e/home.htm>", b},
          {"a name that cannot be written", "b.html", "c#d.html", "a.html", "<a href=b.html>",
           "<a href=b.html>", b, "b.html "},
          {"codebase",
           "a.html",
           "x/a.html",
           "a.html",
           "<applet code=A.class codebase='c/'></applet>",
           "<applet code=A.class codebase='../c/'></applet>",
           {{"c/A.class", ""}}},
      },
      {LinkRules::Classic, "", "", "home.htm"});
}

TEST(MovePlan, InTheEncodingOfTheFile) {
  const std::string sjisMeta = "<meta charset=shift_jis>";
  const auto utf16 = [](std::string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char c : text) bytes.append({c, '\0'});
    return bytes;
  };
  const Files d{{"d/\xE8\xA1\xA8.html", ""}, {"d/caf\xC3\xA9.html", ""}, {"b.html", ""}};
  CheckAll({
      {"shift_jis", "d/\xE8\xA1\xA8.html", "g/\xE8\xA1\xA8\xE7\xA4\xBA.html", "a.html",
       sjisMeta + "<p title='\x95\x5C'><a href='d/\x95\x5C.html'>",
       sjisMeta + "<p title='\x95\x5C'><a href='g/\x95\x5C\x8E\xA6.html'>", d},
      {"latin", "d/caf\xC3\xA9.html", "d/\xC3\xA9t\xC3\xA9.html", "a.html",
       "<meta charset=iso-8859-1><a href='d/caf\xE9.html'>",
       "<meta charset=iso-8859-1><a href='d/\xE9t\xE9.html'>", d},
      {"a character that latin lacks", "d/caf\xC3\xA9.html", "d/\xE8\xA1\xA8.htm", "a.html",
       "<meta charset=iso-8859-1><a href='d/caf\xE9.html'>",
       "<meta charset=iso-8859-1><a href='d/%E8%A1%A8.htm'>", d},
      {"undeclared and not UTF-8", "b.html", "c.html", "a.html", "<p>caf\xE9<a href='b.html'>",
       "<p>caf\xE9<a href='c.html'>", d},
      {"a flaw in UTF-8", "b.html", "c.html", "a.html",
       "<meta charset=utf-8><p>caf\xE9 \xC3\xA9<a href='b.html'>",
       "<meta charset=utf-8><p>caf\xE9 \xC3\xA9<a href='c.html'>", d},
      {"utf-16", "b.html", "d/c.html", "a.html", utf16("<a href='b.html'>"),
       utf16("<a href='d/c.html'>"), d},
      {"euc-jp", "d/\xE8\xA1\xA8.html", "d/\xE7\xA4\xBA.html", "a.html",
       "<meta charset=euc-jp><p>\x8F\xB0\xA1<a href='d/\xC9\xBD.html'>",
       "<meta charset=euc-jp><p>\x8F\xB0\xA1<a href='d/\xBC\xA8.html'>", d},
      {"iso-2022-jp", "b.html", "c.html", "a.html",
       "<meta charset=iso-2022-jp><p>\x1B$BI=\x1B(B<a href='b.html'>",
       "<meta charset=iso-2022-jp><p>\x1B$BI=\x1B(B<a href='c.html'>", d},
      {"gb18030", "b.html", "c.html", "a.html",
       "<meta charset=gb18030><p>\x81\x30\x81\x36<a href='b.html'>",
       "<meta charset=gb18030><p>\x81\x30\x81\x36<a href='c.html'>", d},
      {"a sheet", "d/caf\xC3\xA9.html", "d/\xC3\xA9t\xC3\xA9.html", "s.css",
       "@charset \"windows-1252\";p{background:url(d/caf\xE9.html)}",
       "@charset \"windows-1252\";p{background:url(d/\xE9t\xE9.html)}", d},
  });
}

// An ID gets another name; the page's own texts of before and after, and those of another page.
TEST(RenamedId, InItsPageAndInAllFragments) {
  struct IdRow {
    const char* from;
    const char* to;
    std::string page;
    std::string pageAfter;
    std::string other;
    std::string otherAfter;
    const char* kept;
  };
  const std::string e = "\xC3\xA9";
  const IdRow kRows[] = {
      {"x", "y-1",
       "<p ID = x><a name='x'><label for=x aria-labelledby='w x z'><a href='#x'><i id=xx>",
       "<p ID = y-1><a name='y-1'><label for=y-1 aria-labelledby='w y-1 z'><a href='#y-1'><i "
       "id=xx>",
       "<a href='p.html?q#x'><a href='/p.html#%78'><a href=q.html#x><a href='p.html#xx'>",
       "<a href='p.html?q#y-1'><a href='/p.html#y-1'><a href=q.html#x><a href='p.html#xx'>", ""},
      {"x", "a\"b'>&amp;", "<p id=x><p headers='x'>",
       "<p id=\"a&quot;b'>&amp;amp;\"><p headers='a\"b&#39;>&amp;amp;'>",
       "<a href='p.html#x:~:text=x'>", "<a href='p.html#a%22b&#39;>&amp;amp;:~:text=x'>", ""},
      {"x", "100%", "<p id='x'>", "<p id='100%'>", "<a href='p.html#x'>",
       "<a href='p.html#100%25'>", ""},
      {"x", "caf\xC3\xA9", "<p id='x'>", "<p id='caf" + e + "'>", "<a href='p.html#x'>",
       "<a href='p.html#caf%C3%A9'>", ""},
      {"caf\xC3\xA9", "\xC3\xBC", "<p id='caf" + e + "'>", "<p id='\xC3\xBC'>",
       "<a href='p.html#caf%c3%a9'><a href='p.html#caf" + e + "'>",
       "<a href='p.html#%c3%bc'><a href='p.html#\xC3\xBC'>", ""},
      {"x", "y",
       "<style>#x,#xx{}</style><script>f('x')</script><svg><g id=x /><use href='#x'/>"
       "<path fill='url(#x)' style='mask:url(\"#x\")'/></svg>",
       "<style>#x,#xx{}</style><script>f('x')</script><svg><g id=y /><use href='#y'/>"
       "<path fill='url(#y)' style='mask:url(\"#y\")'/></svg>",
       "<svg><use href='p.html#x'/></svg>", "<svg><use href='p.html#y'/></svg>",
       "1:8 a style names the ID; 1:34 a script may name the ID; "},
  };
  for (const IdRow& row : kRows) {
    SCOPED_TRACE(row.page);
    MovedSite site(LinkRules::Web);
    site.write("p.html", row.page);
    site.write("q.html", "<p id=x>");
    site.write("o.html", row.other);
    ASSERT_TRUE(site.Rebuild());
    RepairPlan plan;
    ASSERT_EQ(PlanRenamedId(*site.mgr, site.path("p.html"), row.from, row.to, plan), 0);
    EXPECT_TRUE(site.Change(plan));
    EXPECT_EQ(test::ReadWhole(site.native("p.html")), row.pageAfter);
    EXPECT_EQ(test::ReadWhole(site.native("o.html")), row.otherAfter);
    std::string kept;
    for (const KeptReference& one : plan.kept) {
      kept += std::to_string(one.line) + ":" + std::to_string(one.column) + " " + one.why + "; ";
    }
    EXPECT_EQ(kept, row.kept);
    EXPECT_EQ(PlanRenamedId(*site.mgr, site.path("p.html"), "missing", "new", plan), -1);
    EXPECT_EQ(PlanRenamedId(*site.mgr, site.path("p.html"), row.to, row.to, plan), -1);
    EXPECT_EQ(PlanRenamedId(*site.mgr, site.path("p.html"), row.to, "a b", plan), -1);
  }
}

// All links to one file are to lead to another, which is there already.
TEST(Retarget, LinksToAMissingFile) {
  MovedSite site(LinkRules::Web);
  site.write("d/prices.html", "");
  site.write("a.html", "<a href=d/Prices.html#x><a href=/d/Prices.html><a href=d/other.html>");
  site.write("d/b.html", "<a href='./Prices.html'>");
  ASSERT_TRUE(site.Rebuild());
  RepairPlan plan;
  const std::vector<Retarget> targets{{site.path("d/Prices.html"), site.path("d/prices.html")}};
  ASSERT_EQ(PlanRetarget(*site.mgr, targets, plan), 0);
  EXPECT_TRUE(site.Change(plan));
  EXPECT_EQ(test::ReadWhole(site.native("a.html")),
            "<a href=d/prices.html#x><a href=/d/prices.html><a href=d/other.html>");
  EXPECT_EQ(test::ReadWhole(site.native("d/b.html")), "<a href='./prices.html'>");
}

// What cannot be planned, and a plan for bytes that have changed since.
TEST(MovePlan, IsRefused) {
  MovedSite site(LinkRules::Web);
  RepairPlan plan;
  EXPECT_EQ(site.Plan("a.html", "b.html", plan), -1);  // no site is open
  site.write("a.html", "<a href=d/c.html>");
  site.write("d/c.html", "");
  ASSERT_TRUE(site.Rebuild());
  EXPECT_EQ(site.Plan("missing.html", "b.html", plan), -1);
  EXPECT_EQ(site.Plan("a.html", "d/c.html", plan), -1);
  EXPECT_EQ(site.Plan("d/", "d/e/", plan), -1);
  EXPECT_EQ(site.Plan("d", "e", plan), -1);
  EXPECT_EQ(site.Plan("d/", "a.html/", plan), -1);
  EXPECT_EQ(site.Plan("", "e/", plan), -1);
  ASSERT_EQ(site.Plan("d/c.html", "c.html", plan), 0);
  ASSERT_EQ(plan.files.size(), 1U);
  const TextEdit& edit = plan.files[0].edits.at(0);
  EXPECT_EQ(edit.before, "d/c.html");
  EXPECT_EQ(edit.after, "c.html");
  EXPECT_EQ(edit.line, 1);
  EXPECT_EQ(edit.column, 9);
  std::string result = "as it was";
  EXPECT_FALSE(ApplyEdits("<a href=d/d.html>", plan.files[0], result));
  EXPECT_EQ(result, "as it was");
}

}  // namespace
}  // namespace zvrsit
