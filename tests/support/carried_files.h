// Database files that go from one system to another. They are kept as hex under tests/data; every
// system writes the same bytes from the same calls. Their paths are relative, so that they are the
// same text everywhere.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"

namespace zvrsit::test {

// A temporary folder with the folders `site` and `db`, which is the working folder of the process
// as long as this lives.
class WorkingFolder {
 public:
  WorkingFolder() : before_(std::filesystem::current_path()) {
    folder_.makeFolder("site");
    folder_.makeFolder("db");
    std::filesystem::current_path(folder_.native());
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;
  ~WorkingFolder() { std::filesystem::current_path(before_); }

  void write(const std::string& name, std::string_view bytes) const { folder_.write(name, bytes); }
  // Compares files below `db` with their images in a folder of tests/data; `demo/UR` has its image
  // in `demo-UR.hex`.
  void ExpectImages(const std::string& images, const std::vector<std::string>& names) const {
    for (const std::string& name : names) {
      std::string image = name;
      std::replace(image.begin(), image.end(), '/', '-');
      image = FromHex(ReadWhole(std::string(ZVRSIT_SOURCE_DIR) + "/tests/data/" + images + "/" +
                                image + ".hex"));
      EXPECT_FALSE(image.empty()) << name;
      EXPECT_EQ(ToHex(folder_.read("db/" + name)), ToHex(image)) << name;
    }
  }

 private:
  TempFolder folder_;
  std::filesystem::path before_;
};

}  // namespace zvrsit::test
