// What a link to a folder leads to.
//
// With RuleFlags::findsFolderDocuments it leads to the document that stands for the folder
// (FolderDocuments). The disk tells whether a target is a folder. Without this flag a target means
// a folder when it ends in "/" (EndsAsFolder), and the name of the site's default document is put
// after it, whether or not this document is there.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zvrsit {

// The usual names of the document that stands for its folder, the likeliest first.
inline constexpr std::string_view kDefaultDocuments[] = {
    "index.html",  "index.htm", "default.htm", "default.html", "index.php", "index.xhtml",
    "index.shtml", "index.jsp", "default.asp", "default.aspx", "index.asp"};

// Whether a target as written ends in a "/" that is no trail byte.
bool EndsAsFolder(std::string_view target);

// The documents that stand for their folders. If the site's profile names a default document, it is
// that one. Else it is the first of the usual names that is there; if none is, the first of the
// names. The answers of the disk are remembered.
class FolderDocuments {
 public:
  // `defaultName` comes from the site's profile; null or empty for none.
  explicit FolderDocuments(const std::string* defaultName);

  // The names that such a document may have, the most wanted first.
  const std::vector<std::string>& names() const { return names_; }
  // Whether a file of this path has one of these names, in any letter case.
  bool MayBe(std::string_view path) const;

  // Replaces the path of a folder, with or without a `\` at its end, by that of its document,
  // because a server answers to both. Every other path stays as it is.
  void ToDocument(std::string& path);

 private:
  std::string DocumentOf(const std::string& path) const;

  std::vector<std::string> names_;
  std::unordered_map<std::string, std::string> known_;  // a path to its document, or to ""
};

}  // namespace zvrsit
