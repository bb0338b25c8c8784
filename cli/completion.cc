// Scripts that complete command lines. Those for bash and zsh walk the words to find the command,
// and then offer what it takes; fish is told of each command and option by a line of its own.
#include <fmt/core.h>

#include <algorithm>
#include <sstream>

#include "cli/option_tree.h"

namespace zvrsit::cli {
namespace {

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// In single quotes, for fish.
std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "\\'" : std::string(1, c);
  return quoted + "'";
}

// The names of the commands below it and of its options; the program's are good everywhere.
std::string WordsOf(const CommandEntry& command, const CommandEntry& program) {
  std::vector<std::string> words = command.commands;
  const auto addOptionsOf = [&words](const CommandEntry& one) {
    for (const OptionEntry& option : one.options) {
      words.insert(words.end(), option.names.begin(), option.names.end());
    }
  };
  addOptionsOf(command);
  if (&command != &program) addOptionsOf(program);
  return Joined(words);
}

// The body that bash and zsh share: sets `words` and `choices` for the command line in `line`,
// whose last word is the one to be completed.
std::string SharedBody(const std::vector<CommandEntry>& commands) {
  std::string body =
      "  local at='' word\n  for word in \"${line[@]}\"; do\n    case \"$at/$word\" in\n";
  for (const CommandEntry& command : commands) {
    for (const std::string& name : command.commands) {
      body += fmt::format("      '{}/{}') at='{}' ;;\n", command.path, name,
                          CommandBelow(command.path, name));
    }
  }
  body += "    esac\n  done\n  choices=''\n  case \"$before\" in\n";
  std::vector<std::string> known;
  for (const CommandEntry& command : commands) {
    for (const OptionEntry& option : command.options) {
      const std::string& name = option.names.back();
      if (option.choices.empty() || std::ranges::find(known, name) != known.end()) continue;
      known.push_back(name);
      body += fmt::format("    {}) choices='{}' ;;\n", name, Joined(option.choices));
    }
  }
  body += "  esac\n  case \"$at\" in\n";
  for (const CommandEntry& command : commands) {
    body += fmt::format("    '{}') offered='{}' ;;\n", command.path,
                        WordsOf(command, commands.front()));
  }
  return body + "  esac\n";
}

std::string ForBash(const std::vector<CommandEntry>& commands) {
  return "# Completes zvrsit in bash.\n_zvrsit() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local choices offered line=(\"${COMP_WORDS[@]:1:COMP_CWORD-1}\")\n" +
         SharedBody(commands) +
         "  COMPREPLY=()\n"
         "  if [ -n \"$choices\" ]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$choices\" -- \"$current\")\n"
         "  elif [ -z \"$at\" ] || [[ $offered != -* ]] || [[ $current == -* ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$offered\" -- \"$current\")\n"
         "  fi\n}\n"
         "complete -o default -F _zvrsit zvrsit\n";
}

std::string ForZsh(const std::vector<CommandEntry>& commands) {
  return "#compdef zvrsit\n_zvrsit() {\n"
         "  local current=${words[CURRENT]} before=${words[CURRENT-1]}\n"
         "  local choices offered\n  local -a line=(\"${(@)words[2,CURRENT-1]}\")\n" +
         SharedBody(commands) +
         "  if [[ -n $choices ]]; then\n    compadd -- ${=choices}\n"
         "  elif [[ -z $at || $offered != -* || $current == -* ]]; then\n"
         "    compadd -- ${=offered}\n"
         "  else\n    _files\n  fi\n}\n_zvrsit \"$@\"\n";
}

// Where a command of this path is being written.
std::string FishCondition(const std::string& path) {
  if (path.empty()) return "__fish_use_subcommand";
  std::string condition;
  std::istringstream names(path);
  for (std::string name; names >> name;) {
    condition += (condition.empty() ? "" : "; and ") + ("__fish_seen_subcommand_from " + name);
  }
  return condition;
}

std::string ForFish(const std::vector<CommandEntry>& commands) {
  std::string script = "# Completes zvrsit in fish.\n";
  for (const CommandEntry& command : commands) {
    const std::string condition = Quoted(FishCondition(command.path));
    for (const std::string& name : command.commands) {
      const std::string path = CommandBelow(command.path, name);
      script += fmt::format("complete -c zvrsit -f -n {} -a {} -d {}\n", condition, name,
                            Quoted(std::ranges::find(commands, path, &CommandEntry::path)->help));
    }
    const std::string when = command.path.empty() ? "" : " -n " + condition;
    for (const OptionEntry& option : command.options) {
      script += "complete -c zvrsit" + when;
      for (const std::string& name : option.names) {
        script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
      }
      if (!option.value.empty()) script += " -r";
      if (!option.choices.empty()) script += " -f -a " + Quoted(Joined(option.choices));
      script += " -d " + Quoted(option.help) + "\n";
    }
  }
  return script;
}

}  // namespace

std::string CompletionScript(const std::vector<CommandEntry>& commands, const std::string& shell) {
  if (shell == "bash") return ForBash(commands);
  return shell == "zsh" ? ForZsh(commands) : ForFish(commands);
}

}  // namespace zvrsit::cli
