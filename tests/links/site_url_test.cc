#include "links/site_url.h"

#include <gtest/gtest.h>

#include <random>

#include "links/classic_target.h"
#include "support/code_page_scope.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr const char* kUnresolved = "(unresolved)";

std::string Resolve(const std::string& root, const std::string& page, const std::string& href) {
  std::string out = kUnresolved;
  const int result = SiteUrl(root, page, href).GetLocalPath(out);
  EXPECT_EQ(result == -1, out == kUnresolved) << href;
  return out;
}

TEST(SiteUrl, ResolvesAgainstThePageAndTheRoot) {
  struct Case {
    const char* root;
    const char* href;
    const char* path;
  };
  const Case cases[] = {
      {"d:\\site\\", "../img/x.gif", "d:\\site\\img\\x.gif"},
      {"d:\\site\\", "/img/x.gif", "d:\\site\\img\\x.gif"},
      {"d:\\site", "/x.htm", "d:\\site\\x.htm"},
      {"d:\\site\\", "b.htm?q=1#x", "d:\\site\\docs\\b.htm"},
      {"d:\\site\\", "#top", "d:\\site\\docs\\a.htm"},
      {"d:\\site\\", "sub/.", "d:\\site\\docs\\sub\\."},
      {"d:\\site\\", "sub//../b.htm", "d:\\site\\docs\\sub\\b.htm"},
      {"d:\\site\\", "../../../x.htm", kUnresolved},
      // The query takes part in the collapsing before it is cut off.
      {"d:\\site\\", "b.htm?back=/../c.htm", "d:\\site\\docs\\c.htm"},
      // Schemes that these rules do not know, and hosts, are names.
      {"d:\\site\\", "https://h/x.htm", "d:\\site\\docs\\https:\\\\h\\x.htm"},
      {"d:\\site\\", "//h/x.htm", "d:\\site\\\\h\\x.htm"},
      {"d:\\site\\", "http://h/x.htm", kUnresolved},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Resolve(c.root, "d:\\site\\docs\\a.htm", c.href), c.path) << c.href;
  }
  EXPECT_EQ(Resolve("d:\\site\\", "a.htm", "b.htm"), kUnresolved);
  EXPECT_EQ(Resolve("d:\\site\\", "a.htm", "/b.htm"), "d:\\site\\b.htm");
}

TEST(SiteUrl, KnowsSevenSchemesInAnyCase) {
  const auto isExternal = [](const char* href) { return SiteUrl("", "", href).IsExternal(); };
  for (const char* href : {"HTTP://h/", "ftp:x", "Mailto:a@b", "file:///c:/x", "telnet:h",
                           "news:comp.x", "gopher://h", "http:"}) {
    EXPECT_EQ(isExternal(href), 1) << href;
  }
  for (const char* href : {"", "https://h/", "c:\\x.htm", "javascript:x()", " http://h/",
                           "a#http:", "#http:", "://h", "http//x"}) {
    EXPECT_EQ(isExternal(href), 0) << href;
  }
  EXPECT_EQ(SiteUrl("", "", "http://h/#x").HasFragment(), 1);
  EXPECT_EQ(SiteUrl("", "", "").HasFragment(), 0);
}

// The position of `wanted`, which begins with a single-byte character, at or after the start.
std::size_t FindMB(const std::string& text, const std::string& wanted) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (platform::IsDbcsLeadByte(static_cast<unsigned char>(text[i]))) {
      ++i;
    } else if (text.compare(i, wanted.size(), wanted) == 0) {
      return i;
    }
  }
  return std::string::npos;
}

// The same result by searching anew from the start after every replacement.
std::string ResolveBySearching(const std::string& root, const std::string& page, std::string s) {
  if (SiteUrl(root, page, s).IsExternal()) return kUnresolved;
  if (s.substr(0, 1) == "#") return page;
  ReplaceCharMB(s, '\\', '/');
  if (s.substr(0, 1) == "/") {
    const bool ends = !root.empty() && FindLastCharMB(root, '\\') == root.size() - 1;
    s = root + (ends ? s.substr(1) : s);
  } else {
    const auto last = FindLastCharMB(page, '\\');
    if (last == std::string::npos) return kUnresolved;
    s = page.substr(0, last + 1) + s;
  }
  ReplaceCharMB(s, '/', '\\');
  for (std::size_t p; (p = FindMB(s, "\\.\\")) != std::string::npos;) s.erase(p, 2);
  for (std::size_t p; (p = FindMB(s, "\\..\\")) != std::string::npos;) {
    const auto before = FindLastCharMB(s.substr(0, p), '\\');
    if (before == std::string::npos) return kUnresolved;
    s.erase(before, p - before + 3);
  }
  return s.substr(0, s.find_first_of("#?"));
}

TEST(SiteUrl, OnePassGivesWhatRepeatedSearchesGive) {
  const std::string pieces[] = {"..",  ".",   "/",  "\\", "a", "bc",       "?",    "#",    "...",
                                "../", "/./", "x/", ":",  "",  "\x95\x5C", "\x81", "http", "..\\"};
  const std::string roots[] = {"d:\\site\\", "d:\\site",       "\\",
                               "",           "d:\\s\\..\\t\\", "d:\\\x95\x5C"};
  const std::string pages[] = {"d:\\site\\docs\\a.htm",  "\\a.htm",      "a.htm",
                               "d:\\.\\x\\..\\y\\a.htm", "..\\b\\a.htm", "d:\\\x95\x5C\\b.htm"};
  std::mt19937 random(20260401);
  for (const unsigned codePage : {932u, 65001u}) {
    const test::CodePageScope guard(codePage);
    for (int i = 0; i < 20000; ++i) {
      std::string href;
      for (unsigned n = random() % 14; n > 0; --n) href += pieces[random() % std::size(pieces)];
      const std::string& root = roots[random() % std::size(roots)];
      const std::string& page = pages[random() % std::size(pages)];
      ASSERT_EQ(Resolve(root, page, href), ResolveBySearching(root, page, href))
          << root << ' ' << page << ' ' << href;
    }
  }
}

TEST(SiteUrl, TakesLinearTime) {
  std::string href;
  for (int i = 0; i < 300000; ++i) href += "a/";
  for (int i = 0; i < 300000; ++i) href += "../";
  EXPECT_EQ(Resolve("d:\\", "d:\\p.htm", href + "x"), "d:\\x");
}

}  // namespace
}  // namespace zvrsit
