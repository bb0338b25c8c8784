// What a walk has seen in the folders of a site.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "platform/file.h"

namespace zvrsit {

struct FolderListing {
  struct Entry {
    std::string name;
    platform::FileStat stat;
    // It can change without a change in this folder: a link, or a file with several names.
    bool hasOtherPlace;
  };
  std::vector<Entry> entries;  // in the order of the walk
  std::vector<Entry> unnamed;  // platform::FindNamesWithBackslash
};

using FolderListings =
    std::unordered_map<std::string, FolderListing>;  // by `\` path, with `\` at its end

}  // namespace zvrsit
