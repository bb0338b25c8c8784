// What a link to a folder leads to under the web rules.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zvrsit {

// The documents that stand for their folders: the default document of the site, where its profile
// names one; else the first that is there of the usual names (kDefaultDocuments), else the first
// of these. What the disk was asked is remembered.
class FolderDocuments {
 public:
  // `defaultName` as the site's profile has it; null or empty for none.
  explicit FolderDocuments(const std::string* defaultName);

  // The names that such a document may have, the most wanted first.
  const std::vector<std::string>& names() const { return names_; }

  // Turns the path of a folder, with or without a `\` at its end, to that of its document, as a
  // server answers to both; leaves every other path alone.
  void Turn(std::string& path);

 private:
  std::string DocumentOf(const std::string& path) const;

  std::vector<std::string> names_;
  std::unordered_map<std::string, std::string> known_;  // a path to its document, or to ""
};

}  // namespace zvrsit
