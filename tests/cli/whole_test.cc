// Answers come from a database that is whole, or not at all.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "cli/program.h"
#include "support/own_mounts.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kQuestions[] = {"links", "broken", "unused", "family", "files", "urls"};

void ExpectNoAnswers(const Program& program, const std::string& why) {
  for (const char* question : kQuestions) {
    const Outcome outcome = program.Run({question, "demo"});
    EXPECT_EQ(outcome.code, 3) << question << why;
    EXPECT_TRUE(outcome.complains("zvrsit rebuild demo")) << outcome.err;
    EXPECT_EQ(outcome.out, "") << question << why;
  }
}

// A page with so many links to files that are not there.
std::string BrokenLinks(int count) {
  std::string page;
  for (int i = 0; i < count; ++i) page += "<a href=none" + std::to_string(i) + ".html>";
  return page;
}

TEST(Whole, NoAnswersBeforeARebuild) {
  const Program program;
  program.Page("index.html", BrokenLinks(1));
  ASSERT_EQ(program.Run({"add", "demo", program.folder.native("site")}).code, 0);
  ExpectNoAnswers(program, " of a new site");
  ASSERT_EQ(program.Run({"save", "demo", "index.html"}).code, 0);
  ExpectNoAnswers(program, " of a saved page");
  ASSERT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Run({"broken", "demo"}).code, 1);
  ASSERT_EQ(program.Run({"site", "set", "demo", "--rules", "classic"}).code, 0);
  ExpectNoAnswers(program, " by other rules");
}

// Killed at any moment, a rebuild leaves what was there before it, or what it was to leave.
TEST(Whole, AKilledRebuildLeavesOneOrTheOther) {
  const Program program;
  program.Page("index.html", BrokenLinks(1));
  for (int i = 0; i < 150; ++i) program.Page("p" + std::to_string(i) + ".html", BrokenLinks(20));
  ASSERT_EQ(program.Build("demo").code, 0);
  std::size_t before = program.Broken().size();
  int killed = 0;
  for (int wait = 5; wait < 400 && killed < 8; wait += wait / 3) {
    program.Page("index.html", BrokenLinks(1 + wait));
    Process rebuild(program.folder, {"rebuild", "demo", "--db", program.folder.native("db")});
    std::this_thread::sleep_for(std::chrono::milliseconds(wait));
    rebuild.Kill();
    if (rebuild.Wait().code == -1) ++killed;
    const Outcome broken = program.Run({"broken", "demo", "--format", "json"});
    EXPECT_EQ(broken.code, 1) << wait << broken.err;
    const std::size_t rows = Rows(broken.json()).size();
    EXPECT_TRUE(rows == before || rows == 3000u + 1 + static_cast<std::size_t>(wait)) << rows;
    before = rows;
  }
  EXPECT_GT(killed, 0);
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_FALSE(program.folder.has("db/demo/new"));
}

// Killed while its files were moved to their places, it is ended by whoever comes next.
TEST(Whole, AFinishedRebuildIsPutInPlace) {
  for (const char* next : {"broken", "rebuild", "save"}) {
    const Program program;
    program.Page("index.html", BrokenLinks(1));
    ASSERT_EQ(program.Build("demo").code, 0);
    const fs::path tables = program.folder.native("db/demo");
    const fs::path old = program.folder.native("old");
    fs::copy(tables, old);
    program.Page("index.html", BrokenLinks(500));
    ASSERT_EQ(program.Run({"rebuild", "demo"}).code, 0);
    const fs::path finished = program.folder.native("finished");
    fs::copy(tables, finished);
    for (std::size_t moved = 0; moved <= 10; moved += 5) {
      fs::remove_all(tables);
      fs::copy(old, tables);
      fs::copy(finished, tables / "done");
      std::size_t count = 0;
      for (const auto& file : fs::directory_iterator(finished)) {
        if (count++ >= moved) break;
        fs::rename(tables / "done" / file.path().filename(), tables / file.path().filename());
      }
      Words words{next, "demo"};
      if (next == std::string("save")) words.push_back("index.html");
      EXPECT_LE(program.Run(words).code, 1) << next << moved;
      EXPECT_FALSE(program.folder.has("db/demo/done")) << next << moved;
      EXPECT_EQ(program.Broken().size(), 500u) << next << moved;
    }
  }
}

// Killed by the first write past so many bytes of a file, a command leaves the answers that there
// were.
TEST(Whole, KilledWhileTheTablesAreWritten) {
  const Program program;
  program.Page("index.html", BrokenLinks(3));
  ASSERT_EQ(program.Build("demo").code, 0);
  program.Page("index.html", BrokenLinks(500));
  std::signal(SIGXFSZ, SIG_DFL);
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const auto kill = [&](const Words& words) {
    const rlimit limit{6000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(program.Run(words).code, -1) << words[0];
    setrlimit(RLIMIT_FSIZE, &before);
  };
  kill({"rebuild", "demo"});
  EXPECT_TRUE(program.folder.has("db/demo/new"));
  EXPECT_EQ(program.Broken().size(), 3u);
  kill({"save", "demo", "index.html"});
  EXPECT_EQ(program.Ask({"sites"})[0]["state"], "rebuilt");
  EXPECT_EQ(program.Broken().size(), 3u);
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Broken().size(), 500u);
  program.Page("more.html", BrokenLinks(400));
  kill({"update", "demo"});
  EXPECT_EQ(program.Broken().size(), 500u);
  EXPECT_EQ(program.Run({"update", "demo"}).code, 0);
  EXPECT_EQ(program.Broken().size(), 900u);
  // What was left unfinished is of no site that gets the name later.
  kill({"rebuild", "demo"});
  EXPECT_EQ(program.Run({"site", "delete", "demo"}).code, 0);
  EXPECT_FALSE(program.folder.has("db/demo"));
}

TEST(Whole, AFullDiskKeepsTheAnswersThatThereWere) {
  if (!OwnMounts()) GTEST_SKIP() << "this system lets no test mount";
  const Program program;
  program.Page("index.html", BrokenLinks(10));
  program.folder.makeFolder("db");
  const SmallDisk disk(program.folder.native("db"), 1 << 20);
  ASSERT_TRUE(disk.isThere());
  disk.Fill();
  const Outcome added = program.Run({"add", "demo", program.folder.native("site")});
  EXPECT_EQ(added.code, 4);
  EXPECT_TRUE(added.complains("No space left on device")) << added.err;
  disk.Empty();
  ASSERT_EQ(program.Build("demo").code, 0);

  program.Page("index.html", BrokenLinks(2000));
  disk.Fill();
  const Outcome rebuilt = program.Run({"rebuild", "demo"});
  EXPECT_EQ(rebuilt.code, 4);
  EXPECT_TRUE(rebuilt.complains("No space left on device")) << rebuilt.err;
  EXPECT_EQ(program.Broken().size(), 10u);
  EXPECT_EQ(program.Ask({"sites"})[0]["state"], "rebuilt");
  const Outcome saved = program.Run({"save", "demo", "index.html"});
  EXPECT_EQ(saved.code, 4);
  EXPECT_TRUE(saved.complains("No space left on device")) << saved.err;
  EXPECT_EQ(program.Broken().size(), 10u);
  disk.Empty();
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Broken().size(), 2000u);
}

// An answer but for how long it took.
std::string WithoutTime(const std::string& answer) {
  return answer.substr(0, answer.rfind(" looked at in "));
}

// With and without its lock file. What is made meanwhile in the temporary folder is gone
// afterwards.
TEST(Whole, AReadOnlyMediumCanBeAsked) {
  if (!OwnMounts()) GTEST_SKIP() << "this system lets no test mount";
  const Program program;
  program.Page("index.html", "<a href=b.html><a href=http://example.org/><a href=none.html>");
  program.Page("b.html", "");
  program.folder.makeFolder("db");
  program.folder.makeFolder("tmp");
  setenv("TMPDIR", program.folder.native("tmp").c_str(), 1);
  const SmallDisk disk(program.folder.native("db"), 1 << 20);
  ASSERT_TRUE(disk.isThere());
  ASSERT_EQ(program.Build("demo").code, 0);
  program.BuildOlder("demo");
  ASSERT_EQ(program.Run({"server", "set", "host", "--host", "h"}).code, 0);
  std::vector<Words> questions{{"sites"},
                               {"site", "show", "demo"},
                               {"server", "show", "host"},
                               {"legacy", "sites"},
                               {"legacy", "links", "demo"},
                               {"legacy", "broken", "demo"},
                               {"legacy", "peek", "demo"},
                               {"legacy", "links", "none"}};
  for (const char* question : kQuestions) questions.push_back({question, "demo"});
  std::vector<Outcome> asked;
  for (const Words& question : questions) asked.push_back(program.Run(question));
  for (const bool hasLock : {true, false}) {
    if (!hasLock) fs::remove(program.folder.native("db/lock"));
    ASSERT_TRUE(disk.SetReadOnly(true));
    for (std::size_t i = 0; i < asked.size(); ++i) {
      const Outcome outcome = program.Run(questions[i]);
      EXPECT_EQ(WithoutTime(outcome.out), WithoutTime(asked[i].out)) << outcome.err;
      EXPECT_EQ(outcome.code, asked[i].code) << Json(questions[i]);
      EXPECT_EQ(outcome.code == 2, questions[i].back() == "none") << Json(questions[i]);
    }
    const std::string report = program.folder.native("report.html");
    EXPECT_EQ(program.Run({"report", "demo", "-o", report}).code, 0);
    for (const Words& words :
         {Words{"rebuild", "demo"}, Words{"save", "demo", "b.html"},
          Words{"site", "delete", "demo"}, Words{"legacy", "rebuild", "demo"}}) {
      const Outcome outcome = program.Run(words);
      EXPECT_EQ(outcome.code, 4) << words[0];
      EXPECT_TRUE(outcome.complains("Read-only file system")) << outcome.err;
    }
    ASSERT_TRUE(disk.SetReadOnly(false));
  }
  EXPECT_TRUE(fs::is_empty(program.folder.native("tmp")));
  unsetenv("TMPDIR");
}

}  // namespace
}  // namespace zvrsit::test
