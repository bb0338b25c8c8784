// Which folders of a large graph stand for what is in them.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/native_path.h"

namespace zvrsit {

// Between the names of a native path.
inline constexpr char kSeparator = platform::kNamesIgnoreCase ? '\\' : '/';

// Files by their native paths in UTF-8, relative to the site folder. Folders are named so too, with
// a separator at the end; the site folder is "".
class Folding {
 public:
  void Add(std::string_view path);
  // Folds until at most `most` files and folders are left. It begins with the site folder alone,
  // and unfolds the largest folder as long as there is room: first into its folders and one node
  // for its files, then these files. 0: folds nothing.
  void Fold(std::size_t most);
  // The folder that stands for a file; null for none.
  const std::string* FolderOf(std::string_view path) const;

 private:
  struct Folder {
    std::size_t files = 0;  // directly in it
    std::size_t all = 0;    // in it and below
    std::set<std::string> folders;
  };

  std::map<std::string, Folder, std::less<>> folders_;
  std::set<std::string, std::less<>> folded_;       // with everything below
  std::set<std::string, std::less<>> filesFolded_;  // with the files directly in them
};

}  // namespace zvrsit
