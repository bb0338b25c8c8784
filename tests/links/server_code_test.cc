#include "links/server_code.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zvrsit {
namespace {

// With a dot for each byte of server code.
std::string Hidden(std::string page) {
  HideServerCode(page);
  std::replace(page.begin(), page.end(), kServerCode, '.');
  return page;
}

TEST(ServerCode, IsHiddenToItsEnd) {
  const struct {
    const char* page;
    const char* hidden;
  } rows[] = {
      {"a<?php b ?>c", "a..........c"},
      {"a<?= $b ?>c<? d", "a.........c...."},
      {"<? '?>' ?>a", "..........a"},
      {"<? \"\\\"?>\" ?>a", "............a"},
      {"<? /* ?> */ ?>a", "..............a"},
      {"<? // ' ?>a", "..........a"},
      {"<? # it's\n?>a", "............a"},
      {"<? #[X('?>')] ?>a", "................a"},
      {"<? <<<E\ndon't ?>\n E; ?>a", ".......................a"},
      {"<? <<<'EE'\nE ?>\nEEE\nEE; ?>a", "..........................a"},
      {"<? 1 <<< 2 ?>a", ".............a"},
      {"<?xml version='1.0'?>a", ".....................a"},
      {"<% '%>a", "......a"},
      {"<%-- %> --%>a", "............a"},
      {"<%", ".."},
      {"${a}b#{c}d{{e}}f{%g%}h{!!i!!}", "....b....d.....f.....h......."},
      {"${a\n}b{c}#d$e", "${a\n}b{c}#d$e"},
      {"<c:url value='>'/>a</c:x>b", "..................a......b"},
      {"<svg:a><a:1><b :c><:d", "<svg:a><a:1><b :c><:d"},
      {"<a:b '>", "<a:b '>"},
  };
  for (const auto& row : rows) EXPECT_EQ(Hidden(row.page), row.hidden) << row.page;
}

// Beginnings without an end; those of code hide all that follows, the others nothing.
TEST(ServerCode, IsHiddenInLinearTime) {
  for (const std::string beginning : {"<a:b\"", "{{", "<? //\n", "<? '?>", "<? <<<E\n"}) {
    std::string page;
    while (page.size() < 500000) page += beginning;
    const std::string hidden(page.size(), kServerCode);
    const std::string expected = beginning.starts_with("<?") ? hidden : page;
    HideServerCode(page);
    EXPECT_TRUE(page == expected) << beginning;
  }
}

}  // namespace
}  // namespace zvrsit
