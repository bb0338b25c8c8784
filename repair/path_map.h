// What becomes of the paths of a site, and of URLs.
#pragma once

#include <string>
#include <unordered_map>

#include "links/folder_documents.h"

namespace zvrsit {

class PathMap {
 public:
  PathMap() = default;
  // Of a move; of a folder when both end in "\".
  PathMap(std::string from, std::string to);

  // References to one file, or one URL, are to lead to another.
  void Add(const std::string& from, const std::string& to) { single_[from] = to; }

  // The path that stands for `path` afterwards.
  std::string Of(const std::string& path) const;
  bool Moves(const std::string& path) const { return isMove_ && Of(path) != path; }
  // What there is at a path after the move.
  FileKind KindAfter(const std::string& path) const;

 private:
  bool isMove_ = false;
  bool isFolder_ = false;
  std::string from_;  // without a "\" at the end
  std::string to_;
  std::unordered_map<std::string, std::string> single_;
};

}  // namespace zvrsit
