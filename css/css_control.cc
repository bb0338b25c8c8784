#include "css/css_control.h"

#include <algorithm>
#include <span>
#include <utility>

#include "css/css_decode.h"
#include "css/css_node.h"
#include "css/css_references.h"
#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "dom/mapped_file.h"
#include "links/ascii.h"
#include "links/extractor.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr std::string_view kWhitespace = " \t\n\f\r";

int TypeOf(CssReferenceKind kind) {
  switch (kind) {
    case CssReferenceKind::kImport:
      return CCSSControl::Type_Import;
    case CssReferenceKind::kImage:
      return CCSSControl::Type_Image;
    case CssReferenceKind::kOther:
      break;
  }
  return CCSSControl::Type_Other;
}

// Style links of a page that room is made for at once.
constexpr std::size_t kUsualLinks = 8;

constexpr std::string_view kStylesheet = "stylesheet";

// Whether one of the words of a REL is STYLESHEET.
bool HoldsStylesheet(std::string_view rel) {
  for (size_t at = 0;;) {
    at = rel.find_first_not_of(kWhitespace, at);
    if (at == std::string_view::npos) return false;
    const size_t end = std::min(rel.find_first_of(kWhitespace, at), rel.size());
    if (EqualsLower(rel.substr(at, end - at), kStylesheet)) return true;
    at = end;
  }
}

// A STYLE element of another TYPE holds something that is no style sheet.
bool IsCss(const Element& style) {
  const Attribute type = style.attributes().find(Attr::kType);
  if (!type) return true;
  std::string value = type.value();
  ToUpperMB(value);
  return value.empty() || value == "TEXT/CSS";
}

bool HoldsCharacterReference(std::string_view html) {
  return html.find('&') != std::string_view::npos;
}

void EndSiblings(std::vector<CssNode>& nodes) {
  if (!nodes.empty()) nodes.back().isLast = true;
}

CssNode RootNode(const std::string& path) {
  CssNode root;
  root.assign(path);
  return root;
}

}  // namespace

CCSSControl::CCSSControl() = default;
CCSSControl::~CCSSControl() = default;

void CCSSControl::SetObject(DOM* dom) {
  dom_ = dom;
}

void CCSSControl::ClearSiteOption() {
  siteFolder_.clear();
  slot7_.clear();
  slot3_.clear();
  documentRoot_.clear();
  SetLinkRules(LinkRules::Classic);
}

void CCSSControl::SetSiteSaveDir(const std::string& siteFolder, const std::string& slot7,
                                 const std::string& slot3) {
  siteFolder_ = siteFolder;
  slot7_ = slot7;
  slot3_ = slot3;
}

void CCSSControl::SetSiteDocumentRoot(const std::string& folder) {
  documentRoot_ = folder;
}

void CCSSControl::SetLinkRules(LinkRules rules) {
  resolver_ = ReferenceResolver(rules);
}

void CCSSControl::SetLiveUrl(const std::string& url) {
  resolver_.SetLiveUrl(url, siteFolder_);
}

CCSSFileTree CCSSControl::GetFileTree(const std::string& path, Document* document) {
  CCSSFileTree tree(*this);
  if (document != nullptr) {
    CollectPage(path, *document, tree);
    return tree;
  }
  Document* const page = dom_ == nullptr ? nullptr : dom_->createDocument("HTML");
  if (page == nullptr) return tree;
  MappedFile file;
  CodeConv conversion;
  if (file.open(path, 0) && conversion.Import(file.top(), file.size(), 0)) {
    const int length = static_cast<int>(conversion.length());
    if (page->createNodesInPlace(conversion.text(), length, true, DocumentScope::kReferences) ==
        0) {
      CollectPage(path, *page, tree);
    }
  }
  dom_->deleteDocument(page);
  return tree;
}

CCSSFileTree CCSSControl::GetFileTreeFromCSS(const std::string& path) {
  CCSSFileTree tree(*this);
  tree.roots_.push_back(RootNode(path));
  tree.roots_.back().isSheet = true;
  EndSiblings(tree.roots_);
  return tree;
}

std::vector<CssNode> CCSSControl::ReadSheet(const std::string& path) {
  std::vector<CssNode> references;
  MappedFile file;
  if (!file.open(path, 0)) return references;
  std::string buffer;
  const std::string_view text = DecodeSheet({file.top(), file.size()}, buffer);
  found_.clear();
  CollectCssReferences(text, CssSource::kSheet, found_);
  const bool isInFile = text.data() != buffer.data();
  for (CssReference& reference : found_) {
    reference.offset =
        isInFile ? reference.offset + static_cast<int>(text.data() - file.top()) : -1;
  }
  BeginFile(path);
  AddReferences(references);
  EndSiblings(references);
  return references;
}

void CCSSControl::BeginFile(const std::string& path) {
  resolver_.BeginFile(documentRoot_.empty() ? siteFolder_ : documentRoot_, path);
}

void CCSSControl::CollectPage(const std::string& path, const Document& document,
                              CCSSFileTree& tree) {
  tree.roots_.push_back(RootNode(path));
  BeginFile(path);
  if (resolver_.rules() == LinkRules::Web) {
    const std::string base = FirstBaseHref(document);
    if (!base.empty()) resolver_.SetBase(base);
  }
  AddLinks(document, tree);
  found_.clear();
  FindInStyles(document);
  FindInStyleAttributes(document);
  AddReferences(tree.ofThePage_);
  EndSiblings(tree.ofThePage_);
  EndSiblings(tree.roots_);
}

// A REL that is exactly STYLESHEET makes a style link. With other words beside it the LINK is an
// ordinary link of the page, but the sheet is read all the same.
void CCSSControl::AddLinks(const Document& document, CCSSFileTree& tree) {
  const std::span<const std::uint32_t> links = document.elementsOf(Tag::kLink);
  tree.ofThePage_.reserve(std::min(links.size(), kUsualLinks));
  for (const std::uint32_t index : links) {
    const AttributeList attributes = document.element(index).attributes();
    const Attribute rel = attributes.find(Attr::kRel);
    const Attribute href = attributes.find(Attr::kHref);
    if (!rel || !href) continue;
    rel_.clear();
    rel.appendValue(rel_);
    const bool isStyleLink = EqualsLower(rel_, kStylesheet);
    if (!isStyleLink && !HoldsStylesheet(rel_)) continue;
    std::vector<CssNode>& nodes = isStyleLink ? tree.ofThePage_ : tree.roots_;
    const int offset = static_cast<int>(href.valueOffset());
    href_.clear();
    href.appendValue(href_);
    const bool isAdded = AddNode(href_, offset, Type_Link, nodes);
    if (!isStyleLink && isAdded && !nodes.back().isSheet) nodes.pop_back();
  }
}

void CCSSControl::FindInStyles(const Document& document) {
  for (const Tag tag : {Tag::kStyle, Tag::kSvgStyle}) {
    for (const std::uint32_t index : document.elementsOf(tag)) {
      const Element style = document.element(index);
      const Text text = style.firstChild().asText();
      if (!text || !IsCss(style)) continue;
      const bool isDecoded = tag == Tag::kStyle || !HoldsCharacterReference(text.rawData());
      const std::string decoded = isDecoded ? std::string() : text.data(true);
      FindInPage(document, text.rawData(), isDecoded ? text.rawData() : decoded, CssSource::kSheet);
    }
  }
}

void CCSSControl::FindInStyleAttributes(const Document& document) {
  for (const ElementAttribute& style : document.attributesNamed(Attr::kStyle)) {
    const std::string_view raw = style.attribute.rawValue();
    const bool isDecoded = !HoldsCharacterReference(raw);
    if (isDecoded && raw.find('(') == std::string_view::npos) continue;  // holds no address
    const std::string decoded = isDecoded ? std::string() : style.attribute.value();
    FindInPage(document, raw, isDecoded ? raw : decoded, CssSource::kDeclarations);
  }
}

// `raw` is a part of the document's text, and `decoded` what it stands for, or the same. Offsets
// in decoded text would be off, so there the whole part is where its references stand.
void CCSSControl::FindInPage(const Document& document, std::string_view raw,
                             std::string_view decoded, CssSource source) {
  const auto start = static_cast<std::int32_t>(raw.data() - document.text().data());
  const bool isExact = decoded.data() == raw.data();
  const size_t first = found_.size();
  CollectCssReferences(decoded, source, found_);
  for (size_t i = first; i < found_.size(); ++i) {
    found_[i].offset = isExact ? start + found_[i].offset : start;
  }
}

void CCSSControl::AddReferences(std::vector<CssNode>& nodes) {
  for (const CssReference& reference : found_) {
    AddNode(reference.text, reference.offset, TypeOf(reference.kind), nodes);
  }
}

// False when the reference names nothing that could be recorded.
bool CCSSControl::AddNode(std::string_view declared, int offset, int type,
                          std::vector<CssNode>& nodes) {
  if (declared.empty()) return false;
  CssNode& node = nodes.emplace_back();
  const TargetKind kind = resolver_.Resolve(declared, node);
  if (node.empty() || (kind != TargetKind::kLocal && kind != TargetKind::kExternal)) {
    nodes.pop_back();
    return false;
  }
  node.declared = declared;
  node.offset = offset;
  node.type = type;
  node.isExternal = kind == TargetKind::kExternal;
  const bool namesSheet = type == Type_Link || type == Type_Import;
  node.isSheet = namesSheet && !node.isExternal && IsReadable(node);
  return true;
}

// Under the web rules only what lies in the site is read.
bool CCSSControl::IsReadable(const std::string& path) const {
  if (resolver_.rules() == LinkRules::Classic) return true;
  return path.compare(0, siteFolder_.size(), siteFolder_) == 0;
}

}  // namespace zvrsit
