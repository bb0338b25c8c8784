#include "cli/table_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>
#include <vector>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/private_folder.h"
#include "tables/table_files.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// The names of the files in the folder of a site's tables.
std::vector<std::string> TableNames() {
  std::vector<std::string> names;
  for (const SiteTableFile& table : kSiteTableFiles) {
    names.emplace_back(table.suffix.substr(1));  // after the separator
    names.push_back(TextFileOf(names.back()));
  }
  return names;
}

void Need(bool done, const std::string& name, const std::error_code& error) {
  if (!done) throw Failure(kFileSystem, name + ": " + error.message());
}

}  // namespace

void MoveKeptAnswers(const std::string& folder, const std::string& to) {
  if (folder == to) return;
  std::error_code error;
  fs::rename(PathOf(folder) / kKeptAnswers, PathOf(to) / kKeptAnswers, error);
  RemoveKeptAnswers(folder);
}

void RemoveKeptAnswers(const std::string& folder) {
  std::error_code error;
  fs::remove(PathOf(folder) / kKeptAnswers, error);
  fs::remove(PathOf(folder) / (std::string(kKeptAnswers) + "-journal"), error);
  fs::remove(PathOf(folder), error);  // only when it is empty
}

std::string StampOf(const fs::path& file) {
  std::error_code error;
  const std::uintmax_t size = fs::file_size(file, error);
  const auto time = fs::last_write_time(file, error).time_since_epoch().count();
  return std::to_string(size) + " " + std::to_string(time);
}

bool HasTables(const std::string& folder) {
  return std::ranges::all_of(TableNames(), [&](const std::string& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(PathOf(folder) / file, error);
    return !error && size != 0;
  });
}

std::string StampOfTables(const std::string& folder) {
  std::string stamp;
  std::vector<std::string> names = TableNames();
  names.emplace_back("NOTE");
  for (const std::string& name : names) stamp += StampOf(PathOf(folder) / name) + "\n";
  return stamp;
}

std::error_code CopyOneFile(const fs::path& from, const fs::path& to) {
  std::error_code error;
  errno = 0;
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, error);
  // The standard library gives this error when a disk becomes full.
  if (error == std::errc::io_error && errno != 0) error.assign(errno, std::generic_category());
  return error;
}

void CopyTables(const std::string& folder, const std::string& to) {
  for (const std::string& file : TableNames()) {
    const fs::path copy = PathOf(to) / file;
    const std::error_code error = CopyOneFile(PathOf(folder) / file, copy);
    Need(!error, NameOf(copy), error);
  }
}

void RemoveTables(const std::string& folder) {
  std::error_code error;
  static_cast<void>(MakeOwnFolder(PathOf(folder)));
  for (const std::string& file : TableNames()) {
    const fs::path path = PathOf(folder) / file;
    fs::remove(path, error);
    Need(!error, NameOf(path), error);
  }
}

void NeedAccess(const std::string& file, bool onlyToRead) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(
      std::fopen(file.c_str(), onlyToRead ? "rb" : "r+b"), &std::fclose);
  Need(opened != nullptr || errno == ENOENT, file, {errno, std::generic_category()});
}

void NeedAccessToTables(const std::string& folder, bool onlyToRead) {
  for (const std::string& file : TableNames())
    NeedAccess(NameOf(PathOf(folder) / file), onlyToRead);
}

}  // namespace zvrsit::cli
