// What an answer lacks is told with it: files that changed since, and files that were never read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

Words Texts(const Json& broken) {
  Words texts;
  for (const Json& row : broken) {
    texts.push_back(row["from"].get<std::string>() + " " + row["text"].get<std::string>());
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

// Each row is a change behind the back of the program, and what the answers then say of it.
TEST(Freshness, AStaleAnswerSaysSo) {
  const std::string page = "\n\n<a href=gone.html><a href=b.html><img src=i.gif>";
  struct Row {
    const char* what;
    std::string told;  // on stderr
    std::function<void(const Program&)> change;
    const char* list;  // of the JSON answer
    std::string name;  // in it
    Json line;         // of the broken link of index.html
  };
  const Row rows[] = {
      {"longer", "1 file has changed", [&](const Program& p) { p.Page("index.html", "\n" + page); },
       "changed", "index.html", Json()},
      {"another time, and other lines before the link", "1 file has changed",
       [&](const Program& p) {
         p.Page("index.html", "  <a href=gone.html><a href=b.html><img src=i.gif>");
         const fs::path file = p.folder.native("site/index.html");
         fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
       },
       "changed", "index.html", Json()},
      {"another text at once", "",  // too fast for size and time; the link is looked for in vain
       [&](const Program& p) {
         p.Page("index.html", "<a href=gone.html>\n\n<a href=b.html><img src=i.gif>");
         const fs::path file = p.folder.native("site/index.html");
         fs::last_write_time(file, fs::last_write_time(p.folder.native("site/b.html")));
       },
       "changed", "", Json()},
      {"another text in the same second", "1 file has changed",
       [&](const Program& p) {
         using std::chrono::milliseconds;
         p.Page("index.html", "<a href=gone.html>\n\n<a href=b.html><img src=i.gif>");
         const auto read = fs::last_write_time(p.folder.native("site/b.html"));
         fs::last_write_time(p.folder.native("db/demo/PR"), read + milliseconds(400));
         fs::last_write_time(p.folder.native("site/index.html"), read + milliseconds(800));
       },
       "changed", "index.html", Json()},
      {"another page", "1 file has changed", [](const Program& p) { p.Page("b.html", "<p>"); },
       "changed", "b.html", 3},
      {"a sheet", "1 file has changed", [](const Program& p) { p.Page("s.css", "/* */"); },
       "changed", "s.css", 3},
      {"gone", "1 file is gone",
       [](const Program& p) { fs::remove(p.folder.native("site/i.gif")); }, "gone", "i.gif", 3},
      {"new", "1 file is new", [](const Program& p) { p.Page("d/new.html", ""); }, "new",
       "d/new.html", 3},
      {"nothing", "", [](const Program& p) { p.folder.write("beside.html", ""); }, "new", "", 3},
  };
  for (const Row& row : rows) {
    const Program program;
    program.Page("index.html", page);
    program.Page("b.html", "");
    program.Page("i.gif", "");
    program.Page("s.css", "");
    const auto read = std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::now()) -
                      std::chrono::hours(2);
    for (const char* name : {"index.html", "b.html", "s.css"}) {
      const fs::path file = program.folder.native(std::string("site/") + name);
      fs::last_write_time(file, read);
    }
    ASSERT_EQ(program.Build("demo").code, 0);
    row.change(program);
    const Outcome broken = program.Run({"broken", "demo", "--format", "json"});
    EXPECT_EQ(broken.err.find("zvrsit update demo") != std::string::npos, !row.told.empty())
        << row.what << broken.err;
    EXPECT_NE(broken.err.find(row.told), std::string::npos) << row.what << broken.err;
    EXPECT_EQ(broken.json()[row.list], row.name.empty() ? Json::array() : Json::array({row.name}))
        << row.what;
    EXPECT_EQ(Rows(broken.json())[0]["line"], row.line) << row.what;
    for (const char* question : {"links", "files", "unused", "family", "urls"}) {
      EXPECT_EQ(program.Run({question, "demo"}).err, broken.err) << row.what;
    }
    EXPECT_EQ(program.Run({"rebuild", "demo", "--diff"}).code, 0);
    EXPECT_EQ(program.Run({"broken", "demo"}).err, "") << row.what;
  }
}

// By the web rules every page that counts is read, wherever links find it.
TEST(Freshness, PagesThatTheWalkPassesByAreReadWhenLinksLeadThere) {
  const Program program;
  program.folder.write("shared/deep/a.html", "<a href=no1.html><a href=b.html>");
  program.folder.write("shared/deep/b.html", "<a href=no2.html>");
  program.Page("index.html",
               "<a href='c%23.html'><a href=linked/deep/a.html><a href=round/>"
               "<link rel=stylesheet href=linked/s.css>");
  program.folder.write("shared/s.css", "p { background: url(no.gif) }");
  program.Page("c#.html", "<a href=no3.html><a href='d%23/e.html'>");
  program.Page("d#/e.html", "<a href=no4.html>");
  program.Page("alone#.html", "<a href=no5.html>");
  fs::create_directory_symlink(program.folder.native("shared"),
                               program.folder.native("site/linked"));
  fs::create_directory_symlink(".", program.folder.native("site/round"));  // and round again
  const Outcome built = program.Build("demo", {"--top", program.folder.native("site/index.html")});
  const Outcome broken = program.Run({"broken", "demo", "--format", "json"});
  Words expected{"c#.html no3.html", "d#/e.html no4.html", "linked/deep/a.html no1.html",
                 "linked/deep/b.html no2.html", "linked/s.css no.gif"};
  EXPECT_EQ(Texts(Rows(broken.json())), expected);
  EXPECT_TRUE(built.complains("round/index.html: not read, as it is index.html by another name"))
      << built.err;
  const Json unread = broken.json()["unread"];
  EXPECT_EQ(unread, Json({"round/index.html", "alone#.html", "d#"}));
  EXPECT_NE(broken.err.find("alone#.html"), std::string::npos);
}

// What could not be read is remembered until it is.
TEST(Freshness, WhatWasNotReadIsToldEachTime) {
  for (const char* rules : {"web", "classic"}) {
    const Program program;
    program.Page("index.html", "<a href=large.html>");
    program.Page("large.html", "");
    const std::string large = program.folder.native("site/large.html");
    ASSERT_EQ(truncate(large.c_str(), off_t{1} << 31), 0);
    program.Page("back\\slash.html", "<a href=no.html>");
    EXPECT_EQ(program.Build("demo", {"--rules", rules}).code, 4);
    for (int i = 0; i < 2; ++i) {
      const Outcome broken = program.Run({"broken", "demo", "--format", "json"});
      EXPECT_EQ(broken.json()["unread"], Json::array({"large.html", "back\\slash.html"}));
      EXPECT_TRUE(broken.complains("large.html")) << broken.err;
    }
    const Json checked = program.Ask({"check", program.folder.native("site"), "--rules", rules});
    EXPECT_EQ(checked["unread"].size(), 2u);

    program.Page("large.html", "<a href=no.html>");
    fs::remove(program.folder.native("site/back\\slash.html"));
    EXPECT_EQ(program.Run({"save", "demo", large}).code, 0);
    const Outcome broken = program.Run({"broken", "demo"});
    EXPECT_EQ(broken.err, "");
    EXPECT_EQ(broken.code, 1);
  }
}

// A page that a save was the first to link to was read by nobody.
TEST(Freshness, ASavedPageMayLeadToOneThatWasNeverRead) {
  const Program program;
  program.Page("index.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  program.Page("new.html", "<a href=no.html>");
  program.Page("index.html", "<a href=new.html>");
  const auto save = [&](const char* name) {
    return program.Run({"save", "demo", program.folder.native(std::string("site/") + name)}).code;
  };
  EXPECT_EQ(save("index.html"), 0);
  EXPECT_EQ(program.Ask({"broken", "demo"})["unread"], Json::array({"new.html"}));
  EXPECT_EQ(save("new.html"), 0);
  const Json broken = program.Ask({"broken", "demo"});
  EXPECT_EQ(broken["unread"], Json::array());
  EXPECT_EQ(Texts(Rows(broken)), Words{"new.html no.html"});
}

// In the folder of a site a check brings the tables up to date; not when it is to look at the
// folder by other rules, and not when it cannot write them. The findings are the same.
TEST(Freshness, ACheckUpdatesTheSiteThatItIsAskedAbout) {
  struct Row {
    Words words;
    bool updates;
  };
  const Row rows[] = {
      {{"check", "site"}, true},
      {{"check", "site/sub"}, true},
      {{"check", "site/sub/a.html", "--base-url", ""}, true},
      {{"check", "site", "--rules", "classic"}, false},
      {{"check", "site", "--fallback-extensions", "html"}, false},
  };
  for (const Row& row : rows) {
    const Program program;
    program.Page("index.html", "<a href=sub/a.html>");
    program.Page("sub/a.html", "");
    ASSERT_EQ(program.Build("demo").code, 0);
    program.Page("sub/a.html", "<a href=gone.html>");
    Words words = row.words;
    words[1] = program.folder.native(words[1]);
    SCOPED_TRACE(words.size() > 2 ? words[2] : words[1]);
    const Json report = program.Ask(words);
    EXPECT_EQ(Texts(Rows(report)), Words{"sub/a.html gone.html"}) << report;
    EXPECT_EQ(program.Run({"files", "demo"}).err.empty(), row.updates);
  }
}

}  // namespace
}  // namespace zvrsit::test
