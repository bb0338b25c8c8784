// The commands about the database itself.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "cli/program.h"
#include "support/damage.h"

namespace zvrsit::test {
namespace {

class DatabaseCommands : public testing::Test {
 protected:
  DatabaseCommands() {
    program.Page("index.htm", "<title>\x1b[1m</title><a href=a.htm>x</a><a href=http://x/>x</a>");
    EXPECT_EQ(program.Build("demo").code, 0);
  }
  // A word of a file of the database, changed.
  void Spoil(const std::string& file, std::size_t at, std::int32_t value) const {
    std::string bytes = program.folder.read("db/" + file);
    StoreLE32(bytes.data() + at, value);
    program.folder.write("db/" + file, bytes);
  }

  Program program;
};

TEST_F(DatabaseCommands, VerifyTellsOfDamageUntilTheTablesAreMadeAnew) {
  EXPECT_EQ(program.Run({"verify"}).out, "the database is sound\n");
  EXPECT_EQ(program.Run({"verify", "demo"}).code, 0);
  EXPECT_EQ(program.Run({"verify", "other"}).code, 2);

  Spoil("demo/PR", 0, 0);
  const std::string damaged = program.folder.read("db/demo/PR");
  const Outcome told = program.Run({"verify"});
  EXPECT_EQ(told.code, 3);
  EXPECT_EQ(told.out, program.folder.native("db/demo/PR") +
                          ", byte 0: the file does not begin as a file of a table does\n"
                          "the tables of \"demo\" are damaged: zvrsit rebuild demo --anew\n");
  const Json answer = program.Ask({"verify", "demo"});
  EXPECT_EQ(answer["sound"], false);
  EXPECT_EQ(answer["damaged"], Json::array({"demo"}));
  EXPECT_EQ(answer["faults"][0]["offset"], 0);
  EXPECT_EQ(program.folder.read("db/demo/PR"), damaged) << "nothing is changed";
  EXPECT_EQ(program.Run({"rebuild", "demo"}).code, 0);
  EXPECT_EQ(program.Run({"verify"}).code, 3) << "what can be opened is kept";
  EXPECT_EQ(program.Run({"rebuild", "demo", "--anew"}).code, 0);
  EXPECT_EQ(program.Run({"verify"}).code, 0);
}

// Neither are profiles mended, nor is a finished rebuild put in its place.
TEST_F(DatabaseCommands, VerifyTellsOfProfilesAndOfWhatDidNotEnd) {
  const std::string state = program.folder.read("db/sites.R");
  Spoil("sites.R", 24 + 8, 1);
  EXPECT_NE(program.Run({"verify"}).out.find("did not end: zvrsit rebuild demo"),
            std::string::npos);
  program.folder.write("db/sites.R", "");
  const Outcome told = program.Run({"verify"});
  EXPECT_EQ(told.code, 3);
  EXPECT_NE(told.out.find("sites.R, byte 0: the file ends in its header"), std::string::npos);
  EXPECT_EQ(program.folder.read("db/sites.R"), "");
  program.folder.write("db/sites.R", state);
  std::filesystem::create_directory(program.folder.native("db/demo/done"));
  EXPECT_NE(program.Run({"verify"}).out.find("still to be put in its place"), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(program.folder.native("db/demo/done")));
}

TEST_F(DatabaseCommands, DumpShowsWhatIsStoredAsFarAsItCanBeRead) {
  const Json files = program.Ask({"dump", "demo", "files"});
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["title"], "\x1b[1m");
  EXPECT_EQ(files[1]["exists"], 0);
  EXPECT_EQ(program.Ask({"dump", "demo"}).size(), 2u + 1 + 1 + 2 + 1);
  EXPECT_EQ(program.Run({"dump", "demo", "nothing"}).code, 2);
  const Outcome text = program.Run({"dump", "demo", "files"});
  EXPECT_NE(text.out.find("files 0  name="), std::string::npos);
  EXPECT_EQ(text.out.find('\x1b'), std::string::npos);

  ASSERT_EQ(program.Run({"site", "set", "demo", "--fallback-extensions", "html"}).code, 0);
  EXPECT_EQ(program.Ask({"dump", "demo", "sites"})[0]["fallbackExtensions"], "html");
  ASSERT_EQ(program.Run({"server", "set", "web", "--host", "h", "--password"}, "secret\n").code, 0);
  const Outcome servers = program.Run({"dump", "demo", "servers", "--format", "jsonl"});
  EXPECT_EQ(Json::parse(servers.out)["password"], "(not shown)");

  Spoil("demo/LR", 20, 100);
  const Outcome cut = program.Run({"dump", "demo", "links", "--format", "jsonl"});
  EXPECT_EQ(cut.code, 3);
  EXPECT_EQ(std::count(cut.out.begin(), cut.out.end(), '\n'), 2);
  EXPECT_TRUE(cut.complains("LR, byte 112: the file ends before its last record"));
}

}  // namespace
}  // namespace zvrsit::test
