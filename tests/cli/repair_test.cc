// Commands that change the files of a site and mend its links.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

using Content = std::map<std::string, std::string>;

Content ReadSite(const Program& program) {
  const fs::path site = program.folder.native("site");
  Content content;
  for (const auto& entry : fs::recursive_directory_iterator(site)) {
    if (!entry.is_regular_file()) continue;
    content[fs::relative(entry.path(), site).generic_string()] = ReadWhole(entry.path().string());
  }
  return content;
}

std::string Utf16(const std::string& ascii) {
  std::string text = "\xFF\xFE";
  for (const char c : ascii) text.append({c, '\0'});
  return text;
}

const Content kSite = {
    {"index.html", "<a href=news/a.html>a</a>\n<a href='news/b.html#x'>b</a>\n<img src=img/i.png>"},
    {"news/a.html", "<a id=top href=\"../index.html\">up</a>\n<a href=b.html>b</a>"},
    {"news/b.html", "<p id=x>\n<a href=A.html>\n<a href=lost.html>"},
    {"other/lost.html", ""},
    {"img/i.png", "png"},
    {"unused.html", ""},
    {"wide.html", Utf16("<p>\n<img src=img/w.png>\n\n<p>")},
    {"img/w.png", ""},
};

void Build(const Program& program, const Content& site = kSite) {
  for (const char* folder : {"site", "db"}) fs::remove_all(program.folder.native(folder));
  for (const auto& [name, bytes] : site) program.folder.write("site/" + name, bytes);
  ASSERT_EQ(program.Build("demo").code, 0);
}

TEST(Repair, EachCommandChangesWhatItSays) {
  struct Row {
    Words words;
    Content after;  // the files that are other ones; "-" for one that is gone
  };
  const Row rows[] = {
      {{"mv", "demo", "news/a.html", "a.html"},
       {{"news/a.html", "-"},
        {"a.html", "<a id=top href=\"index.html\">up</a>\n<a href=news/b.html>b</a>"},
        {"index.html",
         "<a href=a.html>a</a>\n<a href='news/b.html#x'>b</a>\n<img src=img/i.png>"}}},
      {{"mv", "demo", "img/i.png", "news/"},
       {{"img/i.png", "-"},
        {"news/i.png", "png"},
        {"index.html",
         "<a href=news/a.html>a</a>\n<a href='news/b.html#x'>b</a>\n<img src=news/i.png>"}}},
      {{"mv", "demo", "index.html", "home.html"},
       {{"index.html", "-"},
        {"home.html", kSite.at("index.html")},
        {"news/a.html", "<a id=top href=\"../home.html\">up</a>\n<a href=b.html>b</a>"}}},
      {{"rm", "demo", "unused.html"}, {{"unused.html", "-"}}},
      {{"rm", "demo", "news/a.html", "news", "news", "news/b.html", "--recursive", "--force"},
       {{"news/a.html", "-"}, {"news/b.html", "-"}}},
      {{"rm", "demo", "img", "--recursive", "--force"}, {{"img/i.png", "-"}, {"img/w.png", "-"}}},
      {{"mv", "demo", "img/w.png", "w.png"},
       {{"img/w.png", "-"}, {"w.png", ""}, {"wide.html", Utf16("<p>\n<img src=w.png>\n\n<p>")}}},
      {{"rm", "demo", "news/a.html", "--links-to", "unused.html"},
       {{"news/a.html", "-"},
        {"index.html",
         "<a href=unused.html>a</a>\n<a href='news/b.html#x'>b</a>\n<img src=img/i.png>"}}},
      {{"rename-id", "demo", "news/b.html", "x", "y"},
       {{"news/b.html", "<p id=y>\n<a href=A.html>\n<a href=lost.html>"},
        {"index.html",
         "<a href=news/a.html>a</a>\n<a href='news/b.html#y'>b</a>\n<img src=img/i.png>"}}},
      {{"fix", "demo", "--wrong-case"},
       {{"news/b.html", "<p id=x>\n<a href=a.html>\n<a href=lost.html>"}}},
      {{"fix", "demo", "--moved"},
       {{"news/b.html", "<p id=x>\n<a href=A.html>\n<a href=../other/lost.html>"}}},
  };
  for (const Row& row : rows) {
    const Program program;
    Build(program);
    SCOPED_TRACE(row.words[0] + " " + row.words[2]);
    Words words = row.words;
    words.push_back("--dry-run");
    const Outcome diff = program.Run(words);
    EXPECT_EQ(diff.code, 0) << diff.err;
    EXPECT_EQ(ReadSite(program), kSite);
    const Outcome outcome = program.Run(row.words);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_NE(outcome.out, "");
    Content after = kSite;
    for (const auto& [name, bytes] : row.after) {
      if (bytes == "-") after.erase(name);
      if (bytes != "-") after[name] = bytes;
    }
    EXPECT_EQ(ReadSite(program), after);
    EXPECT_EQ(program.Run({"files", "demo"}).err, "");  // the tables know of it
    EXPECT_FALSE(program.folder.has("db/demo/repair"));
    // What the dry run said can be applied by another program.
    Build(program);
    program.folder.write("diff", diff.out);
    const std::string site = program.folder.native("site");
    EXPECT_EQ(std::system(("cd '" + site + "' && git apply ../diff").c_str()), 0) << diff.out;
    EXPECT_EQ(ReadSite(program), after);
  }
}

TEST(Repair, RefusesAndLeavesEverythingAsItIs) {
  struct Row {
    Words words;
    int code;
    const char* says;
  };
  const Row rows[] = {
      {{"mv", "demo", "none.html", "x.html"}, 2, "knows no such file"},
      {{"mv", "demo", "unused.html", "news/a.html"}, 4, "is there already"},
      {{"mv", "demo", "unused.html", "../../out.html"}, 2, "outside of the site"},
      {{"mv", "demo", "news", "news/below"}, 2, "into itself"},
      {{"rm", "demo", "img"}, 2, "--recursive"},
      {{"rm", "demo", "index.html", "--force"}, 2, "home page"},
      {{"rm", "demo", "news/a.html"}, 1, "--links-to"},
      {{"rm", "demo", "news/a.html", "--links-to", "news/a.html"}, 2, "removed too"},
      {{"rename-id", "demo", "news/b.html", "none", "y"}, 2, "no ID"},
      {{"fix", "demo"}, 2, "--wrong-case"},
  };
  const Program program;
  Build(program);
  for (const Row& row : rows) {
    const Outcome outcome = program.Run(row.words);
    EXPECT_EQ(outcome.code, row.code) << row.says << outcome.err;
    EXPECT_NE(outcome.err.find(row.says), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadSite(program), kSite) << row.says;
  }
}

// A reference that cannot be written anew is no success.
TEST(Repair, TellsWhatItLeaves) {
  const Program program;
  Build(program);
  program.folder.write("site/news/sub.php", "<a href=\"<?= $dir ?>\\a.html\">");
  for (const bool isDry : {true, false}) {
    Words words{"mv", "demo", "news/sub.php", "sub.php"};
    if (isDry) words.emplace_back("--dry-run");
    const Outcome outcome = program.Run(words);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.err.find("x7f\\\\a.html stays as it is: holds server code\n"),
              std::string::npos)
        << outcome.err;
  }
}

TEST(Repair, LinksFollowWhatWasMovedBefore) {
  const Program program;
  Build(program);
  fs::rename(program.folder.native("site/img"), program.folder.native("site/pictures"));
  EXPECT_EQ(program.Run({"mv", "demo", "img/i.png", "pictures/i.png"}).code, 0);
  EXPECT_NE(program.folder.read("site/index.html").find("src=pictures/i.png"), std::string::npos);
}

// Killed at any moment, a move is there as a whole or not at all, once the program has run again.
TEST(Repair, AKilledMoveIsFinishedOrUndone) {
  const Program program;
  Content before;
  Content after;
  for (int i = 0; i < 150; ++i) {
    const std::string name = "page" + std::to_string(i) + ".html";
    before[name] = after[name] = "<a href=part/" + name + "><a href=index.html>";
    after[name].replace(8, 4, "sub/part");
    before["part/" + name] = after["sub/part/" + name] = "<a href=../" + name + ">";
    after["sub/part/" + name].replace(8, 2, "../..");
  }
  before["index.html"] = after["index.html"] = "";
  std::mt19937 random(5);
  int undone = 0;
  int done = 0;
  for (int round = 0; round < 12; ++round) {
    Build(program, before);
    const auto begin = std::chrono::steady_clock::now();
    Process move(program.folder,
                 {"mv", "demo", "part", "sub/part", "--db", program.folder.native("db")});
    // In the first round, to the end: it says how long the others may take.
    static std::chrono::steady_clock::duration whole;
    if (round > 0) {
      std::this_thread::sleep_for(whole * (random() % 100) / 100);
      move.Kill();
    }
    move.Wait();
    if (round == 0) whole = std::chrono::steady_clock::now() - begin;
    const Outcome asked = program.Run({"update", "demo"});
    ASSERT_EQ(asked.code, 0) << asked.err;
    const Content now = ReadSite(program);
    ASSERT_TRUE(now == before || now == after) << "round " << round;
    ++(now == before ? undone : done);
    EXPECT_EQ(program.Broken().size(), 0u);
    EXPECT_FALSE(program.folder.has("db/demo/repair"));
  }
  EXPECT_GT(done, 0);
  EXPECT_GT(undone, 0);
}

}  // namespace
}  // namespace zvrsit::test
