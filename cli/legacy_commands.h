// The commands of the older generation, a family a file.
#pragma once

#include "cli/commands.h"

namespace zvrsit::cli {

// add, sites, rebuild
void AddLegacySites(CLI::App& legacy, const Options& options, Run& run);
// import
void AddLegacyImport(CLI::App& legacy, const Options& options, Run& run);
// links, broken, peek
void AddLegacyQuestions(CLI::App& legacy, const Options& options, Run& run);
// undo
void AddLegacyUndo(CLI::App& legacy, const Options& options, Run& run);

}  // namespace zvrsit::cli
