// A copy of the database of the older generation. Its files cannot be opened without being written,
// so questions are answered from a copy, and nothing is written where the database lies.
#pragma once

#include <filesystem>
#include <string>

#include "cli/private_folder.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

class OlderCopy {
 public:
  // Keeps others from changing the folder `older` of the native folder `database` for as long as
  // the object lives, and copies the profiles in it. Throws Failure: kDatabase when it is in use,
  // kFileSystem when it cannot be read or copied.
  OlderCopy(const std::string& database, const std::string& older);

  // Its native folder.
  const std::filesystem::path& path() const { return copy_.path(); }
  // Copies a file of a site too, by its native name in the database; one that is missing, or
  // elsewhere, is left out. Throws Failure(kFileSystem).
  void Bring(const std::filesystem::path& file);

 private:
  SiteMgr lock_;
  const std::filesystem::path original_;
  PrivateFolder copy_;
};

}  // namespace zvrsit::cli
