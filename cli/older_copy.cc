#include "cli/older_copy.h"

#include <system_error>

#include "cli/exit_code.h"
#include "cli/native_name.h"
#include "cli/session.h"
#include "cli/table_files.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

void NeedCopied(const fs::path& path, const std::error_code& error) {
  if (error) throw Failure(kFileSystem, NameOf(path) + ": cannot be copied: " + error.message());
}

}  // namespace

OlderCopy::OlderCopy(const std::string& database, const std::string& older)
    : original_(PathOf(database) / PathOf(older)) {
  lock_.SetLocking(SiteMgr::Locking::kAsk);
  lock_.setDB(FolderPath(database).c_str(), kSiteProfiles, kServerProfiles, 0);
  if (lock_.LockSite(kOlderDatabase) != 0) FailToLock(lock_, database, database + ": the database");
  std::error_code error;
  fs::directory_iterator entry(original_, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    Bring(entry->path().filename());
  }
  NeedCopied(original_, error);
}

// The copies are made writable, even if the files are not.
void OlderCopy::Bring(const fs::path& file) {
  Interrupts::Check();
  const fs::path name = file.lexically_normal();
  std::error_code error;
  if (name.is_absolute() || name.begin() == name.end() || *name.begin() == ".." ||
      !fs::is_regular_file(original_ / name, error)) {
    return;
  }
  const fs::path copy = path() / name;
  fs::create_directories(copy.parent_path(), error);
  if (!error) error = CopyOneFile(original_ / name, copy);
  if (!error) fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write, error);
  NeedCopied(original_ / name, error);
}

}  // namespace zvrsit::cli
