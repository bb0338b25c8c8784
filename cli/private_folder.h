// A folder for the files of one run.
#pragma once

#include <filesystem>
#include <optional>
#include <utility>

#include "cli/interrupts.h"

namespace zvrsit::cli {

// A folder that only this user can enter; removed, with what is in it, at the end of the object.
// Interrupts are noted while it lives: whoever fills it calls Interrupts::Check now and then.
class PrivateFolder {
 public:
  // Makes it in the native folder `parent`, and that if it is missing; by default in the temporary
  // folder. Throws Failure(kFileSystem).
  explicit PrivateFolder(const std::filesystem::path& parent = {});
  ~PrivateFolder() { Remove(); }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Removes it before the end, but for what the system does not let go of while it is open.
  void Remove();

 private:
  std::optional<Interrupts> interrupts_{std::in_place};
  std::filesystem::path path_;
};

}  // namespace zvrsit::cli
