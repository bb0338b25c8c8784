#include "links/redirect_rules.h"

#include <gtest/gtest.h>

namespace zvrsit {
namespace {

constexpr const char* kText = R"(# comment
/old  /new.html  # 301
/news/*  /archive/:splat 302
/u/:name/:day  /users/:day/:name 200
/store id=:id kind=book  /books/:id 301
/store id=:id  /things?n=:id
/here /there 301!
/lang /fr/ 302 Language=fr
/lang /en/
/only /fr/ Country=fr
/gone/* /404.html 404
/blog/ https://blog.example/
/a/*.html /b/:splat
/caf%C3%A9 /coffee
https://example.org/abs /local
https://other.example/* /never
/one /first
/one /second
/tail/:x* /t/:x/:splat
  no rule
/half
/bad word /x
)";

// The target of the rule for each address; empty for none.
TEST(RedirectRules, FitAsOnAServer) {
  TargetResolver resolver{LinkRules::Web};
  resolver.SetLiveUrl("https://example.org/", "\\site\\");
  resolver.BeginPage("\\site\\", "\\site\\_redirects");
  const RedirectRules rules(kText, resolver);
  EXPECT_TRUE(rules.hasForced());
  const struct {
    const char* path;  // below the site
    const char* query;
    bool isThere;
    const char* to;
  } rows[] = {
      {"old", "", false, "/new.html"},
      {"old\\", "", false, "/new.html"},
      {"old", "", true, ""},
      {"older", "", false, ""},
      {"old\\x", "", false, ""},
      {"OLD", "", false, ""},
      {"news", "", false, "/archive/"},
      {"news\\", "", false, "/archive/"},
      {"news\\a\\b c#%.html", "", false, "/archive/a/b c%23%25.html"},
      {"newsx", "", false, ""},
      {"u\\ann\\7", "", false, "/users/7/ann"},
      {"u\\ann", "", false, ""},
      {"u\\ann\\7\\8", "", false, ""},
      {"store", "kind=book&id=5", false, "/books/5"},
      {"store", "id=5&kind=film", false, "/things?n=5"},
      {"store", "", false, ""},
      {"here", "", true, "/there"},
      {"lang", "", false, "/en/"},
      {"only", "", false, "/fr/"},
      {"gone\\x", "", false, "/404.html"},
      {"blog", "", false, "https://blog.example/"},
      {"a\\x\\y.html", "", false, "/b/x/y"},
      {"a\\x.htm", "", false, ""},
      {"caf\xC3\xA9", "", false, "/coffee"},
      {"abs", "", false, "/local"},
      {"one", "", false, "/first"},
      {"tail\\ab", "", false, "/t/ab/"},
      {"half", "", false, ""},
      {"bad", "", false, ""},
  };
  for (const auto& row : rows) {
    std::string to;
    const std::string path = std::string("\\site\\") + row.path;
    const RedirectRule* const rule = rules.Match(path, row.query, row.isThere, to);
    EXPECT_EQ(rule != nullptr ? to : "", row.to) << row.path << "?" << row.query;
    EXPECT_EQ(rule != nullptr && rule->status == 404, std::string(row.to) == "/404.html");
  }
}

// The rule for everything under a folder, and a text that is made to cost time.
TEST(RedirectRules, TakeLittleTime) {
  TargetResolver resolver{LinkRules::Web};
  resolver.BeginPage("\\site\\", "\\site\\_redirects");
  std::string text;
  for (int i = 0; i < 2000; ++i) {
    text += "/p" + std::to_string(i) + " /q\n/*a*a*a*a*a*b" + std::to_string(i) + " /x\n";
  }
  const RedirectRules rules(text, resolver);
  std::string to;
  EXPECT_EQ(rules.Match("\\site\\" + std::string(2000, 'a'), "", false, to), nullptr);
  EXPECT_NE(rules.Match("\\site\\p1999", "", false, to), nullptr);
  EXPECT_EQ(to, "/q");
}

}  // namespace
}  // namespace zvrsit
