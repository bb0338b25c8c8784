// The commands of the program and their options as plain values, for the manual and for shells.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace zvrsit::cli {

struct OptionEntry {
  std::vector<std::string> names;    // with their dashes; empty for a positional
  std::string value;                 // what stands behind it, such as FILE; empty for a flag
  std::vector<std::string> choices;  // of the value, where it is one of a few
  std::string help;
};

struct CommandEntry {
  std::string path;  // "check", "site set"; empty for the program itself
  std::string help;
  std::string footer;
  std::vector<OptionEntry> positionals;
  std::vector<OptionEntry> options;
  std::vector<std::string> commands;  // the names of those below it
};

OptionEntry EntryOf(const CLI::Option& option);
// The path of the command of that name below `path`.
std::string CommandBelow(const std::string& path, const std::string& name);
// The program first, then every command before those below it.
std::vector<CommandEntry> CommandsOf(const CLI::App& app);

// The manual page zvrsit(1), in the man macros of roff.
std::string ManualPage(const std::vector<CommandEntry>& commands, const std::string& version);
// What completes command lines in that shell: "bash", "zsh" or "fish".
std::string CompletionScript(const std::vector<CommandEntry>& commands, const std::string& shell);

}  // namespace zvrsit::cli
