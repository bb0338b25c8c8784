#include "css/css_file_tree.h"

#include "css/css_reader.h"
#include "platform/file.h"

namespace zvrsit {
namespace {

const CssNode* AsNode(const std::string* node) {
  return static_cast<const CssNode*>(node);
}

}  // namespace

CCSSFileTree::CCSSFileTree(std::unique_ptr<Sheets> sheets) : sheets_(std::move(sheets)) {}
CCSSFileTree::CCSSFileTree(CCSSFileTree&&) noexcept = default;
CCSSFileTree& CCSSFileTree::operator=(CCSSFileTree&&) noexcept = default;
CCSSFileTree::~CCSSFileTree() = default;

const std::string* CCSSFileTree::getRoot() const {
  return sheets_->roots.empty() ? nullptr : &sheets_->roots.front();
}

int CCSSFileTree::hasChildren(const std::string* node) {
  return getFirstChild(node) != nullptr ? 1 : 0;
}

const std::string* CCSSFileTree::getFirstChild(const std::string* node) {
  if (node == nullptr) return nullptr;
  const std::vector<CssNode>* children = sheets_->ChildrenOf(*AsNode(node));
  return children == nullptr || children->empty() ? nullptr : &children->front();
}

const std::string* CCSSFileTree::getNextSibling(const std::string* node) const {
  if (node == nullptr || AsNode(node)->isLast) return nullptr;
  return AsNode(node) + 1;
}

const std::string* CCSSFileTree::getDeclaredText(const std::string* node) const {
  if (node == nullptr || AsNode(node)->declared.empty()) return nullptr;
  return &AsNode(node)->declared;
}

int CCSSFileTree::getType(const std::string* node) const {
  return node == nullptr ? CCSSControl::Type_Other : AsNode(node)->type;
}

int CCSSFileTree::getOffset(const std::string* node) const {
  return node == nullptr ? -1 : AsNode(node)->offset;
}

int CCSSFileTree::isExternal(const std::string* node) const {
  return node != nullptr && AsNode(node)->isExternal ? 1 : 0;
}

int CCSSFileTree::isSheet(const std::string* node) const {
  return node != nullptr && AsNode(node)->isSheet ? 1 : 0;
}

const std::vector<CssNode>* CCSSFileTree::Sheets::ChildrenOf(const CssNode& node) {
  if (!node.isSheet) return &node == &roots.front() ? &ofThePage : nullptr;
  const auto [asked, isNew] = askedAbout_.try_emplace(&node, nullptr);
  if (isNew) asked->second = SheetChildren(node);
  return asked->second;
}

// The references of a sheet that this tree has not shown before.
const std::vector<CssNode>* CCSSFileTree::Sheets::SheetChildren(const CssNode& node) {
  platform::FileStat file;
  if (platform::Stat(node, file) < 0 || !file.isRegular()) return nullptr;
  const auto [shown, isNew] = sheets_.try_emplace({file.device, file.file});
  if (!isNew) return nullptr;
  shown->second = reader.ReadSheet(node, *this);
  return &shown->second;
}

const std::string& CCSSFileTree::Sheets::PageCharset() {
  if (!pageCharset) pageCharset = CCSSControl::CharsetOfPage(roots.front());
  return *pageCharset;
}

}  // namespace zvrsit
