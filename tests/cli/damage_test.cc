// Databases that something else has written into.
#include <gtest/gtest.h>

#include <functional>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

namespace fs = std::filesystem;

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
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{5}, std::size_t{24}, bytes.size() / 2, bytes.size() - 1}) {
    damaged.push_back(bytes.substr(0, std::min(length, bytes.size())));
  }
  const std::size_t step = std::max<std::size_t>(bytes.size() / 6, 4) & ~std::size_t{3};
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

TEST(Damage, ProfilesComeBackFromTheirBackup) {
  const Program program;
  program.Page("index.html", "<a href=a.html>");
  ASSERT_EQ(program.Build("demo").code, 0);
  for (const char* file : {"db/sites.R", "db/sites.S"}) {
    program.folder.write(file, std::string(500, '\x7f'));
    EXPECT_EQ(program.Ask({"sites"}).size(), 1u) << file;
    EXPECT_EQ(program.Run({"broken", "demo"}).code, 1) << file;
  }
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
      {{"site", "delete", "demo"}, 150, 0},  // but for its texts
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
