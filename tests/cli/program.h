// Runs the real program on a database of its own.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/temp_folder.h"

extern char** environ;

namespace zvrsit::test {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;

struct Outcome {
  int code = -1;  // -1: ended by a signal, or hung
  std::string out;
  std::string err;

  Json json() const { return Json::parse(out, nullptr, false); }
  // Whether stderr holds one line, which begins with the program's name and holds `part`.
  bool complains(const std::string& part = "") const {
    return err.starts_with("zvrsit: ") && std::count(err.begin(), err.end(), '\n') == 1 &&
           err.back() == '\n' && err.find(part) != std::string::npos;
  }
};

// One run of the program, from its start to its end.
class Process {
 public:
  // stdin is a file; stdout and stderr go to files, stderr to `errPath` if one is given.
  Process(const TempFolder& folder, const Words& words, const std::string& input = "",
          const std::string& errPath = "", const std::string& outPath = "")
      : out_(outPath.empty() ? folder.native("stdout") : outPath),
        err_(errPath.empty() ? folder.native("stderr") : errPath) {
    folder.write("stdin", input);
    setenv("ZVRSIT_SYNC", "0", 0);  // no test cuts the power but those of tests/crash
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY;
    posix_spawn_file_actions_addopen(&actions, 0, folder.native("stdin").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out_.c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err_.c_str(), flags, 0600);
    std::vector<char*> argv{const_cast<char*>(ZVRSIT_PROGRAM)};
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
  }

  void Interrupt() const { kill(pid_, SIGINT); }
  void Kill() const { kill(pid_, SIGKILL); }

  // Waits for the end; a program that takes longer than a minute and a half hangs.
  Outcome Wait() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(90);
    int status = 0;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
      if (std::chrono::steady_clock::now() > deadline) kill(pid_, SIGKILL);
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Text(out_), Text(err_)};
  }

 private:
  // Devices are not read.
  static std::string Text(const std::string& path) {
    return std::filesystem::is_regular_file(path) ? ReadWhole(path) : std::string();
  }

  std::string out_;
  std::string err_;
  pid_t pid_ = -1;
};

// The places of the findings of a report, a row each: rule, from, line, column, text and to; by
// from, line and column.
inline Json Rows(const Json& report) {
  std::vector<Json> rows;
  for (const Json& finding : report["findings"]) {
    for (const Json& place : finding["places"]) {
      rows.push_back({{"rule", finding["rule"]},
                      {"from", place["file"]},
                      {"line", place["line"]},
                      {"column", place["column"]},
                      {"text", place["reference"]},
                      {"to", finding["target"]}});
    }
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Json& a, const Json& b) {
    for (const char* key : {"from", "line", "column"}) {
      if (a[key] != b[key]) return a[key] < b[key];
    }
    return false;
  });
  return rows;
}

// A folder with a site to be written in `site`, a database in `db`, and the program over both.
class Program {
 public:
  Outcome Run(Words words, const std::string& input = "") const {
    words.insert(words.end(), {"--db", folder.native("db")});
    return Process(folder, words, input).Wait();
  }
  // The same where no file may become larger than `size`, which stands for a full disk.
  Outcome RunOnFullDisk(const Words& words, rlim_t size, const std::string& input = "") const {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    const Outcome outcome = Run(words, input);
    setrlimit(RLIMIT_FSIZE, &before);
    return outcome;
  }
  Json Ask(Words words) const {
    words.insert(words.end(), {"--format", "json"});
    return Run(std::move(words)).json();
  }
  // What is broken in the site "demo".
  Json Broken() const { return Rows(Ask({"broken", "demo"})); }
  // Registers the site as `name` and rebuilds it.
  Outcome Build(const std::string& name, Words options = {}) const {
    Words words{"add", name, folder.native("site")};
    words.insert(words.end(), options.begin(), options.end());
    const Outcome added = Run(words);
    return added.code == 0 ? Run({"rebuild", name}) : added;
  }
  // The same as a site of the older generation.
  void BuildOlder(const std::string& name) const {
    EXPECT_EQ(Run({"legacy", "add", name, folder.native("site")}).code, 0);
    EXPECT_EQ(Run({"legacy", "rebuild", name}).code, 0);
  }
  void Page(const std::string& name, const std::string& html) const {
    folder.write("site/" + name, html);
  }

  TempFolder folder;
};

}  // namespace zvrsit::test
