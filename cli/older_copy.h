// A copy of the database of the older generation. Its files cannot be opened without being written,
// so questions are answered from a copy: no lock is needed meanwhile, and nothing is written where
// the database lies.
#pragma once

#include <filesystem>
#include <string>

namespace zvrsit::cli {

// A folder in the temporary folder that only this user can enter; removed, with what is in it, at
// the end of the object.
class PrivateFolder {
 public:
  // Throws Failure(kFileSystem).
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

class OlderCopy {
 public:
  // Copies the folder `older` of the native folder `database` while nobody changes it. Throws
  // Failure: kDatabase when it is in use, kFileSystem when it cannot be read or copied.
  OlderCopy(const std::string& database, const std::string& older);

  // Its native folder.
  const std::filesystem::path& path() const { return folder_.path(); }

 private:
  PrivateFolder folder_;
};

}  // namespace zvrsit::cli
