// What a page or a style sheet refers to, and what those files refer to in turn.
#pragma once

#include <memory>
#include <string>

#include "platform/api.h"

namespace zvrsit {

class CCSSControl;

// A tree of strings: each node is the full `\` path of a file, or a URL, and its children are what
// that file refers to, in the order of the file. A reference that stands twice is two nodes. A
// node is handed out as a pointer to its string, which is the tree's and lives as long as it.
//
// The root is the page or sheet that the tree was made for. Its siblings are sheets of LINKs whose
// REL has other words beside STYLESHEET: the page reads them, but does not refer to them as style
// sheets.
//
// Sheets are read when they are first asked about. Each file has children only once in a tree: at
// the node that is asked about first. So cycles of imports end, and a tree is not larger than all
// its sheets together. A tree must not outlive its CCSSControl.
class ZVRSIT_API CCSSFileTree {
 public:
  CCSSFileTree(CCSSFileTree&&) noexcept;
  CCSSFileTree& operator=(CCSSFileTree&&) noexcept;
  ~CCSSFileTree();

  // All of these accept null, which means a node that is not there. Nodes must be of this tree.

  // Null when the page could not be read.
  const std::string* getRoot() const;
  // 1 or 0.
  int hasChildren(const std::string* node);
  const std::string* getFirstChild(const std::string* node);
  const std::string* getNextSibling(const std::string* node) const;
  // The reference as it is written in the page or sheet, with its escapes decoded; null for the
  // root. The tree's.
  const std::string* getDeclaredText(const std::string* node) const;
  // One of the Type_ constants of CCSSControl.
  int getType(const std::string* node) const;

  // Where the reference stands, in bytes: in the text of the page's document, or in the file of
  // the sheet. -1 for the root, and in a sheet that is not in the code page.
  int getOffset(const std::string* node) const;

  // 1 when the node is a URL, 0 when it is a path.
  int isExternal(const std::string* node) const;
  // 1 when the node is a sheet of the site, so that it may have children.
  int isSheet(const std::string* node) const;

 private:
  friend class CCSSControl;
  struct ZVRSIT_LOCAL Sheets;  // css/css_reader.h

  ZVRSIT_LOCAL explicit CCSSFileTree(std::unique_ptr<Sheets> sheets);

  std::unique_ptr<Sheets> sheets_;
};

}  // namespace zvrsit
