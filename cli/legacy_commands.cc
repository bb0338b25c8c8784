#include "cli/legacy_commands.h"

namespace zvrsit::cli {

void AddLegacyCommands(CLI::App& app, const Options& options, Run& run) {
  CLI::App* legacy = app.add_subcommand(
      "legacy", "Sites of the older generation, in the folder legacy of the database");
  legacy->require_subcommand(1);
  AddLegacySites(*legacy, options, run);
  AddLegacyImport(*legacy, options, run);
  AddLegacyQuestions(*legacy, options, run);
  AddLegacyUndo(*legacy, options, run);
}

}  // namespace zvrsit::cli
