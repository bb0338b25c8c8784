#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/output.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

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
    if (session.manager().Save(path, nullptr) != 0) {
      session.FailToChange(NativePath(path) + ": cannot be registered");
    }
    saved.push_back(session.names().Shown(path));
  }
  session.CloseSaved(paths);
  Report(options, "saved", saved);
  return kClean;
}

// The path of an entry whose file is gone.
std::string GonePath(Session& session, const std::string& file) {
  std::string path = Take(session.manager().UrlPath(session.EntryOf(file).id));
  std::error_code error;
  if (fs::exists(PathOf(NativePath(path)), error)) {
    throw Failure(kFileSystem, file + ": this file is still there; remove or move it first");
  }
  return path;
}

int RunRemove(const Options& options, const std::string& site,
              const std::vector<std::string>& files) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  std::vector<std::string> paths;
  paths.reserve(files.size());
  for (const std::string& file : files) paths.push_back(GonePath(session, file));
  std::vector<std::string> removed;
  for (const std::string& path : paths) {
    if (session.manager().Remove(path, 0) != 0) {
      session.FailToChange(NativePath(path) + ": cannot be taken out of the tables");
    }
    removed.push_back(session.names().Shown(path));
  }
  session.CloseSaved(paths);
  Report(options, "removed", removed);
  return kClean;
}

int RunMove(const Options& options, const std::string& site, const std::string& from,
            const std::string& to) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  const std::string before = GonePath(session, from);
  const std::string after = session.names().FileOf(to);
  if (session.manager().Move(before, after) != 0) {
    session.FailToChange(from + ": cannot be moved in the tables");
  }
  session.CloseSaved({before, after});
  Report(options, "moved", {session.names().Shown(before), session.names().Shown(after)});
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

  CLI::App* remove = app.add_subcommand("rm", "Take deleted files out of the database");
  AddSiteName(*remove, *site);
  remove->add_option("FILE", *files, "files that were deleted")
      ->option_text(" ")
      ->required()
      ->check(NotEmpty());
  remove->callback([&options, &run, site, files] {
    run = [&options, site, files] { return RunRemove(options, *site, *files); };
  });

  const auto from = std::make_shared<std::string>();
  const auto to = std::make_shared<std::string>();
  CLI::App* move = app.add_subcommand("mv", "Tell the database that a file was moved");
  AddSiteName(*move, *site);
  move->add_option("FROM", *from, "where it was")->option_text(" ")->required()->check(NotEmpty());
  move->add_option("TO", *to, "where it is now")->option_text(" ")->required()->check(NotEmpty());
  move->callback([&options, &run, site, from, to] {
    run = [&options, site, from, to] { return RunMove(options, *site, *from, *to); };
  });
}

}  // namespace zvrsit::cli
