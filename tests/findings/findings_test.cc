// What a finding says: the likeliest name meant, and what is wrong with a URL.
#include <gtest/gtest.h>

#include "findings/suggestions.h"
#include "findings/url_check.h"

namespace zvrsit::test {
namespace {

TEST(NameSuggestions, FindsWhatOneSlipMakes) {
  const std::vector<std::string> names = {"docs/Install.html", "docs/index.html",
                                          "img/a.gif",         "index-1",
                                          "index-12",          "other/guide.htm"};
  const NameSuggestions suggestions(names);
  const struct {
    const char* name;
    int likeliest;
  } kRows[] = {
      {"docs/install.html", 0}, {"docs/instal.html", 0},  {"docs/innstall.html", 0},
      {"docs/isntall.html", 0}, {"docs/inztall.html", 0}, {"docs/instxll.htm", -1},
      {"doc/index.html", -1},   {"img/b.gif", 2},         {"index-3", -1},
      {"index-2", -1},          {"indxe-1", 3},           {"", -1},
      {"other/GUIDE.HTM", 5},   {"other/guides.htm", 5},  {"img/a.png", -1},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(suggestions.Likeliest(row.name), row.likeliest) << row.name;
  EXPECT_EQ(suggestions.SameButForCase("IMG/A.GIF"), 2);
  EXPECT_EQ(suggestions.SameButForCase("img/b.gif"), -1);
}

// What host and port may be, after the URL Standard (url.spec.whatwg.org).
TEST(FaultOfUrl, IsThatOfTheStandard) {
  for (const char* good :
       {"http://example.org", "HTTPS://Example.org:443/a?b#c", "http:\\\\x:0/", "http:///a",
        "http://user:pa@ss@host/", "http://[::1]:80/", "http://[1::ffff:1.2.3.4]", "http://a%62c/",
        "http://h:00065535/", "//host/x", "ftp://h", "http://ex_ample-.org/", "mailto:", "tel:1 2",
        "x-other://[", "http://h:/", "http://caf\xC3\xA9/"}) {
    EXPECT_EQ(FaultOfUrl(good), "") << good;
  }
  for (const char* bad :
       {"http://", "https://?q", "http:#x", "http://a b/", "http://[x/", "http://[::1",
        "http://a<b", "http://h:65536/", "http://h:8a/", "http://user@/x", "//", "http://a%zz/",
        "http://h:-1/", "ws://a|b", "http://[]/", "http://h^/"}) {
    EXPECT_NE(FaultOfUrl(bad), "") << bad;
  }
}

}  // namespace
}  // namespace zvrsit::test
