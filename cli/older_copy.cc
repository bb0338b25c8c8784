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

OlderCopy::OlderCopy(const std::string& database, const std::string& older) {
  lock_.SetLocking(SiteMgr::Locking::kAsk, Patience());
  lock_.setDB(FolderPath(database).c_str(), kSiteProfiles, kServerProfiles, 0);
  if (lock_.LockSite(kOlderDatabase) != 0) FailToLock(lock_, database, database + ": the database");
  CopyOlderProfiles(PathOf(database) / PathOf(older), path());
}

void CopyOlderProfiles(const fs::path& original, const fs::path& copy) {
  std::error_code error;
  fs::directory_iterator entry(original, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    CopyOlderFile(original, copy, entry->path().filename());
  }
  NeedCopied(original, error);
}

// The copies are made writable, even if the files are not.
void CopyOlderFile(const fs::path& original, const fs::path& folder, const fs::path& file) {
  Interrupts::Check();
  const fs::path name = file.lexically_normal();
  std::error_code error;
  if (name.is_absolute() || name.begin() == name.end() || *name.begin() == ".." ||
      !fs::is_regular_file(original / name, error)) {
    return;
  }
  const fs::path copy = folder / name;
  error = MakeOwnFolder(copy.parent_path());
  if (!error) error = CopyOneFile(original / name, copy);
  if (!error) fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write, error);
  NeedCopied(original / name, error);
}

}  // namespace zvrsit::cli
