// Scripts that complete command lines. Those for bash and zsh walk the words to find the command,
// and then offer what it takes; fish is told of each command and option by a line of its own.
#include <fmt/core.h>

#include <algorithm>

#include "cli/option_tree.h"

namespace zvrsit::cli {
namespace {

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// In single quotes; `doubles` is how the shell writes one inside.
std::string Quoted(const std::string& text, const char* quote) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') {
      quoted += quote;
    } else {
      quoted += c;
    }
  }
  return quoted + "'";
}

// The names of the commands below it and of its options; the program's are good everywhere.
std::string WordsOf(const CommandEntry& command, const CommandEntry& program) {
  std::vector<std::string> words = command.commands;
  for (const CommandEntry* const one : {&command, &program}) {
    for (const OptionEntry& option : one->options) {
      words.insert(words.end(), option.names.begin(), option.names.end());
    }
    if (&command == &program) break;
  }
  return Joined(words);
}

// The body that bash and zsh share: sets `words` and `choices` for the command line in `line`,
// whose last word is the one to be completed.
std::string SharedBody(const std::vector<CommandEntry>& commands) {
  std::string body =
      "  local at='' word\n  for word in \"${line[@]}\"; do\n    case \"$at/$word\" in\n";
  for (const CommandEntry& command : commands) {
    const std::string prefix = command.path.empty() ? "" : command.path + " ";
    for (const std::string& name : command.commands) {
      body += fmt::format("      '{}/{}') at='{}{}' ;;\n", command.path, name, prefix, name);
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
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find(' ', begin), path.size());
    condition += (condition.empty() ? "" : "; and ") +
                 ("__fish_seen_subcommand_from " + path.substr(begin, end - begin));
    begin = end + 1;
  }
  return condition;
}

std::string ForFish(const std::vector<CommandEntry>& commands) {
  std::string script = "# Completes zvrsit in fish.\n";
  const auto quoted = [](const std::string& text) { return Quoted(text, "\\'"); };
  for (const CommandEntry& command : commands) {
    const std::string separator = command.path.empty() ? "" : command.path + " ";
    const std::string when =
        command.path.empty() ? "" : " -n " + quoted(FishCondition(command.path));
    for (const CommandEntry& below : commands) {
      for (const std::string& name : command.commands) {
        if (below.path != separator + name) continue;
        script += fmt::format("complete -c zvrsit -f -n {} -a {} -d {}\n",
                              quoted(FishCondition(command.path)), name, quoted(below.help));
      }
    }
    for (const OptionEntry& option : command.options) {
      script += "complete -c zvrsit" + when;
      for (const std::string& name : option.names) {
        script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
      }
      if (!option.value.empty()) script += " -r";
      if (!option.choices.empty()) script += " -f -a " + quoted(Joined(option.choices));
      script += " -d " + quoted(option.help) + "\n";
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
