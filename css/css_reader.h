// The inside of CCSSControl and CCSSFileTree: it reads pages and sheets, and keeps what a tree has
// read so far.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "css/css_control.h"
#include "css/css_file_tree.h"
#include "css/css_node.h"
#include "css/css_references.h"
#include "css/reference_resolver.h"
#include "links/page_parts.h"

namespace zvrsit {

struct StyleText;

// The type of a node, by the kind of the reference.
constexpr int NodeTypeOf(CssReferenceKind kind) {
  constexpr int kTypes[] = {CCSSControl::Type_Import, CCSSControl::Type_Image,
                            CCSSControl::Type_Other};
  return kTypes[static_cast<std::size_t>(kind)];
}

// Finds the references of one page or sheet after another, and resolves them.
class CCSSControl::Reader {
 public:
  // The settings of the control.
  DOM* dom = nullptr;
  std::string siteFolder;
  std::string documentRoot;
  ReferenceResolver resolver;

  // Puts the references of the page at `path` into the tree.
  void CollectPage(const std::string& path, const Document& document, CCSSFileTree::Sheets& tree);
  // What a sheet refers to; nothing when it cannot be read.
  std::vector<CssNode> ReadSheet(const CssNode& sheet, CCSSFileTree::Sheets& tree);

 private:
  void CollectPart(const PagePart& part, CCSSFileTree::Sheets& tree);
  void AddLinks(const PagePart& part, CCSSFileTree::Sheets& tree);
  // Appends to found_.
  void FindInStyle(const Document& document, const StyleText& style);

  // From here on references are resolved from the file at `path`.
  void BeginFile(const std::string& path);
  // The same from one of the bases of this page.
  void UseBase(std::int32_t base);
  // Adds the references in found_, which stand in a part of the page. `atOnce`: a BASE after them
  // does not count.
  void AddPageReferences(const PagePart& part, bool atOnce, std::vector<CssNode>& nodes);
  bool AddNode(std::string_view declared, int offset, int type, std::vector<CssNode>& nodes);
  bool IsReadable(const std::string& path) const;

  std::string page_;  // whose parts_ are being read
  PageParts parts_;
  std::int32_t base_ = kPageItself;  // of parts_, which references are taken from now
  std::vector<CssReference> found_;  // scratch
  std::string href_;                 // scratch
};

// The nodes of a tree. They do not move while it lives, because callers hold pointers to them.
struct CCSSFileTree::Sheets {
  explicit Sheets(CCSSControl::Reader& reads) : reader(reads) {}

  // Null when there are none.
  const std::vector<CssNode>* ChildrenOf(const CssNode& node);
  const std::vector<CssNode>* SheetChildren(const CssNode& node);
  // The label of the encoding of the page; empty when it is not known.
  const std::string& PageCharset();

  CCSSControl::Reader& reader;
  std::vector<CssNode> roots;              // the root, then its siblings
  std::vector<CssNode> ofThePage;          // the root's children, when it is a page
  std::optional<std::string> pageCharset;  // once it was asked for

 private:
  using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;  // device and file

  std::unordered_map<const CssNode*, const std::vector<CssNode>*> askedAbout_;
  std::map<FileIdentity, std::vector<CssNode>> sheets_;  // their references
};

}  // namespace zvrsit
