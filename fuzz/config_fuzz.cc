// The configuration of a site, and the patterns in it.
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "cli/config.h"
#include "cli/exit_code.h"
#include "fuzz/target.h"
#include "support/temp_folder.h"

namespace zvrsit::fuzz {
namespace {

// What a configuration holds can be used without another look.
void UseConfig(const cli::Config& config) {
  if (!config.site.folder) std::abort();
  cli::GivenSite given;
  cli::FillFrom(config.site, given);
  (void)cli::WishOf(config.external);
  for (const char* file : {"a.html", "news/b.html", "news/old/c.html", ""}) {
    (void)config.ignores.HaveFile(file);
    (void)config.ignores.HaveTarget(file);
  }
  Severities severities;
  for (const auto& [rule, severity] : config.rules) severities.Set(rule, severity);
}

void ReadToml(std::string_view text) {
  static const test::TempFolder folder;
  const std::string file = folder.native(cli::kConfigName);
  test::WriteWhole(file, text);
  try {
    UseConfig(cli::ReadConfig(file));
  } catch (const cli::Failure& failure) {
    const std::string_view said = failure.what();
    if (failure.code() != cli::kUsage || !said.starts_with(file + ":")) std::abort();
  }
}

// A pattern that the plainest reading of the rules agrees with.
bool MatchesPlainly(std::string_view pattern, std::string_view name) {
  if (pattern.empty()) return name.empty();
  if (pattern.starts_with("**")) {
    return MatchesPlainly(pattern.substr(2), name) ||
           (!name.empty() && MatchesPlainly(pattern, name.substr(1)));
  }
  if (pattern[0] == '*') {
    return MatchesPlainly(pattern.substr(1), name) ||
           (!name.empty() && name[0] != '/' && MatchesPlainly(pattern, name.substr(1)));
  }
  if (name.empty()) return false;
  const bool isOne = pattern[0] == '?' ? name[0] != '/' : pattern[0] == name[0];
  return isOne && MatchesPlainly(pattern.substr(1), name.substr(1));
}

// A pattern and a name, with a line end between.
void ReadPattern(std::string_view text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view pattern = text.substr(0, end);
  const std::string_view name = text.substr(std::min(end + 1, text.size()));
  const bool matches = MatchesGlob(pattern, name);
  const bool isShort = pattern.size() <= 8 && name.size() <= 10;
  const bool isWhole = pattern.find('/') != pattern.npos && pattern.back() != '/';
  if (isShort && isWhole && matches != MatchesPlainly(pattern, name)) std::abort();
}

// The first byte chooses what the rest is.
void ReadConfigInput(std::string_view input) {
  if (input.empty()) return;
  if (input[0] == '1') {
    ReadPattern(input.substr(1));
  } else {
    ReadToml(input.substr(1));
  }
}

std::vector<std::string> ConfigSeeds() {
  return {
      "0folder = \"www\"\ntop = \"index.html\"\ndoc-root = \".\"\ndefault-url = \"index.html\"\n"
      "fallback-extensions = \"html\"\nbase-url = \"https://example.org/docs/\"\n"
      "page-types = \"php,xhtml\"\nlink-rules = \"web\"\n",
      "0[rules]\nmissing-file = \"error\"\nunused-file = 'off'\n[ignore]\n"
      "files = [\"drafts/**\", \"*.bak\"]\ntargets = [\"http://old/**\", \"#?\"]\n",
      "0[external]\ncheck = true\naccept = \"200..299,403\"\nuser-agent = \"x\"\nok-age = \"7d\"\n"
      "parallel = 8\nretry-delay = 1.5\nnetrc = \"n\"\nca-file = \"c\"\ntimeout = \"200ms\"\n",
      "0rules = { missing-file = \"warning\" }\nignore.files = []\nfolder = "
      "\"\"\"\na\\u00e9\"\"\"\n",
      "0x = 1\ndate = 1979-05-27T07:32:00Z\n[[a]]\nb = [1, [2.0, inf, 0x1F]]\n",
      "1news/**/old?.html\nnews/a/b/old1.html",
      "1/\nnews/x",
      "1*.bak\nnews/x.bak"};
}

}  // namespace

const Target kConfigTarget = {"config", &ReadConfigInput, &ConfigSeeds};

}  // namespace zvrsit::fuzz
