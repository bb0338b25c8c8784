#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/output.h"

namespace zvrsit::cli {
namespace {

void Report(const Options& options, const char* what, const std::vector<std::string>& files) {
  if (!options.json) return;
  Json answer;
  Json& names = answer[what] = Json::array();
  for (const std::string& file : files) names.push_back(JsonText(file));
  PrintJson(answer);
}

int RunSave(const Options& options, const std::string& site,
            const std::vector<std::string>& files) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  std::vector<std::string> paths;
  for (const std::string& file : files) {
    paths.push_back(session.names().FileOf(file));
    // The library takes a page that it cannot read for an empty one.
    if (!std::ifstream(NativePath(paths.back()))) {
      throw Failure(kFileSystem, NativePath(paths.back()) + ": cannot be read");
    }
  }
  std::vector<std::string> saved;
  for (const std::string& path : paths) {
    if (session.manager().Save(path, nullptr) != 0 || session.manager().IsFull()) {
      session.FailToChange(NativePath(path) + ": cannot be registered");
    }
    saved.push_back(session.names().Shown(path));
  }
  session.CloseSaved(paths);
  Report(options, "saved", saved);
  return kClean;
}

}  // namespace

void AddChangeCommands(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<std::string>();
  const auto files = std::make_shared<std::vector<std::string>>();
  CLI::App* save = app.add_subcommand("save", "Register files anew after they changed on disk");
  AddSiteName(*save, *site);
  save->add_option("FILE", *files, "files of the site")
      ->option_text(" ")
      ->required()
      ->check(NotEmpty());
  save->callback([&options, &run, site, files] {
    run = [&options, site, files] { return RunSave(options, *site, *files); };
  });
}

}  // namespace zvrsit::cli
