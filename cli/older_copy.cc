#include "cli/older_copy.h"

#include <cerrno>
#include <cstdlib>
#include <random>
#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/session.h"
#include "cli/table_files.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

fs::path MakePrivateFolder(const fs::path& parent, std::error_code& error) {
#if defined(_WIN32)
  // The temporary folder itself is the user's own.
  const fs::path path = parent / ("zvrsit-" + std::to_string(std::random_device()()));
  if (!error && !fs::create_directory(path, error))
    error = std::make_error_code(std::errc::file_exists);
  return path;
#else
  std::string name = NameOf(parent / "zvrsit-XXXXXX");
  if (!error && mkdtemp(name.data()) == nullptr) error.assign(errno, std::generic_category());
  return PathOf(name);
#endif
}

void Need(const fs::path& path, const std::error_code& error) {
  if (error) throw Failure(kFileSystem, NameOf(path) + ": cannot be copied: " + error.message());
}

// The copies can be written, whatever the files can.
void CopyFolder(const fs::path& from, const fs::path& to) {
  std::error_code error;
  fs::directory_iterator entry(from, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const fs::path copy = to / entry->path().filename();
    std::error_code failed;
    if (entry->is_directory(failed)) {
      fs::create_directory(copy, failed);
      if (!failed) CopyFolder(entry->path(), copy);
    } else if (entry->is_regular_file(failed)) {
      failed = CopyFile(entry->path(), copy);
      if (!failed) fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write, failed);
    }
    Need(entry->path(), failed);
  }
  Need(from, error);
}

}  // namespace

PrivateFolder::PrivateFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  path_ = MakePrivateFolder(parent, error);
  if (error) {
    throw Failure(kFileSystem, NameOf(parent) + ": no temporary folder: " + error.message());
  }
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

OlderCopy::OlderCopy(const std::string& database, const std::string& older) {
  SiteMgr manager;
  manager.SetLocking(SiteMgr::Locking::kAsk);
  manager.setDB(FolderPath(database).c_str(), "sites.R", "servers.R", 0);
  if (manager.LockSite(kOlderDatabase) != 0)
    FailToLock(manager, database, database + ": the database");
  CopyFolder(PathOf(database) / PathOf(older), path());
}

}  // namespace zvrsit::cli
