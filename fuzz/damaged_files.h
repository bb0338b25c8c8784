// A small site with a database, made once in a folder of its own, and damaged by each input.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/damage.h"
#include "support/temp_folder.h"

namespace zvrsit::fuzz {

// The process goes to live in that folder: the database names its files from there, so that inputs
// mean the same in each run.
class DamagedFiles {
 public:
  // `names`: at most 32 files, relative to the folder. `make` makes them beside the folder `site`.
  DamagedFiles(const std::vector<std::string>& names, void (*make)()) : names_(names) {
    folder_.write("site/index.html",
                  "<title>T</title><a href=b.html#x>b</a><img src=c.gif alt=A><a href=http://x/>x");
    folder_.write("site/b.html", "<p id=x><a name=y></a><a href=d/>d</a>");
    folder_.write("site/d/e.html", "<a href=../index.html>up</a>");
    folder_.makeFolder("db/demo");
    std::filesystem::current_path(folder_.native());
    make();
    for (const std::string& name : names_) bytes_.push_back(test::ReadWhole(name));
  }

  // Puts the files back, changed as the input says: pieces of a byte for the file, one for what is
  // done, two for the place, and in most cases bytes. Gives which files are damaged, a bit each.
  unsigned Damage(std::string_view input) const {
    std::vector<std::string> changed = bytes_;
    unsigned damaged = 0;
    while (input.size() >= 4) {
      const std::size_t which = static_cast<unsigned char>(input[0]) % changed.size();
      const auto what = static_cast<unsigned char>(input[1]);
      const std::size_t at = static_cast<unsigned char>(input[2]) +
                             256 * static_cast<std::size_t>(static_cast<unsigned char>(input[3]));
      const std::size_t length = what % 64;
      const std::string_view bytes = input.substr(4, length);
      input.remove_prefix(4 + bytes.size());
      std::string& file = changed[which];
      damaged |= 1U << which;
      if (what >= 192) {
        file.resize(std::min(at, file.size()));
      } else if (what >= 128) {
        file.insert(std::min(at, file.size()), bytes);
      } else {
        file.replace(std::min(at, file.size()), bytes.size(), bytes);
      }
    }
    for (std::size_t i = 0; i < changed.size(); ++i) {
      if (test::ReadWhole(names_[i]) != changed[i]) test::WriteWhole(names_[i], changed[i]);
    }
    return damaged;
  }

  // A spoiled word, a cut and an insertion in each file.
  static std::vector<std::string> Seeds(std::size_t files) {
    std::vector<std::string> seeds = {""};
    for (std::size_t i = 0; i < files; ++i) {
      const std::string file(1, static_cast<char>(i));
      seeds.push_back(file + std::string("\x04\x10\x00\xFF\xFF\xFF\x7F", 7));
      seeds.push_back(file + std::string("\x04\x1C\x00\xFF\xFF\xFF\xFF", 7));
      seeds.push_back(file + std::string("\xC0\x25\x00", 3));
      seeds.push_back(file + std::string("\x88\x30\x00"
                                         "abcdefgh",
                                         11));
    }
    return seeds;
  }

 private:
  const test::TempFolder folder_;
  const std::vector<std::string> names_;
  std::vector<std::string> bytes_;
};

}  // namespace zvrsit::fuzz
