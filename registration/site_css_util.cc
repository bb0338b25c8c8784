#include "registration/site_css_util.h"

#include <unordered_set>
#include <vector>

#include "css/css_control.h"
#include "links/link_type.h"
#include "links/server_code.h"
#include "manager_base/operation_memo.h"
#include "manager_base/site_mgr_base.h"
#include "storage/records.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_url_db.h"
#include "util/file_type.h"
#include "util/url_id.h"

namespace zvrsit {
namespace {

constexpr std::uint32_t kStyleTypes = LT_CSS_OTHER | LT_CSS_LINK | LT_CSS_IMPORT | LT_CSS_IMAGE;

bool HasStores(const SiteTable* table) {
  return table != nullptr && table->records() != nullptr && table->strings() != nullptr;
}

}  // namespace

std::uint32_t StyleLinkType(int nodeType) {
  switch (nodeType) {
    case CCSSControl::Type_Link:
      return LT_CSS_LINK;
    case CCSSControl::Type_Import:
      return LT_CSS_IMPORT;
    case CCSSControl::Type_Image:
      return LT_CSS_IMAGE;
    default:
      return LT_CSS_OTHER;
  }
}

SiteCSSUtil::SiteCSSUtil(SiteMgrBase* manager, const std::string& siteRoot)
    : manager_(manager), siteRoot_(siteRoot) {
  if (manager_ == nullptr) return;
  cssControl_ = manager_->GetCssCtrl();
  pathTable_ = manager_->GetPathDB();
  urlTable_ = manager_->GetUrlDB();
  linkTable_ = manager_->GetLinkDB();
}

bool SiteCSSUtil::IsReady() const {
  return manager_ != nullptr && HasStores(pathTable_) && HasStores(urlTable_) &&
         HasStores(linkTable_);
}

bool SiteCSSUtil::IsWeb() const {
  return manager_->GetLinkRules() == LinkRules::Web;
}

int SiteCSSUtil::CollectPage(const std::string& path, Document* document) {
  if (!IsReady() || cssControl_ == nullptr) return -1;
  CCSSFileTree tree = cssControl_->GetFileTree(path, document);
  const std::string* const page = tree.getRoot();
  inPage_ = true;
  const int result = RegisterTreeNode(page, tree, siteRoot_);
  inPage_ = false;
  if (result < 0) return -1;
  RegisterSheets(tree, tree.getFirstChild(page));
  RegisterSheets(tree, tree.getNextSibling(page));
  return 0;
}

int SiteCSSUtil::CollectSheet(const std::string& path) {
  if (!IsReady() || cssControl_ == nullptr) return -1;
  const int number = AddFile(path, siteRoot_);
  if (number < 0) return -1;
  if (Registered().contains(number) && HasStyleLinks(number)) return 0;
  // It holds no reference, or a page had it by two names, of which a tree reads one.
  Registered().erase(number);
  sheet_ = number;
  std::string charset;
  if (IsWeb() && CCSSControl::DependsOnCharset(path)) {
    charset = CharsetOfReferrer(number);
    if (charset.empty() && WaitsForPage(number)) return 0;
  }
  CCSSFileTree tree = cssControl_->GetFileTreeFromCSS(path, charset);
  RegisterSheets(tree, tree.getRoot());
  return 0;
}

// The label of the encoding that a sheet has from the first page or sheet that refers to it as to
// a sheet, or from what refers to that one; empty without.
std::string SiteCSSUtil::CharsetOfReferrer(int sheet) const {
  std::vector<int> sheets{sheet};
  std::unordered_set<int> known{sheet};
  for (std::size_t next = 0; next < sheets.size(); ++next) {
    std::vector<int> links;
    linkTable_->Query(kAnyUrlID, UrlID(kKindPath, sheets[next]), links);
    for (const int number : links) {
      SiteLinkRec link;
      std::string path;
      if (linkTable_->Get(number, link) < 0 || pathTable_->Name(link.from.id, path) < 0) continue;
      const auto type = static_cast<std::uint32_t>(link.type);
      if ((type & (LT_CSS_LINK | LT_CSS_IMPORT)) == 0) continue;
      const bool isPage = ClassifyFileType(path) != FT_CSS;
      std::string charset =
          isPage ? CCSSControl::CharsetOfPage(path) : CCSSControl::CharsetOfSheet(path);
      if (!charset.empty()) return charset;
      if (!isPage && known.insert(link.from.id).second) sheets.push_back(link.from.id);
    }
  }
  return {};
}

// In a rebuild, a page that links the sheet may still come.
bool SiteCSSUtil::WaitsForPage(int sheet) {
  OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo == nullptr || !memo->sheetsWait) return false;
  memo->waitingSheets.push_back(sheet);
  return true;
}

// Registers the sheets among `first` and its siblings and below them, each before what it refers
// to.
void SiteCSSUtil::RegisterSheets(CCSSFileTree& tree, const std::string* first) {
  if (first == nullptr) return;
  std::vector<const std::string*> levels{first};
  while (!levels.empty()) {
    const std::string* const node = levels.back();
    if (node == nullptr) {
      levels.pop_back();
      continue;
    }
    levels.back() = tree.getNextSibling(node);
    if (tree.isSheet(node) && RegisterSheet(tree, node)) {
      levels.push_back(tree.getFirstChild(node));
    }
  }
}

// False when the sheet needs no second look in this operation, or has no place in the tables.
bool SiteCSSUtil::RegisterSheet(CCSSFileTree& tree, const std::string* sheet) {
  if (IsHidden(*sheet)) return false;
  const int number = AddTarget(*sheet, siteRoot_);
  if (number < 0 || !Registered().insert(number).second) return false;
  if (tree.hasChildren(sheet) && !HasStyleLinks(number)) RegisterTreeNode(sheet, tree, siteRoot_);
  return true;
}

int SiteCSSUtil::RegisterTreeNode(const std::string* node, CCSSFileTree& tree,
                                  const std::string& siteRoot) {
  if (node == nullptr || !IsReady()) return -1;
  const int source = AddFile(*node, siteRoot);
  if (source < 0) return -1;
  for (const std::string* child = tree.getFirstChild(node); child != nullptr;
       child = tree.getNextSibling(child)) {
    RegisterChild(source, tree, child, siteRoot);
  }
  return 0;
}

void SiteCSSUtil::RegisterChild(int source, CCSSFileTree& tree, const std::string* child,
                                const std::string& siteRoot) {
  const std::string* const declared = tree.getDeclaredText(child);
  const std::string& text = declared != nullptr ? *declared : *child;
  if (IsHidden(text) || IsHidden(*child)) return;
  const bool isExternal = tree.isExternal(child);
  const int target = isExternal ? AddUrl(*child) : AddTarget(*child, siteRoot);
  if (target < 0) return;
  const UrlID from(kKindPath, source);
  const UrlID to(isExternal ? kKindUrl : kKindPath, target);
  const int type = static_cast<int>(StyleLinkType(tree.getType(child)));
  if (IsWeb()) {
    linkTable_->Add(text, from, to, "", type, OffsetInFile(tree.getOffset(child)));
  } else {
    manager_->AddLink(text, from, to, type);
  }
  OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo != nullptr && !isExternal && !inPage_ && source != sheet_) memo->linkedFromBelow = true;
}

// Whether what a text of the page says is known only once the server has run the page's code.
bool SiteCSSUtil::IsHidden(const std::string& text) const {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  return memo != nullptr && memo->page.holdsServerCode() && HoldsServerCode(text);
}

// A reference of the page is placed in the page's text, one of a sheet in the sheet's file.
int SiteCSSUtil::OffsetInFile(int offset) const {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  return inPage_ && memo != nullptr ? memo->page.OffsetInFile(offset) : offset;
}

int SiteCSSUtil::AddUrl(const std::string& url) {
  const int known = urlTable_->Find(url);
  return known >= 0 ? known : manager_->AddUrl(url);
}

// AddFile() for a file that many pages may refer to: once an operation is enough.
int SiteCSSUtil::AddTarget(const std::string& path, const std::string& siteRoot) {
  OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo == nullptr) return AddFile(path, siteRoot);
  if (const std::int32_t* const known = memo->styleTargets.Find(path)) return *known;
  const int number = AddFile(path, siteRoot);
  if (number >= 0) memo->styleTargets.Put(path, number);
  return number;
}

// The classic rules take a known file as its record has it, and give up one that could not be
// added in full. The web rules look again at one that was missing, as they do for every other
// link, and at its spelling.
int SiteCSSUtil::AddFile(const std::string& path, const std::string& siteRoot) {
  const int known = pathTable_->Find(path);
  if (!IsWeb()) return known >= 0 ? known : manager_->AddPath(path, siteRoot, 0);
  if (known >= 0) {
    manager_->CheckPath(path, siteRoot);
  } else {
    manager_->AddPath(path, siteRoot, 1);
  }
  return known >= 0 ? known : pathTable_->Find(path);
}

bool SiteCSSUtil::HasStyleLinks(int pathNumber) const {
  std::vector<int> links;
  linkTable_->Query(UrlID(kKindPath, pathNumber), kAnyUrlID, links);
  for (const int number : links) {
    SiteLinkRec link;
    if (linkTable_->Get(number, link) < 0) continue;
    if ((static_cast<std::uint32_t>(link.type) & kStyleTypes) != 0) return true;
  }
  return false;
}

std::unordered_set<std::int32_t>& SiteCSSUtil::Registered() {
  OperationMemo* const memo = manager_->GetOperationMemo();
  return memo != nullptr ? memo->registeredSheets : registered_;
}

}  // namespace zvrsit
