// What the program says of itself to man and to shells.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

// What bash offers for the last of these words.
std::string Offered(const Program& program, const std::string& script, const std::string& words) {
  std::ofstream(program.folder.native("ask.bash"))
      << ". '" << script << "'\nCOMP_WORDS=(zvrsit " << words
      << ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_zvrsit\necho \"${COMPREPLY[@]}\"\n";
  const std::string out = program.folder.native("offered");
  const std::string ask = "bash '" + program.folder.native("ask.bash") + "' > '" + out + "' 2>&1";
  return std::system(ask.c_str()) == 0 ? ReadWhole(out) : "failed\n";
}

TEST(Manual, BashCompletesCommandLines) {
  const Program program;
  const std::string script = program.folder.native("zvrsit.bash");
  std::ofstream(script) << program.Run({"completion", "bash"}).out;
  const struct {
    const char* words;
    const char* offered;
  } rows[] = {
      {"che", "check"},
      {"check --col", "--color"},
      {"check --color ''", "auto always never"},
      {"--db x site s", "show set"},
      {"site set --liv", "--live-url"},
      {"check ''", ""},  // files
      {"check --d", "--default-url --doc-root --db"},
      {"legacy pe", "peek"},
      {"completion fi", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Offered(program, script, row.words), std::string(row.offered) + "\n") << row.words;
  }
}

// Every option that a command's help names stands in the manual and in each script.
TEST(Manual, HoldsEveryOption) {
  const Program program;
  const std::string manual = program.Run({"manual"}).out;
  const std::string fish = program.Run({"completion", "fish"}).out;
  const std::string zsh = program.Run({"completion", "zsh"}).out;
  int options = 0;
  for (const Words& command : {Words{"check", "--help"}, Words{"site", "set", "--help"},
                               Words{"urls", "--help"}, Words{"legacy", "links", "--help"}}) {
    const std::string help = program.Run(command).out;
    for (std::size_t at = 0; (at = help.find("  --", at)) != std::string::npos; ++at) {
      const std::string name = help.substr(at + 4, help.find_first_of(" \n,", at + 4) - at - 4);
      std::string escaped = "\\-\\-";
      for (const char c : name) escaped += c == '-' ? "\\-" : std::string(1, c);
      EXPECT_NE(manual.find(escaped + "\\fR"), std::string::npos) << name;
      EXPECT_NE(fish.find(" -l " + name + " "), std::string::npos) << name;
      EXPECT_NE(zsh.find("--" + name), std::string::npos) << name;
      ++options;
    }
  }
  EXPECT_GT(options, 15);
}

}  // namespace
}  // namespace zvrsit::test
