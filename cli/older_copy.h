// A copy of the database of the older generation. Its files cannot be opened without being written.
// So questions are answered from a copy, and the database itself stays as it is.
#pragma once

#include <filesystem>
#include <string>

#include "cli/private_folder.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

// Copies a file of the older database in `original`, by its native name there, to the folder
// `copy`, which gets folders as needed. A file that is missing, or lies elsewhere, is left out.
// Throws Failure(kFileSystem).
void CopyOlderFile(const std::filesystem::path& original, const std::filesystem::path& copy,
                   const std::filesystem::path& file);
// The same for all files that lie in `original` itself: the profiles.
void CopyOlderProfiles(const std::filesystem::path& original, const std::filesystem::path& copy);

class OlderCopy {
 public:
  // While the object lives, others cannot change the folder `older` of the native folder
  // `database`. Copies the profiles in it. Throws Failure: kDatabase when it is in use, kFileSystem
  // when it cannot be read or copied.
  OlderCopy(const std::string& database, const std::string& older);

  // Its native folder.
  const std::filesystem::path& path() const { return copy_.path(); }

 private:
  SiteMgr lock_;
  PrivateFolder copy_;
};

}  // namespace zvrsit::cli
