#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/exit_code.h"

namespace zvrsit::cli {
namespace {

bool IsFile(const std::string& path) {
  std::error_code error;
  return std::filesystem::is_regular_file(NativePath(path), error);
}

int RunSave(const Options& options, const std::string& site,
            const std::vector<std::string>& files) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  for (const std::string& file : files) {
    const std::string path = session.PathOf(file);
    if (!IsFile(path)) throw Failure(kFileSystem, file + ": no such file");
    if (session.manager().Save(path, nullptr) != 0) {
      throw Failure(kFileSystem, file + ": cannot be registered");
    }
  }
  session.Close();
  return kClean;
}

int RunRemove(const Options& options, const std::string& site,
              const std::vector<std::string>& files) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  for (const std::string& file : files) {
    session.EntryOf(file);
    if (session.manager().Remove(session.PathOf(file), 0) != 0) {
      throw Failure(kDatabase, file + ": cannot be removed");
    }
  }
  session.Close();
  return kClean;
}

int RunMove(const Options& options, const std::string& site, const std::string& from,
            const std::string& to) {
  Session session(options, Database::kMustExist);
  session.Open(site);
  session.EntryOf(from);
  const std::string path = session.PathOf(to);
  if (!IsFile(path)) throw Failure(kFileSystem, to + ": no such file; move it on disk first");
  if (session.manager().Move(session.PathOf(from), path) != 0) {
    throw Failure(kDatabase, from + ": cannot be moved");
  }
  session.Close();
  return kClean;
}

}  // namespace

void AddChangeCommands(CLI::App& app, const Options& options, Run& run) {
  const auto site = std::make_shared<std::string>();
  const auto files = std::make_shared<std::vector<std::string>>();
  CLI::App* save = app.add_subcommand("save", "Register files anew after they changed on disk");
  save->add_option("NAME", *site, "the site")->required();
  save->add_option("FILE", *files, "files of the site")->required();
  save->callback([&options, &run, site, files] {
    run = [&options, site, files] { return RunSave(options, *site, *files); };
  });

  CLI::App* remove = app.add_subcommand("rm", "Take deleted files out of the database");
  remove->add_option("NAME", *site, "the site")->required();
  remove->add_option("FILE", *files, "files that were deleted")->required();
  remove->callback([&options, &run, site, files] {
    run = [&options, site, files] { return RunRemove(options, *site, *files); };
  });

  const auto from = std::make_shared<std::string>();
  const auto to = std::make_shared<std::string>();
  CLI::App* move = app.add_subcommand("mv", "Tell the database that a file was moved");
  move->add_option("NAME", *site, "the site")->required();
  move->add_option("FROM", *from, "where it was")->required();
  move->add_option("TO", *to, "where it is now")->required();
  move->callback([&options, &run, site, from, to] {
    run = [&options, site, from, to] { return RunMove(options, *site, *from, *to); };
  });
}

}  // namespace zvrsit::cli
