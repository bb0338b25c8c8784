#include "cli/help.h"

#include <fmt/core.h>

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/option_tree.h"

namespace zvrsit::cli {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kColumn = 30;  // where what an option means begins

constexpr const char* kSeldom = "Seldom";

struct CommandHelp {
  const char* path;     // of the command; empty for the program
  const char* example;  // what follows "zvrsit "
  const char* seldom;   // options and commands below it that few people need
};
constexpr CommandHelp kHelp[] = {
    {"", "check docs",
     "--db --format --wait --version sites files urls unused family save rename-id export graph "
     "server "
     "dump "
     "verify legacy "
     "manual completion"},
    {"check", "check docs --top docs/index.html",
     "--files-from --root --config --no-config --default-url --doc-root --page-types --rules "
     "--ignore-target --verbose --external-fragments --offline --accept --private-network"},
    {"report", "report harbour -o harbour.html",
     "--config --no-config --default-url --doc-root --page-types --rules --base-url "
     "--fallback-extensions --ignore-target --external-fragments --offline --accept "
     "--private-network"},
    {"add", "add harbour www --top www/index.html", ""},
    {"sites", "sites", ""},
    {"rebuild", "rebuild harbour", ""},
    {"update", "update harbour", ""},
    {"serve", "serve harbour --editor 'vscode://file{path}:{line}:{column}'",
     "--config --no-config --ignore-target"},
    {"watch", "watch harbour --rule orphan-page=off",
     "--config --no-config --ignore-target --color"},
    {"links", "links harbour --to prices.html", ""},
    {"broken", "broken harbour --rule orphan-page=warning", ""},
    {"files", "files harbour -0 | xargs -0 ls -l", ""},
    {"urls", "urls harbour --check",
     "--external-fragments --accept --private-network --ignore-target"},
    {"unused", "unused harbour", ""},
    {"family", "family harbour", ""},
    {"save", "save harbour prices.html news/index.html", ""},
    {"rm", "rm harbour old.html", ""},
    {"mv", "mv harbour old.html news/old.html --dry-run", ""},
    {"rename-id", "rename-id harbour prices.html summer season", ""},
    {"fix", "fix harbour --wrong-case --dry-run", ""},
    {"site", "site show harbour", ""},
    {"site show", "site show harbour", ""},
    {"site set", "site set harbour --default-url index.php", ""},
    {"site rename", "site rename harbour marina", ""},
    {"site delete", "site delete harbour", ""},
    {"server", "server list", ""},
    {"server list", "server list", ""},
    {"server show", "server show home", ""},
    {"server set", "server set home --host ftp.example.org --user ann", ""},
    {"server delete", "server delete home", ""},
    {"legacy", "legacy import old", ""},
    {"legacy add", "legacy add old www --top www/index.htm", ""},
    {"legacy sites", "legacy sites", ""},
    {"legacy rebuild", "legacy rebuild old", ""},
    {"legacy import", "legacy import old", ""},
    {"legacy links", "legacy links old --to prices.htm", ""},
    {"legacy broken", "legacy broken old", ""},
    {"legacy peek", "legacy peek old", ""},
    {"legacy undo", "legacy undo old < changes", ""},
    {"export", "export harbour --to sqlite -o harbour.db", ""},
    {"graph", "graph harbour --svg -o harbour.svg", ""},
    {"dump", "dump harbour", ""},
    {"verify", "verify harbour || zvrsit rebuild harbour --anew", ""},
    {"manual", "manual | man -l -", ""},
    {"completion", "completion bash > zvrsit.bash", ""},
};

std::vector<std::string> WordsOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// Appends `text`, which begins in column `column` of a line, and goes on there in the next lines.
void AppendWrapped(std::string_view text, std::size_t column, std::string& out) {
  const std::size_t width = kWidth - column;
  while (text.size() > width) {
    std::size_t end = text.rfind(' ', width);
    if (end == text.npos) end = text.find(' ');
    if (end == text.npos) break;
    out += std::string(text.substr(0, end)) + "\n" + std::string(column, ' ');
    text.remove_prefix(end + 1);
  }
  out += std::string(text) + "\n";
}

void AppendRow(const std::string& name, const std::string& meaning, std::string& out) {
  out += "  " + name;
  if (name.size() + 3 > kColumn) {
    out += "\n" + std::string(kColumn, ' ');
  } else {
    out += std::string(kColumn - 2 - name.size(), ' ');
  }
  AppendWrapped(meaning, kColumn, out);
}

void AppendOption(const CLI::Option& option, std::string& out) {
  const OptionEntry entry = EntryOf(option);
  std::string name;
  for (const std::string& one : entry.names) name += (name.empty() ? "" : ", ") + one;
  if (!entry.value.empty()) name += (name.empty() ? "" : " ") + entry.value;
  AppendRow(name, entry.help, out);
}

// Null for none.
CLI::App* Below(CLI::App& command, const std::string& name) {
  const auto found =
      command.get_subcommands([&](CLI::App* below) { return below->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

CLI::App* CommandAt(CLI::App& app, const std::string& path) {
  CLI::App* at = &app;
  for (const std::string& name : WordsOf(path)) {
    at = Below(*at, name);
    if (at == nullptr) return nullptr;
  }
  return at;
}

void SetApart(CLI::App& command, const std::string& name) {
  if (CLI::Option* const option = command.get_option_no_throw(name)) option->group(kSeldom);
  if (CLI::App* const below = Below(command, name)) below->group(kSeldom);
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode) const {
  std::string help;
  AppendWrapped(app->get_description(), 0, help);
  const std::string usage = make_usage(app, name);
  AppendWrapped(std::string_view(usage).substr(0, usage.find('\n')), 9, help);
  help += '\n';
  std::string seldom;
  for (const CLI::Option* const option : app->get_options()) {
    if (option == app->get_help_ptr() || option->get_group().empty()) continue;
    if (option->get_group() == kSeldom) {
      seldom += (seldom.empty() ? "" : ", ") + EntryOf(*option).names.back();
    } else {
      AppendOption(*option, help);
    }
  }
  for (const CLI::App* const below : app->get_subcommands([](const CLI::App*) { return true; })) {
    if (below->get_group() == kSeldom) {
      seldom += (seldom.empty() ? "" : ", ") + below->get_name();
    } else {
      AppendRow(below->get_name(), below->get_description(), help);
    }
  }
  if (!seldom.empty()) {
    help += "  also ";
    AppendWrapped(seldom + " (man zvrsit)", 7, help);
  }
  return help + "\n" + app->get_footer() + "\n";
}

void FinishHelp(CLI::App& app) {
  for (const CommandHelp& row : kHelp) {
    CLI::App* const command = CommandAt(app, row.path);
    if (command == nullptr) continue;  // not on this system
    for (const std::string& name : WordsOf(row.seldom)) SetApart(*command, name);
    const std::string own = *row.path == '\0' ? app.get_footer() + "\n" : "";
    command->footer(own + "Example:  zvrsit " + row.example);
  }
}

}  // namespace zvrsit::cli
