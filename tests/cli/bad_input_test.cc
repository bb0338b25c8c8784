// Sites that are damaged, hostile or gone, and databases that something else has written into.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

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
              {"C:\\new", "C:\\new", "C:\\\\new"},
              {"a\xC2\x9B"
               "b\xC2\xA0",
               "a\xC2\x9B"
               "b\xC2\xA0",
               "a\\u009bb\xC2\xA0"},
              {"a\xE2\x80\xAE\xE2\x82\xAC", "a\xE2\x80\xAE\xE2\x82\xAC", "a\\u202e\xE2\x82\xAC"}};
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

Words FilesBelow(const std::string& folder) {
  Words files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && entry.file_size() > 0) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The bytes cut short at telling places, and with words spoiled all over.
Words Damages(const std::string& bytes) {
  Words damaged;
  for (const std::size_t length : {std::size_t{0}, std::size_t{24}, bytes.size() - 1}) {
    damaged.push_back(bytes.substr(0, std::min(length, bytes.size())));
  }
  const std::size_t step = std::max<std::size_t>(bytes.size() / 4, 4) & ~std::size_t{3};
  std::uint32_t word = 0xFFFFFFFF;
  for (std::size_t at = 16; at + 4 <= bytes.size(); at += step) {
    damaged.push_back(bytes);
    damaged.back().replace(at, 4, Word(word));
    word ^= 0x8000000F;  // turns into the most and back
  }
  return damaged;
}

// Never a crash or a hang; and what can be mended by a rebuild is not made worse by asking.
TEST(Damage, EndsInAnAnswerOrOneLine) {
  const Program program;
  program.Page("index.html", "<title>T</title><a name=n><a href=a.html><a href=http://x.org/>");
  program.Page("a.html", "<a href=index.html><img src=no.gif>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const std::string links = program.Run({"links", "demo", "--format", "json"}).out;
  const std::string db = program.folder.native("db");
  const std::string copy = program.folder.native("copy");
  fs::copy(db, copy, fs::copy_options::recursive);
  const Words files = FilesBelow(db);
  ASSERT_GE(files.size(), 12u);
  for (const std::string& file : files) {
    for (const std::string& damaged : Damages(ReadWhole(file))) {
      WriteWhole(file, damaged);
      for (const char* command : {"family", "rebuild"}) {
        const Outcome outcome = program.Run({command, "demo"});
        EXPECT_GE(outcome.code, 0) << file << " " << command << ToHex(damaged.substr(0, 64));
        EXPECT_TRUE(outcome.code < 2 || outcome.complains()) << outcome.err;
      }
      fs::remove_all(db);
      fs::copy(copy, db, fs::copy_options::recursive);
    }
  }
  EXPECT_EQ(program.Run({"links", "demo", "--format", "json"}).out, links);
}

// What is lost is never an empty answer, and a rebuild brings it back.
TEST(Damage, LostTablesComeBackWithARebuild) {
  const Program program;
  program.Page("index.html", "<a href=a.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  const std::string tables = program.folder.native("db/demo");
  const std::function<void()> losses[] = {
      [&] { program.folder.write("db/demo/LR", std::string(100, 'x')); },
      [&] { program.folder.write("db/demo/LS", ""); },
      [&] { fs::remove(tables + "/PR"); },
      [&] { fs::remove_all(tables); },
  };
  for (const auto& lose : losses) {
    lose();
    for (const Words& words :
         {Words{"broken", "demo"}, Words{"save", "demo", "index.html"}, Words{"broken", "demo"}}) {
      const Outcome damaged = program.Run(words);
      EXPECT_EQ(damaged.code, 3);
      EXPECT_TRUE(damaged.complains(tables)) << damaged.err;
    }
    EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
    EXPECT_EQ(program.Broken().size(), 1u);
  }
}

// A change that stops half-way leaves no site that is asked.
TEST(Damage, AFailedChangeIsToBeMendedFirst) {
  const Program program;
  program.Page("index.html", "");
  program.Page("page.html", "<a href=a.html><a href=b.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  std::string table = program.folder.read("db/demo/LR");
  table.replace(table.size() - 24, 4, Word(0x7FFFFF));  // the last link has no text
  program.folder.write("db/demo/LR", table);
  const Outcome outcome = program.Run({"save", "demo", "page.html"});
  EXPECT_EQ(outcome.code, 3);
  EXPECT_TRUE(outcome.complains("zvrsit rebuild demo")) << outcome.err;
  EXPECT_EQ(program.Run({"links", "demo"}).code, 3);
}

// Where not even the mark can be written that the tables are being changed, they are not.
TEST(Damage, WhatCannotBeMarkedIsNotChanged) {
  const Program program;
  program.Page("index.html", "<a href=a.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  program.Page("index.html", "<a href=b.html><a href=c.html>");
  EXPECT_EQ(program.RunOnFullDisk({"save", "demo", "index.html"}, 24).code, 4);
  EXPECT_EQ(program.Broken().size(), 1u);
}

// A profile is changed or it is not: there is none without a name, and no tables without one.
TEST(Damage, AFullDiskLeavesWholeProfiles) {
  const struct {
    Words words;
    rlim_t size;
    int code;
  } rows[] = {
      {{"site", "delete", "demo"}, 0, 4},
      {{"site", "delete", "demo"}, 24, 4},
      {{"site", "delete", "demo"}, 100, 4},
      {{"site", "delete", "demo"}, 150, 4},
      {{"site", "rename", "demo", "new"}, 24, 4},
      {{"site", "rename", "demo", "new"}, 200, 4},
      {{"server", "delete", "host"}, 24, 4},
      {{"server", "delete", "host"}, 60, 4},
      {{"server", "delete", "host", "--force"}, 24, 4},
      {{"server", "delete", "host", "--force"}, 100, 4},
  };
  for (const auto& row : rows) {
    const Program program;
    program.Page("index.html", "<a href=a.html>");
    ASSERT_EQ(program.Build("demo").code, 0);
    ASSERT_EQ(program.Run({"server", "set", "host"}).code, 0);
    if (row.words.size() == 4) program.Run({"site", "set", "demo", "--server", "host"});
    const Outcome outcome = program.RunOnFullDisk(row.words, row.size);
    EXPECT_EQ(outcome.code, row.code) << Json(row.words) << row.size;
    // Less is too little for the message, too, which goes to a file.
    EXPECT_TRUE(row.code == 0 || row.size < 100 || outcome.complains("File too large"))
        << outcome.err;
    const Json sites = program.Ask({"sites"});
    for (const Json& site : sites) EXPECT_EQ(site["name"], "demo") << Json(row.words) << row.size;
    EXPECT_EQ(program.folder.has("db/demo"), row.code != 0) << Json(row.words) << row.size;
    EXPECT_TRUE(!sites.empty() || program.Build("demo").code == 0) << Json(row.words) << row.size;
    EXPECT_EQ(program.Run({"broken", "demo"}).code, 1) << Json(row.words) << row.size;
  }
}

}  // namespace
}  // namespace zvrsit::test
