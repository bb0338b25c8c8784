// Database files that go from one system to another. They are kept as hex under tests/data; every
// system writes the same bytes from the same calls, and reads them. Their paths are relative, so
// that they are the same text everywhere.
#pragma once

#include <gtest/gtest.h>

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
  std::string read(const std::string& name) const { return folder_.read(name); }

 private:
  TempFolder folder_;
  std::filesystem::path before_;
};

// The files `names` below `db`, with their images in the folder `images` of tests/data.
class CarriedFiles {
 public:
  CarriedFiles(std::string images, std::vector<std::string> names)
      : images_(std::move(images)), names_(std::move(names)) {}

  void ExpectIn(const WorkingFolder& folder) const {
    for (const std::string& name : names_) {
      EXPECT_EQ(ToHex(folder.read("db/" + name)), ToHex(Image(name))) << name;
    }
  }
  void PutInto(const WorkingFolder& folder) const {
    for (const std::string& name : names_) folder.write("db/" + name, Image(name));
  }

 private:
  // `demo/UR` has its image in `demo-UR.hex`.
  std::string Image(std::string name) const {
    std::replace(name.begin(), name.end(), '/', '-');
    const std::string image = FromHex(
        ReadWhole(std::string(ZVRSIT_SOURCE_DIR) + "/tests/data/" + images_ + "/" + name + ".hex"));
    EXPECT_FALSE(image.empty()) << name;
    return image;
  }

  std::string images_;
  std::vector<std::string> names_;
};

}  // namespace zvrsit::test
