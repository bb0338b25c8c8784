// Sites that are damaged, hostile or gone.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

TEST(BadInput, ASiteThatIsGone) {
  const Program program;
  program.Page("home.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  for (const char* name : {"site/home.html", "site"}) {
    fs::rename(program.folder.native(name), program.folder.native("away"));
    for (const Words& words : {Words{"rebuild", "demo"}, Words{"links", "demo"}}) {
      const Outcome outcome = program.Run(words);
      EXPECT_EQ(outcome.code, 4);
      EXPECT_TRUE(outcome.complains(program.folder.native(name))) << outcome.err;
    }
    fs::rename(program.folder.native("away"), program.folder.native(name));
  }
  EXPECT_EQ(program.Run({"links", "demo"}).code, 0);
}

// From here on the programs that are run obey the permissions of files, also those of root.
bool ObeyPermissions() {
  if (geteuid() != 0) return true;
  return prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) == 0 &&
         prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0) == 0;
}

// What cannot be read is named; all the rest has its links.
TEST(BadInput, PagesAndFoldersThatCannotBeRead) {
  if (!ObeyPermissions()) GTEST_SKIP() << "this system lets the program read everything";
  const Program program;
  program.Page("index.html", "<a href=locked.html><a href=in/a.html><a href=z.html>");
  program.Page("locked.html", "<a href=index.html>");
  program.Page("in/a.html", "<a href=../index.html>");
  program.Page("z.html", "<a href=index.html>");
  const std::string page = program.folder.native("site/locked.html");
  const std::string inside = program.folder.native("site/in");
  chmod(page.c_str(), 0);
  const Outcome rebuilt = program.Build("demo");
  EXPECT_EQ(rebuilt.code, 4);
  EXPECT_TRUE(rebuilt.complains(page)) << rebuilt.err;
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), 5u);
  const Outcome saved = program.Run({"save", "demo", page});
  EXPECT_EQ(saved.code, 4);
  EXPECT_TRUE(saved.complains(page)) << saved.err;
  chmod(page.c_str(), 0600);
  EXPECT_EQ(program.Run({"save", "demo", page}).code, 0);

  chmod(inside.c_str(), 0);
  const Outcome again = program.Run({"rebuild", "demo"});
  EXPECT_EQ(program.Ask({"broken", "demo"})["unread"], Json::array({"in/"}));
  chmod(inside.c_str(), 0700);
  EXPECT_EQ(again.code, 4);
  EXPECT_TRUE(again.complains(inside)) << again.err;
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), 6u);
}

TEST(BadInput, NamesThatNeedCare) {
  const Program program;
  program.Page("index.html",
               "<a href='a%20b.html'><a href='a b.html'><a href='100%25.html'><a href='q\".html'>"
               "<a href=\"q'.html\"><a href='new%0Aline.html'><a href='%C3%A9.html'>"
               "<a href='%1b[31m.html'><a href='back%5Cslash.html'>");
  for (const char* name : {"a b.html", "100%.html", "q\".html", "q'.html", "new\nline.html",
                           "\xC3\xA9.html", "\x1b[31m.html", "back\\slash.html"}) {
    program.Page(name, "<a href=index.html>");
  }
  ASSERT_EQ(program.Build("demo").code, 0);
  EXPECT_EQ(program.Ask({"links", "demo", "--to", "index.html"}).size(), 7u);
  EXPECT_EQ(program.Ask({"links", "demo", "--to", "a b.html"}).size(), 2u);
  EXPECT_EQ(program.Ask({"links", "demo", "--to", "new\nline.html"}).size(), 1u);
  const Outcome text = program.Run({"files", "demo"});
  EXPECT_NE(text.out.find("new\\nline.html\n"), std::string::npos);
  EXPECT_EQ(text.out.find('\x1b'), std::string::npos);
  const Outcome slash = program.Run({"links", "demo", "--from", "back\\slash.html"});
  EXPECT_EQ(slash.code, 2);
  EXPECT_TRUE(slash.complains());
}

// Bytes that are no UTF-8 are escaped in JSON, and what looks like an escape is told from one.
TEST(BadInput, NamesThatAreNotUtf8) {
  const Program program;
  program.Page("index.html", "<a href='caf%E9.html'><a href='%E3%81.html'>");
  program.Page("caf\xE9.html", "<title>caf\xC3\xA9</title><a href=index.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const Json files = program.Ask({"files", "demo"});
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0]["name"], "caf\\xE9.html");
  EXPECT_EQ(files[0]["title"], "caf\xC3\xA9");
  EXPECT_EQ(files[2]["name"], "\\xE3\\x81.html");
  EXPECT_EQ(program.Ask({"links", "demo", "--from", "caf\xE9.html"})[0]["from"], "caf\\xE9.html");
  const struct {
    const char* given;
    const char* json;
    const char* line;
  } rows[] = {{"\xE9\\", "\\xE9\\\\", "\xE9\\\\"},
              {"C:\\xE9", "C:\\\\xE9", "C:\\\\xE9"},
              {"C:\\\\xE9", "C:\\\\\\\\xE9", "C:\\\\\\\\xE9"},
              {"C:\\new", "C:\\new", "C:\\\\new"}};
  for (const auto& row : rows) {
    ASSERT_EQ(program.Run({"server", "set", "host", "--host", row.given}).code, 0);
    EXPECT_EQ(program.Ask({"server", "show", "host"})["host"], row.json);
    const std::string shown = program.Run({"server", "show", "host"}).out;
    EXPECT_NE(shown.find(" " + std::string(row.line) + "\n"), std::string::npos) << shown;
  }
}

// The program's own database is no part of a site that it lies in.
TEST(BadInput, ADatabaseInTheSite) {
  const Program program;
  program.Page("index.html", "");
  program.Page("db/index.html", "");
  const std::string site = program.folder.native("site");
  const Words db{"--db", site + "/in/db", "--format", "json"};
  const auto run = [&](Words words) {
    words.insert(words.end(), db.begin(), db.end());
    return Process(program.folder, words).Wait().json();
  };
  run({"add", "demo", site});
  EXPECT_EQ(run({"rebuild", "demo"})["files"], 2);
}

// Whatever is checked, and however it ends, no temporary database is left.
TEST(BadInput, ACheckLeavesNothingBehind) {
  const Program program;
  program.Page("deep/down/page.html", "<a href=nix>");
  program.folder.makeFolder("empty");
  EXPECT_EQ(program.Run({"check", program.folder.native("site")}).code, 1);
  const Outcome none = program.Run({"check", program.folder.native("empty")});
  EXPECT_EQ(none.code, 4);
  EXPECT_TRUE(none.complains("no page"));
  EXPECT_TRUE(fs::is_empty(program.folder.native("db")));
}

// What is copied or made in the temporary folder is gone, however early a question is interrupted.
TEST(BadInput, AnInterruptLeavesNothingBehind) {
  const Program program;
  std::string page;
  for (int i = 0; i < 2000; ++i) page += "<a href=none" + std::to_string(i) + ".html>";
  program.Page("index.html", page);
  program.BuildOlder("demo");
  program.folder.makeFolder("tmp");
  setenv("TMPDIR", program.folder.native("tmp").c_str(), 1);
  for (const Words& words : {Words{"legacy", "links", "demo", "--db", program.folder.native("db")},
                             Words{"check", program.folder.native("site")}}) {
    int interrupted = 0;
    for (int wait = 0; wait < 60; wait += 2) {
      Process asking(program.folder, words);
      std::this_thread::sleep_for(std::chrono::milliseconds(wait));
      asking.Interrupt();
      const int code = asking.Wait().code;
      if (code == -1 || code == 130) ++interrupted;
      EXPECT_TRUE(fs::is_empty(program.folder.native("tmp"))) << words[0] << wait;
    }
    EXPECT_GT(interrupted, 0);
  }
  unsetenv("TMPDIR");
}

}  // namespace
}  // namespace zvrsit::test
