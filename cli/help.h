// What --help prints: one screen of 24 lines by 80 columns, with an example at its end.
#pragma once

#include <CLI/CLI.hpp>

namespace zvrsit::cli {

// Prints a command so, with the options and commands that most people never need by name only; the
// manual has them all.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;
};

// Gives every command below `app` its example, and sets apart what is seldom needed.
void FinishHelp(CLI::App& app);

}  // namespace zvrsit::cli
