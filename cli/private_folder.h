// A folder for the files of one run.
#pragma once

#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/interrupts.h"

namespace zvrsit::cli {

// A folder that only this user can enter. The destructor removes it, with everything in it. While
// it lives, interrupts are only noted: whoever fills it must call Interrupts::Check now and then.
class PrivateFolder {
 public:
  // Makes it in the native folder `parent`, which is made if it is missing; by default in the
  // temporary folder. Throws Failure(kFileSystem).
  explicit PrivateFolder(const std::filesystem::path& parent = {});
  ~PrivateFolder() { Remove(); }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Removes it now, except files that the system keeps because they are open.
  void Remove();

 private:
  std::optional<Interrupts> interrupts_{std::in_place};
  std::filesystem::path path_;
};

// Makes a native folder, and those above it that are missing, for this user alone. One that is
// there stays as it is.
[[nodiscard]] std::error_code MakeOwnFolder(const std::filesystem::path& folder);

}  // namespace zvrsit::cli
