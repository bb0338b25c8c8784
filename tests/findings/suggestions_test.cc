#include "findings/suggestions.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace zvrsit::test
