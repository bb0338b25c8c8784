// What the program says of itself to man and to shells.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

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
      {"site set --bas", "--base-url"},
      {"check ''", ""},  // files
      {"check --d", "--default-url --doc-root --db"},
      {"legacy pe", "peek"},
      {"completion fi", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Offered(program, script, row.words), std::string(row.offered) + "\n") << row.words;
  }
}

// What a manual or a script calls `name`, with what the manual puts before its dashes.
std::string InManual(const std::string& name) {
  std::string escaped;
  for (const char c : name) escaped += c == '-' ? "\\-" : std::string(1, c);
  return escaped;
}

// The commands and options that a help names, at the beginnings of its lines and behind "also".
Words NamedBy(const std::string& help) {
  Words named;
  std::istringstream lines(help);
  bool isList = false;
  for (std::string line; std::getline(lines, line);) {
    isList = line.starts_with("  also ") || (isList && line.starts_with("       "));
    if (!line.starts_with("  ") || (line[2] == ' ' && !isList)) continue;
    std::istringstream words(isList ? line.substr(6) : line.substr(0, line.find("   ", 2)));
    for (std::string word; words >> word;) {
      while (word.ends_with(',')) word.pop_back();
      const bool isCommand = std::islower(static_cast<unsigned char>(word.front())) != 0;
      if (word.starts_with("--") || (isCommand && word != "zvrsit)")) named.push_back(word);
    }
  }
  return named;
}

// Each help fits a screen and ends in an example; what it names stands in the manual and in each
// script.
TEST(Manual, HelpFitsAScreenAndNamesWhatThereIs) {
  const Program program;
  const std::string manual = program.Run({"manual"}).out;
  const std::string fish = program.Run({"completion", "fish"}).out;
  const std::string zsh = program.Run({"completion", "zsh"}).out;
  std::vector<Words> commands{{}};
  int options = 0;
  for (std::size_t i = 0; i < commands.size(); ++i) {
    Words asked = commands[i];
    asked.push_back("--help");
    const std::string help = program.Run(asked).out;
    const std::size_t last = help.rfind('\n', help.size() - 2) + 1;
    EXPECT_EQ(help.compare(last, 17, "Example:  zvrsit "), 0) << help;
    std::istringstream lines(help);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) EXPECT_LE(line.size(), 80U) << line;
    EXPECT_LE(count, 24U) << help;
    for (const std::string& name : NamedBy(help)) {
      if (!name.starts_with("--")) {
        if (help.find(" SUBCOMMAND\n") == help.npos) continue;
        commands.push_back(commands[i]);
        commands.back().push_back(name);
        continue;
      }
      EXPECT_NE(manual.find(InManual(name) + "\\fR"), std::string::npos) << name;
      EXPECT_NE(fish.find(" -l " + name.substr(2) + " "), std::string::npos) << name;
      EXPECT_NE(zsh.find(name), std::string::npos) << name;
      ++options;
    }
  }
  EXPECT_GT(commands.size(), 30U);
  EXPECT_GT(options, 60);
}

}  // namespace
}  // namespace zvrsit::test
