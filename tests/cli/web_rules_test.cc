// Small sites under the rules of today's web. In the texts a "|" stands before each reference that
// must be found broken; every other one must not be.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

struct File {
  const char* name;
  std::string text;
};

// Adds "file:line:column" of all marks.
void AddMarks(const File& file, Words& places) {
  int line = 1, column = 1;
  for (const char c : file.text) {
    if (c == '|') places.push_back(fmt::format("{}:{}:{}", file.name, line, column));
    column = c == '\n' ? 1 : column + (c != '|' ? 1 : 0);
    line += c == '\n' ? 1 : 0;
  }
}

// Checks a site of these files; the marks, and `others` ("file" for each orphan page), are all that
// is found.
void ExpectBroken(const Program& program, std::initializer_list<File> files, const Words& options,
                  Words others = {}) {
  for (const File& file : files) {
    AddMarks(file, others);
    std::string text = file.text;
    std::erase(text, '|');
    program.Page(file.name, text);
  }
  Words words{"check", program.folder.native("site"), "--format", "json"};
  words.insert(words.end(), options.begin(), options.end());
  const Outcome outcome = program.Run(words);
  Words found;
  const Json rows = Rows(outcome.json());
  for (const Json& row : rows) {
    const bool isPlace = !row["line"].is_null();
    found.push_back(row["from"].get<std::string>() +
                    (isPlace ? ":" + row["line"].dump() + ":" + row["column"].dump() : ""));
  }
  std::ranges::sort(found);
  std::ranges::sort(others);
  EXPECT_EQ(found, others) << outcome.out << outcome.err;
}

TEST(WebRules, ReadWhatIsNotForBrowsersAlone) {
  const File page{"index.html", R"(<link rel=canonical href=https://example.org/docs/>
<link rel=manifest href=app.webmanifest><link rel="preconnect DNS-Prefetch" href=/nothing>
<link rel=canonical href=|http://example.org/docs/x.html>
<meta property="og:image" content="|https://example.org/docs/none.png"><meta property=og:title content=x>
<meta name="twitter:image" content="|t.png"><meta name="msapplication-config" content="none">
<meta property=og:url content=https://example.org/other.html>
<script type="application/ld+json">{"@context":"https://schema.org","@id":"https://example.org/docs/#me",
 "url":"|https://example.org/docs/gone.html","image":["|img\/a.png","a nice pic"],"name":"about.html",
 "logo": {"@id": "#logo", "url": "i.png"}, "target": "/q?{x}", "sameAs": ["|./me.html", "me"]}</script>
<script type="application/ld+json">{"url": "/broken.html"</script>
<script type="application/ld+json">{"@context": {"@base": "https://e.org/"}, "url": "b.html"}</script>
<script type=importmap>{"imports":{"a":"|./js/a.js","b/":"/docs/img/","c/":"|./none/","d":"bare"},
"scopes":{"/x/":{"a":"|./js/b.js"}}}</script>
<script type="speculationrules">{"prefetch":[{"urls":["|next.html", "index.html"]}]}</script>
<blockquote cite=|q1.html></blockquote><q cite="|q2.html"></q><del cite=|q3.html></del><ins cite=|q4.html>)"};
  const Program program;
  program.Page("img/x.txt", "");
  ExpectBroken(program,
               {page,
                {"app.webmanifest", R"({"name": "x.html", "start_url": "./?home", "scope": "img/",
 "icons": [{"src": "i.png"}, {"src": "|missing\u00e9.png"}],
 "shortcuts": [{"url": "|s.html", "icons": [{"src": "|s.png"}]}], "screenshots": [{"src": "|sh.png"}]})"},
                {"i.png", ""},
                {"robots.txt",
                 "User-agent: *\nSITEMAP: https://example.org/docs/sitemap.xml\n"
                 "Sitemap: |https://example.org/docs/sitemap2.xml # second\n#Sitemap: /x.xml\n"
                 "User-agent: *\rSitemap: https://example.org/docs/old-sitemap.xml\r"},
                {"old-sitemap.xml", "<urlset><url><loc>/docs/old.html</loc></url></urlset>"},
                {"old.html", ""},
                {"sitemap.xml", R"(<?xml version="1.0"?>
<urlset><url><loc>https://example.org/docs/only.html</loc></url>
<url><loc> |https://example.org/docs/lost.html?a=1&amp;b
</loc><image:loc><![CDATA[|https://example.org/docs/l.png]]></image:loc>
<xhtml:link rel="alternate" href="|https://example.org/docs/fr.html"/></url></urlset>)"},
                {"only.html", ""},
                {"orphan.html", ""},
                {"sub/robots.txt", "Sitemap: https://example.org/docs/none.xml"},
                {"sub/manifest.json", R"({"icons": [{"src": "|none.png"}], "url": "x.html"})"},
                {"sub/data.json", R"({"icons": [{"src": "none.png"}]})"}},
               {"--base-url", "https://example.org/docs/"}, {"orphan.html"});
}

TEST(WebRules, FindWhatTheServerAnswersWith) {
  const Program program;
  program.Page("archive/a/b", "");
  program.Page("docs/index.php", "");
  ExpectBroken(program,
               {{"index.html", R"(<link rel=stylesheet href=s.css><a href=about#a><a href="|about/">
<a href="docs/"><a href=/old.html><a href=/news/a/b?x#y><a href="/u/ann?id=7"><a href="|/u/ann">
<a href="|/loop1"><a href=/ext/x><a href=/chain><a href=/forced.html><a href="|/gone/x"><a href=/lang>
<img src="|/app/i.png"><a href=/app/any/page><a href="|/bad"><a href=|About><a href=fr>
<a href=/part#none><a href=|/part200#none>)"},
                {"s.css", "a { background: url(/oldpic.png) } b { background: |url(/none.png) }"},
                {"about.html", "<p id=a>"},
                {"fr.html", ""},
                {"fr/index.html", ""},
                {"new.html", ""},
                {"pic.png", ""},
                {"forced.html", ""},
                {"users/ann/7", ""},
                {"_redirects", R"(# what has moved
/old.html /new.html 301  # a comment
/oldpic.png /pic.png
/news/* /archive/:splat
/u/:name id=:n /users/:name/:n 200
/loop1 |/loop2
/loop2 |/loop1
/ext/* https://example.org/e/:splat
/chain /old.html
/forced.html /new.html 301!
/gone/* /about 404
/lang |/de/ 302 Language=de
/lang /fr
/app/* /new.html 200
/bad |/missing.html
/hook /.functions/hook
/part /about#a
/part200 /about#a 200
/part404 |/about#none
)"},
                {"sub/_redirects", "/x /none.html"}},
               {"--fallback-extensions", "html", "--default-url", "index.html, index.php"},
               {"forced.html", "fr/index.html"});
  // The message is about the file, not about a folder that the link does not name.
  const Outcome outcome = program.Run({"check", program.folder.native("site"), "-q"});
  EXPECT_NE(outcome.out.find("missing.html is not there"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("/about) [missing-file]"), std::string::npos)
      << "not without the option";
}

// A change of the rules is told, and followed when it is saved.
TEST(WebRules, NoStaleAnswerFromOldRules) {
  const Program program;
  program.Page("index.html", "<a href=/old>");
  program.Page("s.css", "a { background: url(/old) }");
  program.Page("a.html", "");
  program.Page("b.html", "");
  program.Page("_redirects", "/old /a.html\n");
  ASSERT_EQ(program.Build("demo").code, 0);
  EXPECT_EQ(program.Ask({"links", "demo"})[0]["to"], "a.html");
  program.Page("_redirects", "/old /b.html 302\n");
  EXPECT_TRUE(program.Run({"links", "demo"}).complains("_redirects"));
  EXPECT_EQ(program.Run({"save", "demo", "_redirects"}).code, 0);
  const Outcome followed = program.Run({"links", "demo"});
  EXPECT_EQ(followed.err, "");
  EXPECT_EQ(std::ranges::count(followed.out, '\n'), 3);
  EXPECT_EQ(followed.out.find("a.html"), std::string::npos) << followed.out;
  fs::remove(program.folder.native("site/_redirects"));
  EXPECT_EQ(program.Run({"rm", "demo", "_redirects"}).code, 0);
  EXPECT_EQ(program.Broken().size(), 2U);
}

// What the profile says of the server is kept, and a change of it is not passed over.
TEST(WebRules, TheProfileKeepsWhatTheServerDoes) {
  const Program program;
  program.Page("index.html", "<a href=a><a href=sub/>");
  program.Page("a.html", "");
  program.Page("sub/index.php", "");
  ASSERT_EQ(program.Build("demo", {"--fallback-extensions", "htm,html"}).code, 0);
  EXPECT_EQ(program.Broken(), Json::array());
  const Words names{"site", "set", "demo", "--default-url", "home.html, index.php"};
  EXPECT_EQ(program.Ask(names)["state"], "rebuilt");
  EXPECT_EQ(program.Broken(), Json::array());
  const Json set = program.Ask({"site", "set", "demo", "--fallback-extensions", ""});
  EXPECT_EQ(set["fallback_extensions"], "");
  EXPECT_EQ(set["state"], "to be rebuilt");
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Broken().size(), 1U);
}

}  // namespace
}  // namespace zvrsit::test
