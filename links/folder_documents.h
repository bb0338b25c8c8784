// What a link to a folder leads to.
//
// By the web rules the document that stands for the folder (FolderDocuments); whether a target is a
// folder, the disk says. By the classic rules a target is a folder's when it ends in "/"
// (EndsAsFolder), and the name of the site's default document is put behind it, there or not.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zvrsit {

// The usual names of the document that stands for its folder, likeliest first.
inline constexpr std::string_view kDefaultDocuments[] = {
    "index.html",  "index.htm", "default.htm", "default.html", "index.php", "index.xhtml",
    "index.shtml", "index.jsp", "default.asp", "default.aspx", "index.asp"};

// Whether a target, as it is written, ends in a "/" that is no trail byte.
bool EndsAsFolder(std::string_view target);

// The documents that stand for their folders: the default document of the site, where its profile
// names one; else the first that is there of the usual names, else the first of these. What the
// disk was asked is remembered.
class FolderDocuments {
 public:
  // `defaultName` as the site's profile has it; null or empty for none.
  explicit FolderDocuments(const std::string* defaultName);

  // The names that such a document may have, the most wanted first.
  const std::vector<std::string>& names() const { return names_; }
  // Whether a file of this path has one of these names, in any letter case.
  bool MayBe(std::string_view path) const;

  // Makes the path of a folder, with or without a `\` at its end, that of its document, as a
  // server answers to both; leaves every other path alone.
  void ToDocument(std::string& path);

 private:
  std::string DocumentOf(const std::string& path) const;

  std::vector<std::string> names_;
  std::unordered_map<std::string, std::string> known_;  // a path to its document, or to ""
};

}  // namespace zvrsit
