#include "cli/option_tree.h"

#include <sstream>

namespace zvrsit::cli {
namespace {

// "auto|always|never" are choices, "FILE" and "RULE=SEVERITY ..." are not.
std::vector<std::string> ChoicesOf(const std::string& value) {
  std::vector<std::string> choices;
  if (value.find('|') == value.npos) return choices;
  std::istringstream words(value);
  for (std::string word; std::getline(words, word, '|');) choices.push_back(word);
  return choices;
}

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == text.npos ? "" : text.substr(first);
}

void Collect(const CLI::App& app, const std::string& path, std::vector<CommandEntry>& commands) {
  CommandEntry command;
  command.path = path;
  command.help = app.get_description();
  command.footer = app.get_footer();
  for (const CLI::Option* const option : app.get_options()) {
    OptionEntry entry = EntryOf(*option);
    (entry.names.empty() ? command.positionals : command.options).push_back(std::move(entry));
  }
  const auto below = app.get_subcommands([](const CLI::App*) { return true; });
  for (const CLI::App* const one : below) command.commands.push_back(one->get_name());
  commands.push_back(std::move(command));
  for (const CLI::App* const one : below) {
    Collect(*one, CommandBelow(path, one->get_name()), commands);
  }
}

}  // namespace

OptionEntry EntryOf(const CLI::Option& option) {
  OptionEntry entry;
  for (const std::string& name : option.get_snames()) entry.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) entry.names.push_back("--" + name);
  if (option.get_items_expected_max() > 0) {
    entry.value = Trimmed(option.get_option_text());
    if (entry.value.empty()) entry.value = "VALUE";
  }
  if (entry.names.empty()) {
    entry.value = option.get_name(true) + (entry.value == "..." ? "..." : "");
  }
  entry.choices = ChoicesOf(entry.value);
  entry.help = option.get_description();
  return entry;
}

std::string CommandBelow(const std::string& path, const std::string& name) {
  return path.empty() ? name : path + " " + name;
}

std::vector<CommandEntry> CommandsOf(const CLI::App& app) {
  std::vector<CommandEntry> commands;
  Collect(app, "", commands);
  return commands;
}

}  // namespace zvrsit::cli
