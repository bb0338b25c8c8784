#include "registration/site_css_util.h"

#include <iterator>
#include <unordered_set>
#include <vector>

#include "css/css_control.h"
#include "dom/document.h"
#include "links/link_type.h"
#include "links/served_files.h"
#include "manager_base/kept_places.h"
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
  constexpr std::uint32_t kTypes[] = {LT_CSS_OTHER, LT_CSS_LINK, LT_CSS_IMPORT, LT_CSS_IMAGE};
  static_assert(CCSSControl::Type_Other == 0 && CCSSControl::Type_Link == 1 &&
                CCSSControl::Type_Import == 2 && CCSSControl::Type_Image == 3);
  const bool isKnown = nodeType >= 0 && nodeType < static_cast<int>(std::size(kTypes));
  return isKnown ? kTypes[nodeType] : LT_CSS_OTHER;
}

SiteCSSUtil::SiteCSSUtil(SiteMgrBase* manager, const std::string& siteRoot)
    : manager_(manager),
      cssControl_(manager != nullptr ? manager->GetCssCtrl() : nullptr),
      pathTable_(manager != nullptr ? manager->GetPathDB() : nullptr),
      urlTable_(manager != nullptr ? manager->GetUrlDB() : nullptr),
      linkTable_(manager != nullptr ? manager->GetLinkDB() : nullptr),
      registrar_(manager, pathTable_, urlTable_),
      siteRoot_(siteRoot) {}

bool SiteCSSUtil::IsReady() const {
  return manager_ != nullptr && HasStores(pathTable_) && HasStores(urlTable_) &&
         HasStores(linkTable_);
}

int SiteCSSUtil::CollectPage(const std::string& path, Document* document) {
  if (!IsReady() || cssControl_ == nullptr) return -1;
  CCSSFileTree tree = cssControl_->GetFileTree(path, document);
  const std::string* const page = tree.getRoot();
  if (RegisterPage(page, tree, document) < 0) return -1;
  RegisterSheets(tree, tree.getFirstChild(page));
  RegisterSheets(tree, tree.getNextSibling(page));
  return 0;
}

// Registers what the page itself refers to, and keeps the places of what is not there.
int SiteCSSUtil::RegisterPage(const std::string* page, CCSSFileTree& tree,
                              const Document* document) {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  places_ = memo != nullptr && document != nullptr ? memo->places : nullptr;
  if (places_ != nullptr) places_->BeginPage();
  inPage_ = true;
  const int result = RegisterTreeNode(page, tree, siteRoot_);
  inPage_ = false;
  if (places_ != nullptr) {
    places_->EndPage(UrlID(kKindPath, pathTable_->Find(*page)), document->text());
  }
  places_ = nullptr;
  return result;
}

int SiteCSSUtil::CollectSheet(const std::string& path) {
  if (!IsReady() || cssControl_ == nullptr) return -1;
  const int number = AddFile(path, siteRoot_);
  if (number < 0) return -1;
  if (Registered().contains(number) && HasStyleLinks(number)) return 0;
  // The sheet holds no reference; or the page refers to it by two names, and a tree reads only one
  // of them.
  Registered().erase(number);
  sheet_ = number;
  std::string charset;
  if (DependsOnCharset(path)) {
    charset = CharsetOfReferrer(number);
    if (charset.empty() && WaitsForPage(number)) return 0;
  }
  CCSSFileTree tree = cssControl_->GetFileTreeFromCSS(path, charset);
  RegisterSheets(tree, tree.getRoot());
  return 0;
}

bool SiteCSSUtil::DependsOnCharset(const std::string& path) const {
  return registrar_.rules().givesSheetsCharsetOfPage && CCSSControl::DependsOnCharset(path);
}

std::string SiteCSSUtil::CharsetOf(int sheet, const std::string& path) const {
  return DependsOnCharset(path) ? CharsetOfReferrer(sheet) : std::string();
}

std::string SiteCSSUtil::CharsetOfReferrer(int sheet) const {
  std::vector<int> sheets{sheet};
  std::unordered_set<int> known{sheet};
  for (std::size_t next = 0; next < sheets.size(); ++next) {
    std::vector<int> links;
    if (linkTable_->Query(kAnyUrlID, UrlID(kKindPath, sheets[next]), links) < 0) continue;
    for (const int number : links) {
      SiteLinkRec link;
      std::string path;
      if (linkTable_->Get(number, link) < 0 || pathTable_->Name(link.from.id, path) < 0) continue;
      // LT_LINK is what an alternate style sheet has.
      const auto type = static_cast<std::uint32_t>(link.type);
      if ((type & (LT_CSS_LINK | LT_CSS_IMPORT | LT_LINK)) == 0) continue;
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

// False when the sheet need not be read again in this operation, or has no entry in the tables.
bool SiteCSSUtil::RegisterSheet(CCSSFileTree& tree, const std::string* sheet) {
  if (registrar_.IsHidden(*sheet)) return false;
  const int number = AddFile(*sheet, siteRoot_);
  if (number < 0 || !Registered().insert(number).second) return false;
  NoteTraits(tree, sheet);
  if (HasStyleLinks(number)) {
    RegisterIfMisread(*sheet, number);
  } else if (tree.hasChildren(sheet)) {
    RegisterTreeNode(sheet, tree, siteRoot_);
  }
  return true;
}

void SiteCSSUtil::NoteTraits(CCSSFileTree& tree, const std::string* sheet) {
  const bool isUsual = ClassifyFileType(*sheet) == FT_CSS && sheet->starts_with(siteRoot_);
  if (!isUsual || IsRedirected(*sheet)) registrar_.Note(kReadsOddSheets);
  if (DependsOnCharset(*sheet) && tree.hasChildren(sheet)) registrar_.Note(kSharesEncodings);
}

// Whether links to it lead elsewhere.
bool SiteCSSUtil::IsRedirected(const std::string& sheet) const {
  const OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo == nullptr || memo->served == nullptr || !memo->served->redirects()) return false;
  std::string answer = sheet;
  return memo->served->Serve({}, answer, ServedFiles::From::kSheet) == TargetKind::kExternal ||
         answer != sheet;
}

// A sheet that was saved before anything referred to it was read in the code page.
void SiteCSSUtil::RegisterIfMisread(const std::string& path, int sheet) {
  if (!DependsOnCharset(path)) return;
  CCSSFileTree tree = cssControl_->GetFileTreeFromCSS(path, CharsetOfReferrer(sheet));
  std::set<std::string> texts;
  for (const std::string* child = tree.getFirstChild(tree.getRoot()); child != nullptr;
       child = tree.getNextSibling(child)) {
    const std::string* const declared = tree.getDeclaredText(child);
    texts.insert(declared != nullptr ? *declared : *child);
  }
  if (texts == ListStyleTexts(sheet)) return;
  DeleteStyleLinks(sheet);
  RegisterTreeNode(tree.getRoot(), tree, siteRoot_);
}

std::set<std::string> SiteCSSUtil::ListStyleTexts(int sheet) const {
  std::set<std::string> texts;
  for (const SiteLinkRec& link : ListStyleLinks(sheet)) {
    texts.emplace(linkTable_->TextView(link.text));
  }
  return texts;
}

void SiteCSSUtil::DeleteStyleLinks(int sheet) {
  for (const SiteLinkRec& link : ListStyleLinks(sheet)) {
    for (std::int32_t i = 0; i < link.count; ++i) manager_->DelLink(link.id);
  }
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
  if (registrar_.IsHidden(text) || registrar_.IsHidden(*child)) return;
  const UrlID to = AddPlace(text, *child, tree.isExternal(child), siteRoot);
  if (to.id < 0) return;
  const bool isExternal = to.kind == kKindUrl;
  const UrlID from(kKindPath, source);
  const int type = static_cast<int>(StyleLinkType(tree.getType(child)));
  if (registrar_.rules().storesOffsets) {
    // As AddLink: a link that cannot be added is passed over.
    const int offset = OffsetInFile(tree.getOffset(child));
    const int link = linkTable_->Add(text, from, to, "", type, offset);
    if (places_ != nullptr)
      registrar_.NotePlace(*places_, link, to, static_cast<std::size_t>(tree.getOffset(child)),
                           offset);
  } else {
    manager_->AddLink(text, from, to, type);
  }
  OperationMemo* const memo = manager_->GetOperationMemo();
  if (memo != nullptr && !isExternal && !inPage_ && source != sheet_) memo->linkedFromBelow = true;
}

// Enters what `text` resolves to: the place, or what the rules of the server make of it.
UrlID SiteCSSUtil::AddPlace(std::string_view text, const std::string& place, bool isExternal,
                            const std::string& siteRoot) {
  UrlID to(kKindPath, -1);
  const OperationMemo* const memo = manager_->GetOperationMemo();
  ServedFiles* const served = memo != nullptr ? memo->served.get() : nullptr;
  std::string answer = place;
  if (!isExternal && served != nullptr && served->redirects()) {
    isExternal = served->Serve(text, answer, ServedFiles::From::kSheet) == TargetKind::kExternal;
  }
  if (isExternal) {
    registrar_.AddUrl(answer, to);
  } else {
    to.id = AddFile(answer, siteRoot);
  }
  return to;
}

// A reference of the page has its place in the page's text; a reference of a sheet, in the sheet's
// file.
int SiteCSSUtil::OffsetInFile(int offset) const {
  return inPage_ ? registrar_.OffsetInFile(offset) : offset;
}

int SiteCSSUtil::AddFile(const std::string& path, const std::string& siteRoot) {
  UrlID place;
  const Outcome outcome = registrar_.AddFile(path, siteRoot, TargetRegistrar::From::kSheet, place);
  return outcome == Outcome::kDone ? place.id : -1;
}

std::vector<SiteLinkRec> SiteCSSUtil::ListStyleLinks(int pathNumber) const {
  std::vector<int> links;
  std::vector<SiteLinkRec> styles;
  if (linkTable_->Query(UrlID(kKindPath, pathNumber), kAnyUrlID, links) < 0) return styles;
  for (const int number : links) {
    SiteLinkRec link;
    if (linkTable_->Get(number, link) < 0) continue;
    if ((static_cast<std::uint32_t>(link.type) & kStyleTypes) != 0) styles.push_back(link);
  }
  return styles;
}

bool SiteCSSUtil::HasStyleLinks(int pathNumber) const {
  return !ListStyleLinks(pathNumber).empty();
}

std::unordered_set<std::int32_t>& SiteCSSUtil::Registered() {
  OperationMemo* const memo = manager_->GetOperationMemo();
  return memo != nullptr ? memo->registeredSheets : registered_;
}

}  // namespace zvrsit
