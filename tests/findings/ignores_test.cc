#include "findings/ignores.h"

#include <gtest/gtest.h>

namespace zvrsit {
namespace {

TEST(Ignores, PatternsOfNames) {
  const struct {
    const char* pattern;
    const char* name;
    bool matches;
  } rows[] = {
      {"*.html", "a.html", true},
      {"*.html", "sub/a.html", true},
      {"*.html", "a.htm", false},
      {"/a.html", "a.html", false},
      {"sub/*", "sub/a.html", true},
      {"sub/*", "sub/in/a.html", false},
      {"sub/**", "sub/in/a.html", true},
      {"sub/", "sub/in/a.html", true},
      {"sub/", "sub", false},
      {"**/a.html", "x/y/a.html", true},
      {"**/a?", "x/ab", true},
      {"x/?", "x//", false},
      {"a*b*c", "axxbyyc", true},
      {"a*b*c", "axxbyy", false},
      {"http://*/**", "http://h/a/b", true},
      {"", "", true},
      {"", "a", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(MatchesGlob(row.pattern, row.name), row.matches) << row.pattern << " " << row.name;
  }
}

}  // namespace
}  // namespace zvrsit
