// The configuration of a site, and what the command line says against it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "cli/program.h"

namespace zvrsit::test {
namespace {

// A site with something for each key to say.
class ConfigOfASite : public testing::Test {
 protected:
  ConfigOfASite() {
    program.Page("index.html", "<a href=gone.html><a href=cgi/x><p id=a><p id=a>");
    program.Page("drafts/d.html", "<a href=lost.html>");
    program.Page("sub/s.html", "<a href=https://example.org/docs/nope.html>");
  }
  void Write(const std::string& text) const {
    std::ofstream(program.folder.native("site/zvrsit.toml")) << text;
  }
  // The rules and targets that are found.
  Words Check(Words words) const {
    words.insert(words.begin(), "check");
    words.insert(words.end(), {"--format", "json"});
    Words found;
    const Json report = program.Run(words).json();
    for (const Json& finding : report["findings"]) {
      found.push_back(finding["rule"].get<std::string>() + " " +
                      finding["target"].get<std::string>());
    }
    return found;
  }
  std::string Native(const std::string& name) const { return program.folder.native("site" + name); }

  const Program program;
};

TEST_F(ConfigOfASite, EachOptionBeatsIt) {
  Write(R"(base-url = "https://example.org/docs/"
[rules]
orphan-page = "off"
duplicate-id = "error"
[ignore]
files = ["drafts/**"]
targets = ["cgi/*"])");
  const std::string gone = "missing-file gone.html", nope = "missing-file sub/nope.html";
  EXPECT_EQ(Check({Native("")}), (Words{gone, "duplicate-id #a", "missing-file nope.html"}));
  EXPECT_EQ(Check({Native("/sub")}), Words{"missing-file nope.html"}) << "from the folder above";
  EXPECT_EQ(Check({Native("/sub/s.html"), "--base-url", "https://example.org/"}),
            Words{"missing-file docs/nope.html"});
  EXPECT_EQ(Check({Native(""), "--rule", "duplicate-id=off", "--ignore", "s.html"}),
            (Words{"missing-file drafts/lost.html", gone}));
  EXPECT_EQ(
      Check({Native("/index.html"), "--ignore-target", "gone.*", "--rule", "duplicate-id=off"}),
      Words{"missing-file cgi/x"});
  EXPECT_EQ(Check({Native("/sub"), "--no-config"}).size(), 0U);
  program.Run({"add", "demo", Native("")});
  EXPECT_EQ(program.Run({"site", "show", "demo", "--format", "json"}).json()["base_url"],
            "https://example.org/docs/");
  program.Run({"rebuild", "demo"});
  EXPECT_EQ(program.Run({"broken", "demo", "-q"}).out.find("drafts"), std::string::npos);
}

TEST_F(ConfigOfASite, ToolsAreNoPartOfTheSite) {
  Write("");
  program.Page(".git/hooks/note.html", "<a href=lost.html>");
  const Words off{"--rule",          "duplicate-id=off", "--rule",
                  "orphan-page=off", "--rule",           "missing-file=off"};
  Words words{"check", Native(""), "--rule", "unused-file=error"};
  words.insert(words.end(), off.begin(), off.end());
  EXPECT_EQ(program.Run(words).code, 0) << program.Run(words).out;
  words.insert(words.end(), {"--rules", "classic"});
  EXPECT_EQ(program.Run(words).code, 1) << "the classic rules know every file";
}

TEST_F(ConfigOfASite, FaultsAreToldWithTheirPlace) {
  const struct {
    const char* text;
    const char* complaint;
  } rows[] = {
      {"base-urls = \"x\"", ":1:1: \"base-urls\" is no key here; did you mean \"base-url\"?"},
      {"[rules]\nmising-file = \"off\"", ":2:1: \"mising-file\" is no key here; did you mean"},
      {"[rules]\nmissing-file = \"of\"", ":2:16: a rule is \"error\", \"warning\" or \"off\""},
      {"[ignore]\nfile = []", ":2:1: \"file\" is no key here; did you mean \"files\"?"},
      {"[ignore]\nfiles = \"a\"", ":2:9: files is a list of texts"},
      {"[ignore]\nfiles = [1]", ":2:10: files is a text in quotes"},
      {"rules = 1", ":1:9: rules is a table: [rules]"},
      {"top = 1", ":1:7: top is a text in quotes"},
      {"base-url = \"foo\"", ":1:12: \"foo\" is not the address of a folder"},
      {"fallback-extensions = \"*.x\"", ":1:23: \"*.x\" is no list of extensions"},
      {"link-rules = \"foo\"", ":1:14: \"foo\" is neither web nor classic"},
      {"top = ", ":1:"},
  };
  for (const auto& row : rows) {
    Write(row.text);
    const Outcome outcome = program.Run({"check", Native("/sub")});
    EXPECT_EQ(outcome.code, 2) << row.text;
    EXPECT_TRUE(outcome.complains(std::string("zvrsit.toml") + row.complaint)) << outcome.err;
  }
}

// Findings are those of the files that are chosen, held against the whole site.
TEST(Check, OfSomeFilesOfASite) {
  const Program program;
  const std::string site = program.folder.native("site/Ann's $site/");
  const auto write = [&](const char* name, const char* html) {
    program.Page(std::string("Ann's $site/") + name, html);
  };
  const auto git = [&](const std::string& words) {
    return std::system(("git -C \"" + program.folder.native("site/Ann's \\$site") +
                        "\" -c user.name=ann -c user.email=ann@example.org " + words +
                        " >/dev/null 2>&1")
                           .c_str());
  };
  write("index.html", "<a href=gone0.html><a href=sub/old.html><a href='sub/a%20b%C3%A9.html'>");
  write("sub/old.html", "<a href=gone1.html><a href=../index.html>");
  write("sub/a b\xC3\xA9.html", "<p>");
  ASSERT_EQ(git("init") + git("add .") + git("commit -m first"), 0);
  write("sub/a b\xC3\xA9.html", "<a href=gone2.html><a href=../index.html>");
  write("sub/new'.html", "<a href=gone3.html>");
  const std::string old = site + "sub/old.html", two = site + "sub/a b\xC3\xA9.html";
  const std::string nul(1, '\0');
  const struct {
    Words words;
    std::string input;
    std::vector<std::string> gone;
  } rows[] = {
      {{site}, "", {"0", "2", "3", "1"}},
      {{old, two}, "", {"2", "1"}},
      {{site + "sub"}, "", {"2", "3", "1"}},
      {{"--files-from", "-"}, old + "\r\n\n" + two, {"2", "1"}},
      {{"--files-from", "-"}, old + nul + two + nul, {"2", "1"}},
      {{"--files-from", "-", old}, two + "\n", {"2", "1"}},
      {{"--files-from", "-"}, "", {}},
      {{site, "--changed-since", "HEAD"}, "", {"2", "3"}},
      {{old, two, "--changed-since", "HEAD"}, "", {"2"}},
  };
  for (const auto& row : rows) {
    Words words{"check",    "--root", site,     "--format",       "json",
                "--ignore", "none",   "--rule", "orphan-page=off"};
    words.insert(words.end(), row.words.begin(), row.words.end());
    std::vector<std::string> gone;
    for (const Json& place : Rows(program.Run(words, row.input).json())) {
      gone.push_back(place["text"].get<std::string>().substr(4, 1));
    }
    EXPECT_EQ(gone, row.gone) << row.words.front();
  }
  for (const char* revision : {"nosuch", "--output=x"}) {
    const Outcome outcome =
        program.Run({"check", site, "--changed-since=" + std::string(revision)});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_TRUE(outcome.complains("git cannot tell")) << outcome.err;
  }
}

TEST_F(ConfigOfASite, QuietAndVerbose) {
  const Outcome quiet = program.Run(
      {"check", Native("/sub"), "--root", Native(""), "--quiet", "--rule", "orphan-page=off"});
  EXPECT_EQ(quiet.out + quiet.err, "");
  const Outcome verbose = program.Run({"check", Native(""), "--verbose"});
  EXPECT_EQ(verbose.code, 1);
  EXPECT_NE(verbose.err.find("its home page index.html\n"), std::string::npos) << verbose.err;
}

}  // namespace
}  // namespace zvrsit::test
