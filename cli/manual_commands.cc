#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/option_tree.h"
#include "cli/output.h"
#include "platform/version.h"

namespace zvrsit::cli {

void AddManualCommands(CLI::App& app, const Options& /*options*/, Run& run) {
  app.add_subcommand("manual", "Print the manual page, for man -l -")->callback([&app, &run] {
    run = [&app] {
      Print("{}", ManualPage(CommandsOf(app), Version()));
      return kClean;
    };
  });
  const auto shell = std::make_shared<std::string>();
  CLI::App* completion =
      app.add_subcommand("completion", "Print what completes command lines in a shell");
  completion->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->option_text(" ")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->callback([&app, &run, shell] {
    run = [&app, shell] {
      Print("{}", CompletionScript(CommandsOf(app), *shell));
      return kClean;
    };
  });
}

}  // namespace zvrsit::cli
