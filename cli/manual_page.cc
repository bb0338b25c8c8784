#include <fmt/core.h>

#include "cli/option_tree.h"

namespace zvrsit::cli {
namespace {

// A text in which roff sees no command of its own.
std::string Plain(const std::string& text) {
  std::string plain;
  for (const char c : text) {
    if (c == '\\') {
      plain += "\\e";
    } else if (c == '-') {
      plain += "\\-";
    } else if ((c == '.' || c == '\'') && (plain.empty() || plain.back() == '\n')) {
      plain += std::string("\\&") + c;
    } else {
      plain += c;
    }
  }
  return plain;
}

void AppendOption(const OptionEntry& option, std::string& page) {
  std::string names;
  for (const std::string& name : option.names) {
    names += (names.empty() ? "\\fB" : ", \\fB") + Plain(name) + "\\fR";
  }
  if (!option.value.empty()) {
    names += (names.empty() ? "\\fI" : " \\fI") + Plain(option.value) + "\\fR";
  }
  page += fmt::format(".TP\n{}\n{}\n", names, Plain(option.help));
}

void AppendCommand(const CommandEntry& command, std::string& page) {
  if (!command.commands.empty()) return;  // those below it say it all
  std::string usage = "zvrsit " + command.path;
  for (const OptionEntry& one : command.positionals) usage += " " + one.value;
  page += fmt::format(".SS \"{}\"\n{}.\n", Plain(usage), Plain(command.help));
  for (const OptionEntry& one : command.positionals) AppendOption(one, page);
  for (const OptionEntry& one : command.options) {
    if (one.names.back() != "--help") AppendOption(one, page);
  }
  if (!command.footer.empty()) page += ".PP\n" + Plain(command.footer) + "\n";
}

}  // namespace

std::string ManualPage(const std::vector<CommandEntry>& commands, const std::string& version) {
  const CommandEntry& program = commands.front();
  std::string page = fmt::format(".TH ZVRSIT 1 \"\" \"zvrsit {}\" \"User Commands\"\n", version);
  page +=
      ".SH NAME\nzvrsit \\- manages web sites: their files, their links, what is broken\n"
      ".SH SYNOPSIS\n.B zvrsit\n\\fICOMMAND\\fR [\\fIOPTION\\fR ...] [\\fIARGUMENT\\fR ...]\n"
      ".SH OPTIONS\n";
  for (const OptionEntry& one : program.options) AppendOption(one, page);
  page += ".SH COMMANDS\n";
  for (std::size_t i = 1; i < commands.size(); ++i) AppendCommand(commands[i], page);
  page +=
      ".SH FILES\n.TP\n.I zvrsit.toml\nThe configuration of a site, in its folder or one above.\n"
      ".TP\n.I $XDG_DATA_HOME/zvrsit\nThe database, where \\-\\-db does not name another.\n"
      ".SH NOTES\n.nf\n" +
      Plain(program.footer) + "\n.fi\n";
  return page;
}

}  // namespace zvrsit::cli
