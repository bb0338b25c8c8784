// What is wrong with links to a file that is not there, or not in the site.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings/collect.h"
#include "findings/known_files.h"
#include "findings/subject.h"
#include "manager/site_link.h"

namespace zvrsit {

class BrokenTargets {
 public:
  // `names` are those of the files that the open site of `manager` knows now.
  BrokenTargets(SiteMgr& manager, const FoundSite& site, KnownFiles& names, Subjects& subjects);

  // Whether a link leads to a folder: it does not end in the name of its file, which is that of a
  // document for folders and was added.
  bool NamesFolder(const SiteLink& link);
  // What is wrong with all links to this file (a path number) that lead to it so; null when the
  // rule is off. A link to it is asked for what it knows of the file.
  const Subject* Of(const SiteLink& link, bool namesFolder);

 private:
  struct Target {
    std::string path;
    std::array<std::optional<const Subject*>, 2> subjects;  // by namesFolder
  };

  Target& TargetOf(int number);
  const Subject* Judge(const SiteLink& link, const std::string& path, bool namesFolder);
  std::filesystem::file_type TypeOnDisk(const std::string& path) const;

  SiteMgr& manager_;
  const FoundSite& site_;
  KnownFiles& names_;
  Subjects& subjects_;
  const std::vector<std::string> documents_;  // that stand for their folders
  std::unordered_map<int, Target> targets_;   // by number
};

}  // namespace zvrsit
