#include "repair/file_references.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "css/css_tokenizer.h"
#include "dom/byte_search.h"
#include "dom/html_text.h"
#include "links/html_values.h"
#include "links/json_strings.h"
#include "links/link_type.h"
#include "links/page_file.h"
#include "links/redirect_rules.h"
#include "links/site_data.h"
#include "links/url_text.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

bool IsJsonType(std::uint32_t type) {
  return type == LT_LINKED_DATA || type == LT_IMPORT_MAP || type == LT_SPECULATION ||
         type == LT_MANIFEST;
}

// The length of what stands for one character at the front of a JSON string.
std::size_t JsonUnit(std::string_view rest) {
  if (rest.front() != '\\') return 1;
  if (rest.size() < 2 || rest[1] != 'u') return std::min<std::size_t>(2, rest.size());
  const bool isPair = rest.size() >= 12 && (rest[2] == 'd' || rest[2] == 'D') &&
                      std::string_view("89abAB").find(rest[3]) != std::string_view::npos &&
                      rest[6] == '\\' && rest[7] == 'u';
  return std::min<std::size_t>(isPair ? 12 : 6, rest.size());
}

// A JSON string, to its closing quote.
std::string_view JsonStringAt(std::string_view text, std::size_t begin) {
  std::size_t end = begin;
  while (end < text.size() && text[end] != '"') end += JsonUnit(text.substr(end));
  return text.substr(begin, end - begin);
}

void AppendJson(SourceText& source, std::string_view raw, std::size_t begin) {
  for (std::size_t at = 0; at < raw.size();) {
    const std::size_t length = JsonUnit(raw.substr(at));
    std::string meaning(raw.substr(at, length));
    if (raw[at] == '\\') {
      const std::string whole = "\"" + meaning + "\"";
      meaning.clear();
      static_cast<void>(ReadJsonStrings(
          whole, [&](std::string_view, const std::string& text, std::size_t) { meaning = text; }));
    }
    source.Append(meaning, begin + at, length);
    at += length;
  }
}

void AppendCss(SourceText& source, std::string_view raw, std::size_t begin) {
  for (std::size_t at = 0; at < raw.size();) {
    std::string meaning;
    const std::size_t end = AppendCssCharacter(meaning, raw, at);
    source.Append(meaning, begin + at, end - at);
    at = end;
  }
}

// `raw` is an attribute's value, or for a kind a text of that kind.
void AppendHtml(SourceText& source, std::string_view raw, std::size_t begin,
                const TextKind* kind = nullptr) {
  for (std::size_t at = 0; at < raw.size();) {
    std::string meaning;
    const std::string_view rest = raw.substr(at);
    const std::size_t length = kind == nullptr ? AppendFirstOfAttribute(meaning, rest)
                                               : AppendFirstOfText(meaning, rest, *kind);
    source.Append(meaning, begin + at, length);
    at += length;
  }
}

}  // namespace

// A document: the page, or one in the SRCDOC of an IFRAME.
struct FileReferences::Part {
  struct Placed {
    std::uint32_t offset;  // of its value
    Element element;
    Attribute attribute;
  };

  const Document* document = nullptr;
  SourceText* source = nullptr;
  bool isInner = false;
  std::uint32_t place = 0;  // of an inner one: where findings have its references
  std::int32_t baseBefore = kPageItself;
  std::int32_t base = kPageItself;
  std::uint32_t baseOffset = 0;
  std::vector<Placed> attributes;
  std::unordered_map<std::uint32_t, SourceText*> values;  // by their offsets
  std::uint32_t list = 0xFFFFFFFF;                        // the offset of the list added last
  std::unique_ptr<Document> owned;
  std::string text;  // of an inner one, with its padding

  std::int32_t BaseAt(std::uint32_t offset) const {
    return offset < baseOffset ? baseBefore : base;
  }
  std::uint32_t PlaceOf(std::uint32_t offset) const { return isInner ? place : offset; }

  void ListAttributes() {
    for (std::uint32_t index = 0; index < document->elementCount(); ++index) {
      const Element element = document->element(index);
      const AttributeList all = element.attributes();
      for (std::size_t i = 0; i < all.size(); ++i) {
        attributes.push_back({all.item(i).valueOffset(), element, all.item(i)});
      }
    }
    std::ranges::stable_sort(attributes, {}, &Placed::offset);
  }

  // The attribute in whose value this place lies; null for none.
  const Placed* Find(std::uint32_t offset) const {
    auto next = std::ranges::upper_bound(attributes, offset, {}, &Placed::offset);
    while (next != attributes.begin()) {
      --next;
      if (next->offset + next->attribute.rawValue().size() >= offset) return &*next;
      if (next->offset < offset) break;
    }
    return nullptr;
  }
};

FileReferences::FileReferences(const std::string& path, std::string_view text, bool isSheet,
                               LinkRules rules)
    : path_(path), text_(text), linkRules_(rules), rules_(FlagsOf(rules)) {
  sources_.emplace_back(text);
  if (isSheet) ReadSheet();
  if (isSheet && !rules_.readsSheetsAsPages) return;
  if (rules_.readsSiteData) syntax_ = PageSyntaxOf(path);
  holdsServerCode_ = ReadPageText(path, text, rules_, document_, DocumentScope::kWhole);
  Part& page = parts_.emplace_back();
  page.document = &document_;
  page.source = &sources_.front();
  // A sheet that is read as a page has no style of its own.
  ReadPart(page, isSheet ? kDeepestPart + 1 : 0);
}

FileReferences::~FileReferences() = default;

std::vector<SourceEdit> FileReferences::TakeEdits() {
  for (auto source = sources_.rbegin(); source != sources_.rend(); ++source) source->HandOn();
  std::vector<SourceEdit> edits = std::move(sources_.front().edits());
  sources_.front().edits().clear();
  std::ranges::stable_sort(edits, {}, &SourceEdit::begin);
  return edits;
}

SourceText& FileReferences::NewSource(SourceText& outer, std::size_t begin, std::string_view raw,
                                      Writing writing, char quote) {
  return sources_.emplace_back(outer, begin, raw, writing, quote);
}

SourceText& FileReferences::SourceOf(const Attribute& attribute) {
  return SourceIn(parts_.front(), attribute);
}

SourceText& FileReferences::SourceIn(Part& part, const Attribute& attribute) {
  SourceText*& known = part.values[attribute.valueOffset()];
  if (known != nullptr) return *known;
  const std::size_t begin = attribute.valueOffset();
  const std::string_view raw = part.source->text().substr(begin, attribute.rawValue().size());
  const char before = begin > 0 ? part.source->text()[begin - 1] : '\0';
  const char quote = before == '"' || before == '\'' ? before : '\0';
  known = &NewSource(*part.source, begin, raw, Writing::kAttribute, quote);
  AppendHtml(*known, attribute.rawValue(), begin);
  return *known;
}

void FileReferences::ReadPart(Part& part, int depth) {
  part.ListAttributes();
  const bool isPage = !IsSiteData(syntax_);
  if (isPage && rules_.readsInnerDocuments) ReadBase(part);
  ReadRows(part);
  if (!isPage || depth > kDeepestPart) return;
  ReadStyles(part);
  if (rules_.readsInnerDocuments && depth < kDeepestPart) ReadInnerParts(part, depth);
}

// The first BASE with an HREF, if that is not empty.
void FileReferences::ReadBase(Part& part) {
  for (const std::uint32_t index : part.document->elementsOf(Tag::kBase)) {
    const Element element = part.document->element(index);
    const Attribute href = element.attributes().find(Attr::kHref);
    if (!href || element.inShadow()) continue;
    const std::string value = href.value();
    if (value.empty()) return;
    FoundReference base;
    base.target = value;
    base.source = &SourceIn(part, href);
    base.place = part.PlaceOf(href.valueOffset());
    base.base = part.baseBefore;
    part.base = static_cast<std::int32_t>(bases_.size());
    part.baseOffset = element.offset();
    bases_.push_back(std::move(base));
    return;
  }
}

void FileReferences::ReadRows(Part& part) {
  PageRows rows;
  if (part.isInner) {
    ExtractPage(*part.document, linkRules_, rows);
  } else {
    ExtractFile(path_, *part.document, linkRules_, rows);
    for (const MetaRow& meta : rows.metas) {
      if (meta.key == MetaKey::kRefresh) ReadRefresh(part, meta);
    }
  }
  for (const LinkRow& row : rows.links) ReadRow(part, row);
  if (syntax_ == PageSyntax::kRedirects) ReadPatterns(part);
}

// The targets of rules with placeholders: their folders stand for all that such a rule leads to.
void FileReferences::ReadPatterns(Part& part) {
  for (const RedirectRule& rule : ReadRedirectRules(part.source->text())) {
    const std::size_t first = rule.to.find_first_of("*:", SchemeOf(rule.to).size() + 1);
    const std::size_t slash = rule.to.substr(0, first).rfind('/');
    if (!rule.hasPlaceholders() || slash == std::string_view::npos || slash == 0) continue;
    LinkRow row;
    row.type = LT_REDIRECT;
    row.offset = static_cast<std::uint32_t>(rule.toOffset);
    row.target = rule.to.substr(0, slash + 1);
    row.isPrefix = true;
    AddText(part, row);
  }
}

void FileReferences::ReadRow(Part& part, const LinkRow& row) {
  const Part::Placed* const placed = part.Find(row.offset);
  const Attr attr = placed != nullptr ? placed->attribute.attr() : Attr::kOther;
  // What stands in documents within is read with them; of their METAs nothing is.
  if (attr == Attr::kSrcdoc || (part.isInner && row.type == LT_META_URL)) return;
  if (IsJsonType(row.type)) {
    AddJson(part, row);
  } else if (placed == nullptr) {
    AddText(part, row);
  } else if (attr == Attr::kSrcset || attr == Attr::kImagesrcset || attr == Attr::kPing) {
    if (part.list != placed->offset) AddList(part, row, placed->attribute);
    part.list = placed->offset;
  } else if (row.type == LT_APPLET) {
    AddApplet(part, row, placed->attribute);
  } else {
    AddPlain(part, row, placed->attribute);
  }
}

FoundReference& FileReferences::Add(Part& part, const LinkRow& row, SourceText& source) {
  FoundReference found;
  found.type = row.type;
  found.target = row.target;
  found.source = &source;
  found.place = part.PlaceOf(row.offset);
  found.base = row.base == kPageItself ? part.baseBefore : part.base;
  found.isPrefix = row.isPrefix;
  found.isDrawn = row.type == LT_SVG;
  return references_.emplace_back(std::move(found));
}

void FileReferences::AddPlain(Part& part, const LinkRow& row, const Attribute& attribute) {
  Add(part, row, SourceIn(part, attribute));
}

// All candidates of a SRCSET, or all words of a PING. `row` is that of the first.
void FileReferences::AddList(Part& part, const LinkRow& row, const Attribute& attribute) {
  SourceText& source = SourceIn(part, attribute);
  std::vector<std::string_view> targets;
  if (attribute.attr() == Attr::kPing) {
    AppendWords(source.text(), targets);
  } else {
    AppendImageCandidates(source.text(), targets);
  }
  const bool isRaw = !NeedsDecoding(attribute.rawValue());
  for (const std::string_view target : targets) {
    LinkRow one = row;
    const auto begin = static_cast<std::size_t>(target.data() - source.text().data());
    one.target = target;
    one.offset = attribute.valueOffset() + static_cast<std::uint32_t>(isRaw ? begin : 0);
    FoundReference& found = Add(part, one, source);
    found.begin = begin;
    found.surroundings = Surroundings::kList;
  }
}

// With a CODEBASE this is what changes, and the file's name behind it stays.
void FileReferences::AddApplet(Part& part, const LinkRow& row, const Attribute& attribute) {
  const Part::Placed* const placed = part.Find(row.offset);
  const Attribute codeBase = placed->element.attributes().find(Attr::kCodebase);
  const std::string folder = codeBase ? codeBase.value() : std::string();
  if (!codeBase || (folder.empty() && !rules_.joinsEmptyCodeBase)) {
    return AddPlain(part, row, attribute);
  }
  if (!row.target.starts_with(folder)) return;
  FoundReference& found = Add(part, row, SourceIn(part, codeBase));
  found.tail = row.target.substr(folder.size());
}

void FileReferences::ReadRefresh(Part& part, const MetaRow& meta) {
  const Part::Placed* const placed = part.Find(meta.offset);
  if (placed == nullptr) return;
  SourceText& source = SourceIn(part, placed->attribute);
  // The classic rules take all of it for a target; what a browser follows is meant.
  std::string_view target = RefreshTarget(source.text());
  if (target.empty() && rules_.parsesRefresh) return;
  if (target.empty()) target = source.text();
  LinkRow row;
  row.type = LT_META_REFRESH;
  row.offset = meta.offset;
  row.target = target;
  row.base = meta.base;
  FoundReference& found = Add(part, row, source);
  found.begin = static_cast<std::size_t>(target.data() - source.text().data());
  found.surroundings = Surroundings::kRefresh;
}

void FileReferences::AddJson(Part& part, const LinkRow& row) {
  const std::string_view raw = JsonStringAt(part.source->text(), row.offset);
  SourceText& source = NewSource(*part.source, row.offset, raw, Writing::kJson);
  AppendJson(source, raw, row.offset);
  Add(part, row, source).surroundings = Surroundings::kJson;
}

// An address in a sitemap, in robots.txt or in `_redirects`.
void FileReferences::AddText(Part& part, const LinkRow& row) {
  const std::string_view text = part.source->text();
  const std::size_t begin = row.offset;
  if (row.type == LT_REDIRECT || syntax_ == PageSyntax::kRobots) {
    FoundReference& found = Add(part, row, *part.source);
    found.begin = begin;
    const bool isRule = row.type == LT_REDIRECT;
    found.surroundings = isRule ? Surroundings::kRedirect : Surroundings::kLine;
    return;
  }
  constexpr std::string_view kCdata = "<![CDATA[";
  const std::size_t last = text.substr(0, begin).find_last_not_of(" \t\r\n\f");
  const bool isCdata = last != std::string_view::npos && text.substr(0, last + 1).ends_with(kCdata);
  const std::size_t end = std::min(text.find(isCdata ? "]]>" : "<", begin), text.size());
  const std::string_view raw = Trimmed(text.substr(begin, end - begin));
  const TextKind kind = isCdata ? TextKind::kCdata : TextKind::kData;
  SourceText& source =
      NewSource(*part.source, begin, raw, isCdata ? Writing::kAsIs : Writing::kMarkup);
  AppendHtml(source, raw, begin, &kind);
  Add(part, row, source);
}

void FileReferences::ReadStyles(Part& part) {
  for (const std::uint32_t index : part.document->elementsOf(Tag::kLink)) {
    const Element element = part.document->element(index);
    if (SheetLinkOf(element, rules_) != SheetLink::kStyleLink) continue;
    const Attribute href = element.attributes().find(Attr::kHref);
    FoundReference& found = references_.emplace_back();
    found.type = LT_CSS_LINK;
    found.source = &SourceIn(part, href);
    found.target = found.source->text();
    found.place = part.PlaceOf(href.valueOffset());
    found.base = part.BaseAt(href.valueOffset());
    found.isOfSheet = true;
  }
  VisitStyles(*part.document, rules_,
              [&](const StyleText& style) { ReadStyle(part, style, true); });
  if (!rules_.readsSvgProperties) return;
  VisitSvgProperties(*part.document,
                     [&](const StyleText& style) { ReadStyle(part, style, false); });
}

void FileReferences::ReadStyle(Part& part, const StyleText& style, bool atOnce) {
  std::vector<CssReference> found;
  const std::string decoded = style.Decoded();
  style.CollectReferences(decoded, found);
  if (found.empty()) return;
  SourceText& source = StyleSource(part, style);
  const auto start = static_cast<std::uint32_t>(style.raw.data() - part.document->text().data());
  for (const CssReference& css : found) {
    const std::uint32_t offset = start + static_cast<std::uint32_t>(style.isPlain ? css.offset : 0);
    AddCss(css, source, part.PlaceOf(offset), atOnce ? part.BaseAt(offset) : part.base);
  }
}

SourceText& FileReferences::StyleSource(Part& part, const StyleText& style) {
  if (style.attribute) return SourceIn(part, style.attribute);
  const char* const top = part.document->text().data();
  const auto start = static_cast<std::size_t>(style.raw.data() - top);
  const bool isMarkup = !style.parts.empty() && style.parts.front().kind() != TextKind::kCdata;
  SourceText& source =
      NewSource(*part.source, start, style.raw, isMarkup ? Writing::kMarkup : Writing::kAsIs);
  if (style.isPlain) {
    source.AppendRaw();
  } else {
    for (const Text& text : style.parts) {
      const TextKind kind = text.kind();
      const std::string_view raw = text.rawData();
      AppendHtml(source, raw, static_cast<std::size_t>(raw.data() - top), &kind);
    }
  }
  return source;
}

void FileReferences::AddCss(const CssReference& css, SourceText& style, std::uint32_t place,
                            std::int32_t base) {
  const auto begin = static_cast<std::size_t>(css.valueOffset);
  const std::string_view raw =
      style.text().substr(begin, static_cast<std::size_t>(css.valueLength));
  const char first = style.text()[static_cast<std::size_t>(css.offset)];
  const bool isString = first == '"' || first == '\'';
  SourceText& source =
      NewSource(style, begin, raw, isString ? Writing::kCssString : Writing::kCssUrl, first);
  AppendCss(source, raw, begin);
  FoundReference& found = references_.emplace_back();
  constexpr std::uint32_t kTypes[] = {LT_CSS_IMPORT, LT_CSS_IMAGE, LT_CSS_OTHER};
  found.type = kTypes[static_cast<std::size_t>(css.kind)];
  found.target = css.text;
  found.source = &source;
  found.place = place;
  found.base = base;
  found.isOfSheet = true;
}

void FileReferences::ReadSheet() {
  std::vector<CssReference> found;
  CollectCssReferences(text_, CssSource::kSheet, found);
  for (const CssReference& css : found) {
    AddCss(css, sources_.front(), static_cast<std::uint32_t>(css.offset), kPageItself);
  }
}

void FileReferences::ReadInnerParts(Part& outer, int depth) {
  for (const std::uint32_t index : outer.document->elementsOf(Tag::kIframe)) {
    const Element element = outer.document->element(index);
    const Attribute srcdoc = element.attributes().find(Attr::kSrcdoc);
    if (!srcdoc) continue;
    Part& inner = parts_.emplace_back();
    inner.source = &SourceIn(outer, srcdoc);
    inner.isInner = true;
    inner.place = outer.PlaceOf(srcdoc.valueOffset());
    inner.baseBefore = inner.base = outer.BaseAt(element.offset());
    inner.text = inner.source->text();
    const auto length = static_cast<int>(inner.text.size());
    inner.text.append(kTextPadding, '\0');
    inner.owned = std::make_unique<Document>();
    inner.owned->createNodesInPlace(inner.text.data(), length, outer.document->decodes());
    inner.document = inner.owned.get();
    ReadPart(inner, depth + 1);
  }
}

}  // namespace zvrsit
