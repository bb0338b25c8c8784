// Reading many files that lie side by side.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit::platform {

// Opens files one after another, those of one folder cheaper than by their paths: from the second
// in a row on, the folder is held and its files are opened by their names in it. A folder that is
// replaced meanwhile by another of its name goes unnoticed for as long as the old one bears the
// file; so an object is to live for one operation only.
class NearbyFiles {
 public:
  NearbyFiles() = default;
  ~NearbyFiles() { Forget(); }
  NearbyFiles(const NearbyFiles&) = delete;
  NearbyFiles& operator=(const NearbyFiles&) = delete;

  // Open (platform/file.h) with kOpenReadOnly.
  int OpenToRead(const std::string& path);
  // Lets go of the folder.
  void Forget();

 private:
  int Turn(std::string_view folder);

  std::string native_;    // scratch
  std::string folder_;    // that of the last file, with a separator at its end
  bool isTried_ = false;  // whether folder_ was to be held
  int descriptor_ = -1;   // of folder_, -1 when it is not held
};

}  // namespace zvrsit::platform
