#include "css/css_file_tree.h"

#include "css/css_control.h"
#include "css/css_node.h"
#include "platform/file.h"

namespace zvrsit {
namespace {

const CssNode* AsNode(const std::string* node) {
  return static_cast<const CssNode*>(node);
}

}  // namespace

CCSSFileTree::CCSSFileTree(CCSSControl& control) : control_(&control) {}
CCSSFileTree::CCSSFileTree(CCSSFileTree&&) noexcept = default;
CCSSFileTree& CCSSFileTree::operator=(CCSSFileTree&&) noexcept = default;
CCSSFileTree::~CCSSFileTree() = default;

const std::string* CCSSFileTree::getRoot() const {
  return roots_.empty() ? nullptr : &roots_.front();
}

int CCSSFileTree::hasChildren(const std::string* node) {
  return getFirstChild(node) != nullptr ? 1 : 0;
}

const std::string* CCSSFileTree::getFirstChild(const std::string* node) {
  if (node == nullptr) return nullptr;
  const std::vector<CssNode>* children = ChildrenOf(*AsNode(node));
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

const std::vector<CssNode>* CCSSFileTree::ChildrenOf(const CssNode& node) {
  if (!node.isSheet) return &node == &roots_.front() ? &ofThePage_ : nullptr;
  const auto [asked, isNew] = askedAbout_.try_emplace(&node, nullptr);
  if (isNew) asked->second = SheetChildren(node);
  return asked->second;
}

// The references of a sheet that this tree has not shown before.
const std::vector<CssNode>* CCSSFileTree::SheetChildren(const CssNode& node) {
  platform::FileStat file;
  if (platform::Stat(node, file) < 0 || !file.isRegular()) return nullptr;
  const auto [shown, isNew] = sheets_.try_emplace({file.device, file.file});
  if (!isNew) return nullptr;
  shown->second = control_->ReadSheet(node, *this);
  return &shown->second;
}

const std::string& CCSSFileTree::PageCharset() {
  if (!pageCharset_) pageCharset_ = CCSSControl::CharsetOfPage(roots_.front());
  return *pageCharset_;
}

}  // namespace zvrsit
