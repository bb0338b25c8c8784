// Changes to an older site, and their undoing.
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "cli/exit_code.h"
#include "cli/legacy_commands.h"
#include "cli/legacy_totals.h"

namespace zvrsit::cli {
namespace {

Strings SplitWords(const std::string& line) {
  std::istringstream stream(line);
  Strings words;
  for (std::string word; stream >> std::quoted(word);) words.push_back(word);
  return words;
}

void Perform(LegacySession& session, const Strings& words) {
  SitMgr& manager = session.manager();
  const std::string& verb = words.front();
  int result = -1;
  if (verb == "undo" && words.size() == 1) {
    result = manager.UndoWithAlternatives();
    if (manager.GetLastError() != kSitOk) session.FailToWrite();
  } else if (verb == "save" && words.size() == 2) {
    result = manager.Save(session.names().FileOf(words[1]));
  } else if (verb == "rm" && words.size() == 2) {
    result = manager.Remove(session.EntryOf(words[1]));
  } else if (verb == "mv" && words.size() == 3) {
    result = manager.Move(session.EntryOf(words[1]), session.names().FileOf(words[2]));
  } else {
    throw Failure(kUsage, "\"" + verb + "\" is not save FILE, rm FILE, mv FROM TO or undo");
  }
  if (result == 0) return;
  const int error = manager.GetLastError();
  if (error == kSitWriteFailed || error == kSitDeleteFailed) session.FailToWrite();
  throw Failure(kDatabase, verb + " failed with error " + std::to_string(error));
}

// A line that was done, and the totals after it.
struct Step {
  std::string line;
  LegacyTotals totals;
};

void PerformLines(LegacySession& session, std::vector<Step>& steps) {
  int number = 0;
  try {
    for (std::string line; std::getline(std::cin, line);) {
      ++number;
      const Strings words = SplitWords(line);
      if (words.empty()) continue;
      Perform(session, words);
      steps.push_back({line, CountLegacy(session)});
    }
  } catch (const Failure& failure) {
    throw Failure(failure.code(), "line " + std::to_string(number) + ": " + failure.what());
  }
}

void PrintSteps(const Options& options, const std::vector<Step>& steps) {
  JsonRows rows;
  for (const Step& step : steps) {
    if (!options.json) {
      Print("{}: {}\n", LineText(step.line), TotalsLine(step.totals));
      continue;
    }
    Json row{{"did", JsonText(step.line)}};
    row.update(TotalsRow(step.totals));
    rows.Add(row);
  }
  if (options.json) rows.End();
}

// The history lives as long as the manager, so changes and undo share one run.
int RunUndo(const Options& options, const std::string& name) {
  LegacySession session(options, Database::kMustExist);
  session.Open(name);
  std::vector<Step> steps;
  std::optional<Failure> failure;
  try {
    PerformLines(session, steps);
  } catch (const Failure& thrown) {
    if (thrown.code() == kFileSystem) throw;
    failure = thrown;
  }
  session.Commit();
  session.LetGo();
  PrintSteps(options, steps);
  if (failure) throw Failure(*failure);
  return kClean;
}

}  // namespace

void AddLegacyUndo(CLI::App& legacy, const Options& options, Run& run) {
  const auto name = std::make_shared<std::string>();
  CLI::App* undo = legacy.add_subcommand(
      "undo",
      "Make changes that can be taken back, and print the totals after each. Standard input holds "
      "a "
      "change a line: save FILE, rm FILE, mv FROM TO, or undo, which takes back the newest change "
      "that is left. Names with spaces stand in double quotes. What is not taken back stays");
  AddSiteName(*undo, *name);
  undo->callback(
      [&options, &run, name] { run = [&options, name] { return RunUndo(options, *name); }; });
}

}  // namespace zvrsit::cli
