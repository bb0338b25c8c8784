#include "cli/private_folder.h"

#include <cerrno>
#include <cstdlib>
#include <random>
#include <string>
#include <system_error>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

#include "cli/exit_code.h"
#include "cli/native_name.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// A new folder in `parent`; empty when none can be made.
fs::path MakeIn(const fs::path& parent, std::error_code& error) {
#if defined(_WIN32)
  // Who may enter it is taken over from the parent, which is the user's own.
  const fs::path path = parent / ("zvrsit-" + std::to_string(std::random_device()()));
  if (!fs::create_directory(path, error) && !error) {
    error = std::make_error_code(std::errc::file_exists);
  }
  return error ? fs::path() : path;
#else
  std::string name = NameOf(parent / "zvrsit-XXXXXX");
  if (mkdtemp(name.data()) != nullptr) return PathOf(name);
  error.assign(errno, std::generic_category());
  return fs::path();
#endif
}

}  // namespace

std::error_code MakeOwnFolder(const fs::path& folder) {
  std::error_code error;
#if defined(_WIN32)
  fs::create_directories(folder, error);
#else
  if (folder.empty() || fs::is_directory(folder, error)) return {};
  error = MakeOwnFolder(folder.parent_path());
  if (!error && mkdir(NameOf(folder).c_str(), S_IRWXU) != 0 && !fs::is_directory(folder)) {
    error.assign(errno, std::generic_category());
  }
#endif
  return error;
}

PrivateFolder::PrivateFolder(const fs::path& parent) {
  std::error_code error;
  const fs::path base = parent.empty() ? fs::temp_directory_path(error) : parent;
  if (!error) error = MakeOwnFolder(base);
  if (!error) path_ = MakeIn(base, error);
  if (!error) return;
  throw Failure(kFileSystem,
                NameOf(base) + ": no temporary folder can be made here: " + error.message());
}

void PrivateFolder::Remove() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
  interrupts_.reset();
}

}  // namespace zvrsit::cli
