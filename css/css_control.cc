#include "css/css_control.h"

#include <algorithm>
#include <span>
#include <utility>

#include "css/css_decode.h"
#include "css/css_reader.h"
#include "css/page_styles.h"
#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "dom/mapped_file.h"
#include "links/page_file.h"

namespace zvrsit {
namespace {

// Room is made for so many style links of a page at once.
constexpr std::size_t kUsualLinks = 8;

void EndSiblings(std::vector<CssNode>& nodes) {
  if (!nodes.empty()) nodes.back().isLast = true;
}

CssNode RootNode(const std::string& path) {
  CssNode root;
  root.assign(path);
  return root;
}

}  // namespace

CCSSControl::CCSSControl() : reader_(std::make_unique<Reader>()) {}
CCSSControl::~CCSSControl() = default;

void CCSSControl::SetObject(DOM* dom) {
  reader_->dom = dom;
}

void CCSSControl::ClearSiteOption() {
  reader_->siteFolder.clear();
  reader_->documentRoot.clear();
  SetLinkRules(LinkRules::Classic);
}

void CCSSControl::SetSiteSaveDir(const std::string& siteFolder, const std::string&,
                                 const std::string&) {
  reader_->siteFolder = siteFolder;
}

void CCSSControl::SetSiteDocumentRoot(const std::string& folder) {
  reader_->documentRoot = folder;
}

void CCSSControl::SetLinkRules(LinkRules rules) {
  reader_->resolver = ReferenceResolver(rules);
}

void CCSSControl::SetLiveUrl(const std::string& url) {
  reader_->resolver.SetLiveUrl(url, reader_->siteFolder);
}

std::string CCSSControl::CharsetOfPage(const std::string& path) {
  MappedFile file;
  CodeConv conversion;
  if (!file.open(path, 0) || !conversion.Import(file.top(), file.size(), 0)) return {};
  return conversion.charset();
}

std::string CCSSControl::CharsetOfSheet(const std::string& path) {
  MappedFile file;
  if (!file.open(path, 0)) return {};
  return std::string(DeclaredCharset({file.top(), file.size()}));
}

bool CCSSControl::DependsOnCharset(const std::string& path) {
  MappedFile file;
  return file.open(path, 0) && zvrsit::DependsOnCharset({file.top(), file.size()});
}

CCSSFileTree CCSSControl::GetFileTree(const std::string& path, Document* document) {
  auto tree = std::make_unique<CCSSFileTree::Sheets>(*reader_);
  if (!reader_->resolver.rules().givesSheetsCharsetOfPage) tree->pageCharset.emplace();
  if (document != nullptr) {
    reader_->CollectPage(path, *document, *tree);
    return CCSSFileTree(std::move(tree));
  }
  Document* const page = reader_->dom == nullptr ? nullptr : reader_->dom->createDocument("HTML");
  if (page == nullptr) return CCSSFileTree(std::move(tree));
  PageFile file;
  if (file.Read(path, reader_->resolver.rules(), *page)) reader_->CollectPage(path, *page, *tree);
  reader_->dom->deleteDocument(page);
  return CCSSFileTree(std::move(tree));
}

CCSSFileTree CCSSControl::GetFileTreeFromCSS(const std::string& path) {
  return GetFileTreeFromCSS(path, {});
}

CCSSFileTree CCSSControl::GetFileTreeFromCSS(const std::string& path, const std::string& charset) {
  auto tree = std::make_unique<CCSSFileTree::Sheets>(*reader_);
  tree->pageCharset = charset;
  tree->roots.push_back(RootNode(path));
  tree->roots.back().isSheet = true;
  EndSiblings(tree->roots);
  return CCSSFileTree(std::move(tree));
}

std::vector<CssNode> CCSSControl::Reader::ReadSheet(const CssNode& sheet,
                                                    CCSSFileTree::Sheets& tree) {
  std::vector<CssNode> references;
  MappedFile file;
  if (!file.open(sheet, 0)) return references;
  const std::string_view bytes(file.top(), file.size());
  std::string charset(DeclaredCharset(bytes));
  if (charset.empty()) charset = sheet.charset;
  if (charset.empty() && zvrsit::DependsOnCharset(bytes)) charset = tree.PageCharset();
  std::string buffer;
  const std::string_view text = DecodeSheet(bytes, charset, buffer);
  found_.clear();
  CollectCssReferences(text, CssSource::kSheet, found_);
  const bool isInFile = text.data() != buffer.data();
  for (CssReference& reference : found_) {
    reference.offset =
        isInFile ? reference.offset + static_cast<int>(text.data() - file.top()) : -1;
  }
  BeginFile(sheet);
  for (const CssReference& reference : found_) {
    AddNode(reference.text, reference.offset, NodeTypeOf(reference.kind), references);
  }
  if (resolver.rules().givesSheetsCharsetOfPage) {
    for (CssNode& node : references) node.charset = charset;
  }
  EndSiblings(references);
  return references;
}

void CCSSControl::Reader::BeginFile(const std::string& path) {
  resolver.BeginFile(documentRoot.empty() ? siteFolder : documentRoot, path);
  base_ = kPageItself;
}

void CCSSControl::Reader::UseBase(std::int32_t base) {
  if (base == base_) return;
  BeginFile(page_);
  parts_.ForEachBase(base, [this](const std::string& href) { resolver.SetBase(href); });
  base_ = base;
}

void CCSSControl::Reader::CollectPage(const std::string& path, const Document& document,
                                      CCSSFileTree::Sheets& tree) {
  tree.roots.push_back(RootNode(path));
  page_ = path;
  BeginFile(path);
  parts_.Read(document, resolver.rules());
  for (const PagePart& part : parts_.parts()) CollectPart(part, tree);
  parts_.Clear();
  EndSiblings(tree.ofThePage);
  EndSiblings(tree.roots);
}

void CCSSControl::Reader::CollectPart(const PagePart& part, CCSSFileTree::Sheets& tree) {
  AddLinks(part, tree);
  const auto find = [&](const StyleText& style) { FindInStyle(*part.document, style); };
  found_.clear();
  VisitStyles(*part.document, resolver.rules(), find);
  AddPageReferences(part, true, tree.ofThePage);
  if (!resolver.rules().readsSvgProperties) return;
  found_.clear();
  VisitSvgProperties(*part.document, find);
  AddPageReferences(part, false, tree.ofThePage);
}

void CCSSControl::Reader::AddLinks(const PagePart& part, CCSSFileTree::Sheets& tree) {
  const std::span<const std::uint32_t> links = part.document->elementsOf(Tag::kLink);
  tree.ofThePage.reserve(std::min(links.size(), kUsualLinks));
  for (const std::uint32_t index : links) {
    const Element element = part.document->element(index);
    const SheetLink link = SheetLinkOf(element, resolver.rules());
    if (link == SheetLink::kNone) continue;
    const bool isStyleLink = link == SheetLink::kStyleLink;
    std::vector<CssNode>& nodes = isStyleLink ? tree.ofThePage : tree.roots;
    const Attribute href = element.attributes().find(Attr::kHref);
    const auto offset = static_cast<int>(part.OffsetInPage(href.valueOffset()));
    UseBase(part.BaseAt(href.valueOffset()));
    href_.clear();
    href.appendValue(href_);
    const bool isAdded = AddNode(href_, offset, Type_Link, nodes);
    if (!isStyleLink && isAdded && !nodes.back().isSheet) nodes.pop_back();
  }
}

// Offsets in a decoded text would be wrong. So then all its references have the place of the whole
// text.
void CCSSControl::Reader::FindInStyle(const Document& document, const StyleText& style) {
  const auto start = static_cast<std::int32_t>(style.raw.data() - document.text().data());
  const size_t first = found_.size();
  const std::string decoded = style.isPlain ? std::string() : style.Decoded();
  style.CollectReferences(style.isPlain ? style.raw : decoded, found_);
  for (size_t i = first; i < found_.size(); ++i) {
    found_[i].offset = style.isPlain ? start + found_[i].offset : start;
  }
}

void CCSSControl::Reader::AddPageReferences(const PagePart& part, bool atOnce,
                                            std::vector<CssNode>& nodes) {
  for (const CssReference& reference : found_) {
    const auto place = static_cast<std::uint32_t>(reference.offset);
    UseBase(atOnce ? part.BaseAt(place) : part.base);
    const auto offset = static_cast<int>(part.OffsetInPage(place));
    AddNode(reference.text, offset, NodeTypeOf(reference.kind), nodes);
  }
}

// False when the reference names nothing that could be recorded.
bool CCSSControl::Reader::AddNode(std::string_view declared, int offset, int type,
                                  std::vector<CssNode>& nodes) {
  if (declared.empty()) return false;
  CssNode& node = nodes.emplace_back();
  const TargetKind kind = resolver.Resolve(declared, node);
  if (node.empty() || kind == TargetKind::kNone || kind == TargetKind::kUnresolvable) {
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

bool CCSSControl::Reader::IsReadable(const std::string& path) const {
  return resolver.rules().readsSheetsOutside || path.starts_with(siteFolder);
}

}  // namespace zvrsit
