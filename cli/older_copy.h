// A copy of the database of the older generation. Its files cannot be opened without being written.
// So questions are answered from a copy, and the database itself stays as it is.
#pragma once

#include <filesystem>
#include <string>

#include "cli/private_folder.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

class OlderCopy {
 public:
  // While the object lives, others cannot change the folder `older` of the native folder
  // `database`. Copies the profiles in it. Throws Failure: kDatabase when it is in use, kFileSystem
  // when it cannot be read or copied.
  OlderCopy(const std::string& database, const std::string& older);

  // Its native folder.
  const std::filesystem::path& path() const { return copy_.path(); }
  // Copies a file of a site too, by its native name in the database. A file that is missing, or
  // lies elsewhere, is left out. Throws Failure(kFileSystem).
  void Bring(const std::filesystem::path& file);

 private:
  SiteMgr lock_;
  const std::filesystem::path original_;
  PrivateFolder copy_;
};

}  // namespace zvrsit::cli
