// What a link to a folder leads to, and a link to a page without its extension.
//
// With RuleFlags::findsFolderDocuments a link to a folder leads to the document that stands for the
// folder (FolderDocuments). The disk tells whether a target is a folder. Without this flag a target
// means a folder when it ends in "/" (EndsAsFolder), and the name of the site's default document is
// put after it, whether or not this document is there.
#pragma once

#include <functional>
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

enum class FileKind { kNone, kFile, kFolder };
// Says what there is at a `\` path. An empty function means the disk itself.
using AskKind = std::function<FileKind(const std::string& path)>;
FileKind KindOnDisk(const std::string& path);

// The documents that stand for their folders: the first of the names that is there; if none is, the
// first of the names. The answers of the disk are remembered.
//
// Extensions may be left out where the site's profile says which: `about` is then the first there
// is of the file `about`, that file with one of the extensions, and the folder `about`. `about/` is
// always the folder.
class FolderDocuments {
 public:
  // Both come from the site's profile. `defaultNames`: names with commas between them, the most
  // wanted first; null or without a name for the usual ones. `extensions`: without their
  // dots, with commas or spaces between them; empty for none, and so is a text with a separator or
  // a colon.
  explicit FolderDocuments(const std::string* defaultNames, std::string_view extensions = {},
                           AskKind kinds = {});

  // The names that such a document may have, the most wanted first.
  const std::vector<std::string>& names() const { return names_; }
  // What there is at a path.
  FileKind KindOf(const std::string& path) const {
    return kinds_ ? kinds_(path) : KindOnDisk(path);
  }
  // Whether a file of this path has one of these names, in any letter case.
  bool MayBe(std::string_view path) const;

  // Replaces the path of a folder, with or without a `\` at its end, by that of its document,
  // because a server answers to both; and one without its extension by that of the file. Every
  // other path stays as it is.
  void ToDocument(std::string& path);

  // The paths to which links may lead in place of each other, depending on which of them are there:
  // `path`, and with extensions that may be left out those with and without them.
  std::vector<std::string> AlternativesOf(std::string_view path) const;

 private:
  std::string DocumentOf(const std::string& path) const;
  std::string WithExtension(const std::string& path) const;

  AskKind kinds_;
  std::vector<std::string> names_;
  std::vector<std::string> extensions_;
  std::unordered_map<std::string, std::string> known_;  // a path to its document, or to ""
};

}  // namespace zvrsit
