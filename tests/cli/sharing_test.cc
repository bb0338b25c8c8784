// Several processes on one database.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

constexpr off_t kOlder = (1 << 26) + 1;

// A lock as another process would have it, on a byte of the database's lock file: 0 the profiles,
// from 1 on the sites, kOlder the older database.
class Lock {
 public:
  Lock(const Program& program, short kind, off_t byte)
      : fd_(open(program.folder.native("db/lock").c_str(), O_RDWR | O_CLOEXEC)) {
    struct flock range = {};
    range.l_type = kind;
    range.l_start = byte;
    range.l_len = 1;
    EXPECT_EQ(fcntl(fd_, F_OFD_SETLK, &range), 0);
  }
  ~Lock() { close(fd_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  int fd_;
};

TEST(Sharing, QuestionsShareASiteAndChangesDoNot) {
  const Program program;
  program.Page("index.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  ASSERT_EQ(program.Build("other").code, 0);
  program.BuildOlder("demo");
  const struct {
    short kind;
    off_t byte;
    Words words;
    int code;
  } rows[] = {
      {F_RDLCK, 1, {"links", "demo"}, 0},
      {F_RDLCK, 1, {"save", "demo", "index.html"}, 3},
      {F_WRLCK, 1, {"family", "demo"}, 3},
      {F_WRLCK, 1, {"links", "other"}, 0},
      {F_WRLCK, 1, {"rebuild", "other"}, 0},
      {F_WRLCK, 1, {"sites"}, 0},
      {F_RDLCK, 0, {"sites"}, 0},
      {F_WRLCK, 0, {"server", "list"}, 3},
      {F_RDLCK, kOlder, {"legacy", "links", "demo"}, 0},
      {F_RDLCK, kOlder, {"legacy", "rebuild", "demo"}, 3},
      {F_WRLCK, kOlder, {"legacy", "sites"}, 3},
      {F_WRLCK, kOlder, {"links", "demo"}, 0},
  };
  for (const auto& row : rows) {
    const Lock lock(program, row.kind, row.byte);
    Words words = row.words;
    words.insert(words.end(), {"--wait", "0.05"});
    const Outcome outcome = program.Run(words);
    EXPECT_EQ(outcome.code, row.code) << Json(row.words) << outcome.err;
    EXPECT_TRUE(row.code == 0 || outcome.complains("in use")) << outcome.err;
  }
  EXPECT_EQ(program.Ask({"sites"}).size(), 2u);
}

// What is in use is waited for, for a while, or for as long as is asked for.
TEST(Sharing, WaitsForAnotherProcess) {
  const Program program;
  program.Page("index.html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  auto lock = std::make_unique<Lock>(program, F_WRLCK, 1);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(program.Run({"links", "demo", "--wait", "0.5"}).complains("in use"));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
  for (const char* wait : {"-1", "soon"}) {
    EXPECT_EQ(program.Run({"links", "demo", "--wait", wait}).code, 2) << wait;
  }
  std::thread release([&lock] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    lock.reset();
  });
  EXPECT_EQ(program.Run({"links", "demo"}).code, 0);
  release.join();
}

// Whoever reads an answer slowly is in nobody's way, and gets all of it.
TEST(Sharing, AnAnswerThatIsNotReadBlocksNobody) {
  const Program program;
  std::string page;
  for (int i = 0; i < 3000; ++i) page += "<a href=none" + std::to_string(i) + ".html>";
  program.Page("index.html", page);
  ASSERT_EQ(program.Build("demo").code, 0);
  program.BuildOlder("demo");
  for (const Words& question : {Words{"links", "demo"}, Words{"broken", "demo", "--format", "csv"},
                                Words{"files", "demo"}, Words{"legacy", "links", "demo"}}) {
    const std::string whole = program.Run(question).out;
    const std::string pipe = program.folder.native("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    Words words = question;
    words.insert(words.end(), {"--db", program.folder.native("db")});
    Process asking(program.folder, words, "", "", pipe);
    std::string read(1, '\0');
    while (::read(reader, read.data(), 1) <= 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    for (const Words& other :
         {Words{"sites"}, Words{"rebuild", "demo"}, Words{"save", "demo", "index.html"},
          Words{"legacy", "rebuild", "demo"}}) {
      EXPECT_EQ(program.Run(other).code, 0) << Json(question) << Json(other);
    }
    fcntl(reader, F_SETFL, 0);
    char buffer[4096];
    for (ssize_t count; (count = ::read(reader, buffer, sizeof buffer)) > 0;) {
      read.append(buffer, static_cast<std::size_t>(count));
    }
    asking.Wait();
    close(reader);
    EXPECT_EQ(read, whole) << Json(question);
    std::filesystem::remove(pipe);
  }
}

// Each of several processes that change one site, and of several that add one, finds what the
// others did.
TEST(Sharing, NoChangeIsLost) {
  constexpr int kProcesses = 8;
  const Program program;
  program.Page("index.html", "");
  for (int i = 0; i < kProcesses; ++i) program.Page("p" + std::to_string(i) + ".html", "");
  ASSERT_EQ(program.Build("demo").code, 0);
  const auto at_once = [&](const std::function<Words(const std::string&)>& words) {
    std::vector<std::unique_ptr<Process>> running;
    for (int i = 0; i < kProcesses; ++i) {
      Words all = words(std::to_string(i));
      all.insert(all.end(), {"--db", program.folder.native("db")});
      const std::string out = program.folder.native("out" + std::to_string(i));
      running.push_back(std::make_unique<Process>(program.folder, all, "", out + "e", out));
    }
    for (const auto& process : running) EXPECT_EQ(process->Wait().code, 0);
  };
  for (int i = 0; i < kProcesses; ++i) {
    program.Page("p" + std::to_string(i) + ".html", "<a href=index.html>");
  }
  at_once([](const std::string& i) { return Words{"save", "demo", "p" + i + ".html"}; });
  EXPECT_EQ(program.Ask({"links", "demo"}).size(), std::size_t{kProcesses});
  const std::string site = program.folder.native("site");
  at_once([&](const std::string& i) { return Words{"add", "site" + i, site}; });
  EXPECT_EQ(program.Ask({"sites"}).size(), std::size_t{kProcesses + 1});
}

}  // namespace
}  // namespace zvrsit::test
