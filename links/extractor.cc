#include "links/extractor.h"

#include <algorithm>
#include <cstring>
#include <span>

#include "dom/document.h"
#include "dom/html_text.h"
#include "links/html_values.h"
#include "links/json_references.h"
#include "util/ascii.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

// How the value of a reference is read.
enum class Shape : std::uint8_t {
  kPlain,
  kWithAlternative,    // with the ALT text
  kUnlessStyleSheet,   // not of a LINK whose REL is a style sheet
  kImage,              // type by USEMAP and ISMAP, with ALT, and the MAPFILE after it
  kApplet,             // ARCHIVE, else CODE, on CODEBASE
  kCandidates,         // one reference for each image candidate
  kHrefOrXlink,        // SVG: href, else xlink:href
  kUnlessOwnFragment,  // the same, but "#id" refers to a drawing of this page and is none
  kFirst,              // of the first element only, with RuleFlags::mendsTree
  kUrls,               // one reference for each word
};

enum class In : std::uint8_t { kBoth, kWeb };

// When a browser resolves the reference: at once, so that a later BASE does not count; or later, so
// that it counts.
enum class When : std::uint8_t { kAtOnce, kLater };

struct Reference {
  Tag tag;
  Attr attr;
  std::uint32_t type;
  Shape shape;
  In rules;
  When when;
};

// The references of a page in the order in which they are registered, which the record numbers
// show. A HREF comes before all of these and is not here, and neither is the META refresh. When
// each one is resolved was found out by trial in a browser, with references before a BASE.
constexpr Reference kReferences[] = {
    {Tag::kImg, Attr::kSrc, LT_IMG, Shape::kImage, In::kBoth, When::kAtOnce},
    {Tag::kLink, Attr::kHref, LT_LINK, Shape::kUnlessStyleSheet, In::kBoth, When::kLater},
    {Tag::kFrame, Attr::kSrc, LT_FRAME, Shape::kPlain, In::kBoth, When::kAtOnce},
    {Tag::kBody, Attr::kBackground, LT_BODY_BACKGROUND, Shape::kFirst, In::kBoth, When::kLater},
    {Tag::kTable, Attr::kBackground, LT_TABLE_BACKGROUND, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kTr, Attr::kBackground, LT_TR_BACKGROUND, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kTd, Attr::kBackground, LT_TD_BACKGROUND, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kTh, Attr::kBackground, LT_TH_BACKGROUND, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kInput, Attr::kSrc, LT_INPUT, Shape::kWithAlternative, In::kBoth, When::kAtOnce},
    {Tag::kArea, Attr::kHref, LT_AREA, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kScript, Attr::kSrc, LT_SCRIPT, Shape::kPlain, In::kBoth, When::kAtOnce},
    {Tag::kEmbed, Attr::kSrc, LT_EMBED, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kForm, Attr::kAction, LT_FORM, Shape::kPlain, In::kBoth, When::kLater},
    {Tag::kIframe, Attr::kSrc, LT_IFRAME, Shape::kPlain, In::kWeb, When::kAtOnce},
    {Tag::kObject, Attr::kData, LT_OBJECT, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kVideo, Attr::kSrc, LT_MEDIA, Shape::kPlain, In::kWeb, When::kAtOnce},
    {Tag::kVideo, Attr::kPoster, LT_MEDIA, Shape::kPlain, In::kWeb, When::kAtOnce},
    {Tag::kAudio, Attr::kSrc, LT_MEDIA, Shape::kPlain, In::kWeb, When::kAtOnce},
    {Tag::kSource, Attr::kSrc, LT_MEDIA, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kTrack, Attr::kSrc, LT_MEDIA, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kImg, Attr::kSrcset, LT_SRCSET, Shape::kCandidates, In::kWeb, When::kAtOnce},
    {Tag::kSource, Attr::kSrcset, LT_SRCSET, Shape::kCandidates, In::kWeb, When::kAtOnce},
    {Tag::kLink, Attr::kImagesrcset, LT_SRCSET, Shape::kCandidates, In::kWeb, When::kAtOnce},
    {Tag::kButton, Attr::kFormaction, LT_FORMACTION, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kInput, Attr::kFormaction, LT_FORMACTION, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kThead, Attr::kBackground, LT_TABLE_BACKGROUND, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kTbody, Attr::kBackground, LT_TABLE_BACKGROUND, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kTfoot, Attr::kBackground, LT_TABLE_BACKGROUND, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kA, Attr::kPing, LT_FORMACTION, Shape::kUrls, In::kWeb, When::kLater},
    {Tag::kArea, Attr::kPing, LT_FORMACTION, Shape::kUrls, In::kWeb, When::kLater},
    {Tag::kSvgA, Attr::kHref, LT_SVG, Shape::kHrefOrXlink, In::kWeb, When::kLater},
    {Tag::kUse, Attr::kHref, LT_SVG, Shape::kUnlessOwnFragment, In::kWeb, When::kAtOnce},
    {Tag::kImage, Attr::kHref, LT_SVG, Shape::kUnlessOwnFragment, In::kWeb, When::kAtOnce},
    {Tag::kFeImage, Attr::kHref, LT_SVG, Shape::kUnlessOwnFragment, In::kWeb, When::kAtOnce},
    {Tag::kSvgScript, Attr::kHref, LT_SVG, Shape::kUnlessOwnFragment, In::kWeb, When::kAtOnce},
    {Tag::kBlockquote, Attr::kCite, LT_CITE, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kQ, Attr::kCite, LT_CITE, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kDel, Attr::kCite, LT_CITE, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kIns, Attr::kCite, LT_CITE, Shape::kPlain, In::kWeb, When::kLater},
    {Tag::kApplet, Attr::kCode, LT_APPLET, Shape::kApplet, In::kBoth, When::kLater},
};

struct MetaName {
  std::string_view name;
  MetaKey key;
};

constexpr MetaName kMetaNames[] = {
    {"last_modified", MetaKey::kLastModified},
    {"expires", MetaKey::kExpires},
    {"generator", MetaKey::kGenerator},
    {"keywords", MetaKey::kKeywords},
    {"description", MetaKey::kDescription},
    {"content-type", MetaKey::kContentType},
    {"refresh", MetaKey::kRefresh},
};

// One walk over a page, filling the rows.
class Extraction {
 public:
  Extraction(LinkRules rules, PageRows& rows) : rules_(FlagsOf(rules)), rows_(rows) {}

  void Run() {
    part_ = &rows_.parts.parts().front();
    ReadTitle();
    ReadMetas();
    MakeRoom();
    ReadAnchors();
    rows_.anchorLinks = rows_.links.size();
    ReadAllReferences();
    rows_.links.insert(rows_.links.end(), metaAddresses_.begin(), metaAddresses_.end());
    for (const PagePart& part : rows_.parts.parts()) {
      if (!part.isInner) continue;
      part_ = &part;
      ReadAnchors();
      ReadAllReferences();
    }
  }

 private:
  std::span<const std::uint32_t> ElementsOf(Tag tag) const {
    return part_->document->elementsOf(tag);
  }
  Element ElementAt(std::uint32_t index) const { return part_->document->element(index); }

  // Whether the rules let an element count.
  bool Counts(const Element& element) const {
    return !(rules_.mendsTree && element.isIgnored()) &&
           (rules_.readsShadowRoots || !element.inShadow());
  }

  std::string_view ValueOf(const AttributeList& attributes, Attr attr) {
    const Attribute attribute = attributes.find(attr);
    return attribute ? rows_.Decoded(attribute) : std::string_view();
  }

  // Most references are anchors.
  void MakeRoom() {
    const std::size_t count = ElementsOf(Tag::kA).size();
    auto& links = rows_.links;
    if (count > links.capacity()) links.reserve(std::max(count, links.capacity() * 2));
  }

  void ReadTitle() {
    for (const std::uint32_t index : ElementsOf(Tag::kTitle)) {
      const Element element = ElementAt(index);
      const Text text = element.firstChild().asText();
      if (!text || element.inShadow()) continue;
      std::string_view title = text.rawData();
      if (NeedsDecoding(title)) title = rows_.Keep(text.data(true));
      if (rules_.trimsTitle) title = CollapseSpaces(title);
      if (title.empty()) continue;
      rows_.hasTitle = true;
      rows_.title = title;
      return;
    }
  }

  // As a browser shows a title: one space for each run of white space, none at the ends.
  std::string_view CollapseSpaces(std::string_view text) {
    std::string collapsed;
    bool space = false;
    for (const char c : text) {
      if (IsHtmlSpace(c)) {
        space = !collapsed.empty();
        continue;
      }
      if (space) collapsed.push_back(' ');
      space = false;
      collapsed.push_back(c);
    }
    return rows_.Keep(collapsed);
  }

  void ReadMetas() {
    for (const std::uint32_t index : ElementsOf(Tag::kMeta)) {
      const Element element = ElementAt(index);
      if (element.inShadow()) continue;
      const AttributeList attributes = element.attributes();
      const Attribute content = attributes.find(Attr::kContent);
      const Attribute equiv = attributes.find(Attr::kHttpEquiv);
      if (content && !equiv && rules_.readsSiteData) ReadMetaAddress(attributes, content);
      const Attribute named = equiv ? equiv : attributes.find(Attr::kName);
      if (content && named) ReadMeta(content, rows_.Decoded(named), static_cast<bool>(equiv));
    }
  }

  void ReadMeta(const Attribute& content, std::string_view key, bool isEquiv) {
    std::string folded(key.substr(0, 32));  // no name is longer
    ToLowerMB(folded);
    for (const MetaName& meta : kMetaNames) {
      if (folded != meta.name || key.size() != meta.name.size()) continue;
      std::string_view text = rows_.Decoded(content);
      if (meta.key == MetaKey::kRefresh && rules_.parsesRefresh) {
        text = isEquiv ? RefreshTarget(text) : std::string_view();
      }
      const std::uint32_t offset = content.valueOffset();
      if (!text.empty()) rows_.metas.push_back({meta.key, offset, text, part_->BaseAt(offset)});
    }
  }

  // PROPERTY and NAME are used for the same words.
  void ReadMetaAddress(const AttributeList& attributes, const Attribute& content) {
    const Attribute property = attributes.find(Attr::kProperty);
    const Attribute word = property ? property : attributes.find(Attr::kName);
    if (!word || !IsAddressMeta(word.rawValue())) return;
    LinkRow row;
    row.type = LT_META_URL;
    row.offset = content.valueOffset();
    row.target = rows_.Decoded(content);
    row.base = part_->base;
    if (!EqualsLower(row.target, "none")) metaAddresses_.push_back(row);
  }

  void ReadAnchors() {
    when_ = When::kLater;
    for (const std::uint32_t index : ElementsOf(Tag::kA)) {
      const Element element = ElementAt(index);
      const AttributeList attributes = element.attributes();
      const Attribute href = attributes.find(Attr::kHref);
      if (href && Counts(element)) Add(LT_ANCHOR, href.valueOffset(), rows_.Decoded(href));
      if (part_->isInner || element.inShadow()) continue;
      const std::string_view name = ValueOf(attributes, Attr::kName);
      if (!name.empty()) rows_.anchors.push_back(name);
    }
  }

  void ReadAllReferences() {
    for (const Reference& reference : kReferences) {
      if (reference.rules == In::kBoth || rules_.readsNewTags) ReadReferences(reference);
    }
    if (rules_.readsSiteData) ReadDataBlocks();
  }

  void ReadReferences(const Reference& reference) {
    when_ = reference.when;
    for (const std::uint32_t index : ElementsOf(reference.tag)) {
      const Element element = ElementAt(index);
      const AttributeList attributes = element.attributes();
      if (!Counts(element) || !IsFollowed(reference, attributes)) continue;
      const Attribute value = ReferenceOf(reference, attributes);
      if (reference.shape == Shape::kApplet) {
        ReadApplet(attributes);
      } else if (value) {
        ReadReference(reference, attributes, value);
        // A browser gives the attributes of a second BODY to the first, where that lacks them.
        if (rules_.mendsTree && reference.shape == Shape::kFirst) return;
      }
    }
  }

  // SCRIPT elements that hold JSON.
  void ReadDataBlocks() {
    for (const std::uint32_t index : ElementsOf(Tag::kScript)) {
      const Element element = ElementAt(index);
      const Attribute type = element.attributes().find(Attr::kType);
      const DataBlock* const block = type ? DataBlockOf(type.rawValue()) : nullptr;
      const Text text = block != nullptr ? element.firstChild().asText() : Text();
      if (!text || !Counts(element)) continue;
      const std::string_view json = text.rawData();
      const auto begin = static_cast<std::uint32_t>(json.data() - part_->document->text().data());
      when_ = block->kind == JsonKind::kImportMap ? When::kAtOnce : When::kLater;
      for (const JsonReference& found : ReadJsonReferences(block->kind, json)) {
        const std::uint32_t offset = begin + static_cast<std::uint32_t>(found.offset);
        Add(block->linkType, offset, rows_.Keep(found.target)).isPrefix = found.isPrefix;
      }
    }
  }

  static Attribute ReferenceOf(const Reference& reference, const AttributeList& attributes) {
    const Attribute value = attributes.find(reference.attr);
    const bool isSvg =
        reference.shape == Shape::kHrefOrXlink || reference.shape == Shape::kUnlessOwnFragment;
    return value || !isSvg ? value : attributes.find(Attr::kXlinkHref);
  }

  // Whether a browser follows the reference of this element.
  bool IsFollowed(const Reference& reference, const AttributeList& attributes) {
    switch (reference.tag) {
      case Tag::kScript:
      case Tag::kSvgScript:
        return !rules_.mindsTypes || IsScript(attributes);
      case Tag::kLink:
        return !rules_.mindsTypes || !NamesServerAlone(ValueOf(attributes, Attr::kRel));
      case Tag::kIframe:
        return !attributes.find(Attr::kSrcdoc);  // which comes before SRC
      default:
        return true;
    }
  }

  bool IsScript(const AttributeList& attributes) {
    if (const Attribute type = attributes.find(Attr::kType)) {
      const std::string_view value = rows_.Decoded(type);
      return value.empty() || IsScriptType(value);
    }
    const std::string_view language = ValueOf(attributes, Attr::kLanguage);
    return language.empty() || IsScriptType(std::string("text/").append(language));
  }

  void ReadReference(const Reference& reference, const AttributeList& attributes,
                     const Attribute& value) {
    switch (reference.shape) {
      case Shape::kCandidates:
        ReadCandidates(reference.type, value);
        return;
      case Shape::kUrls:
        ReadUrls(reference.type, value);
        return;
      case Shape::kImage:
        ReadImage(attributes, value);
        return;
      case Shape::kUnlessStyleSheet:
        if (IsStyleSheet(attributes)) return;
        break;
      case Shape::kUnlessOwnFragment:
        if (value.rawValue().substr(0, 1) == "#") return;
        break;
      default:
        break;
    }
    LinkRow& row = Add(reference.type, value.valueOffset(), rows_.Decoded(value));
    if (reference.shape == Shape::kWithAlternative) {
      row.withAlternative = true;
      row.alternative = ValueOf(attributes, Attr::kAlt);
    }
  }

  LinkRow& Add(std::uint32_t type, std::uint32_t offset, std::string_view target) {
    const std::int32_t base = when_ == When::kLater ? part_->base : part_->BaseAt(offset);
    return rows_.links.emplace_back(
        LinkRow{type, part_->OffsetInPage(offset), target, {}, false, false, false, base});
  }

  bool IsStyleSheet(const AttributeList& attributes) {
    return IsStyleSheetRel(ValueOf(attributes, Attr::kRel));
  }

  void ReadImage(const AttributeList& attributes, const Attribute& source) {
    const bool isMap = static_cast<bool>(attributes.find(Attr::kIsmap));
    const bool useMap = static_cast<bool>(attributes.find(Attr::kUsemap));
    const std::uint32_t type = useMap ? LT_IMG_USEMAP : isMap ? LT_IMG_ISMAP : LT_IMG;
    LinkRow& row = Add(type, source.valueOffset(), rows_.Decoded(source));
    row.withAlternative = true;
    row.alternative = ValueOf(attributes, Attr::kAlt);
    if (type != LT_IMG_ISMAP) return;
    if (const Attribute map = attributes.find(Attr::kMapfile)) {
      Add(LT_IMG_MAPFILE, map.valueOffset(), rows_.Decoded(map)).ofSameElement = true;
    }
  }

  void ReadCandidates(std::uint32_t type, const Attribute& value) {
    candidates_.clear();
    AppendImageCandidates(rows_.Decoded(value), candidates_);
    AddCandidates(type, value);
  }

  void ReadUrls(std::uint32_t type, const Attribute& value) {
    candidates_.clear();
    AppendWords(rows_.Decoded(value), candidates_);
    AddCandidates(type, value);
  }

  // One row for each of the candidates, which are parts of the decoded value.
  void AddCandidates(std::uint32_t type, const Attribute& value) {
    const std::string_view raw = value.rawValue();
    for (const std::string_view url : candidates_) {
      const bool isRaw = !NeedsDecoding(raw);
      const std::size_t within = isRaw ? static_cast<std::size_t>(url.data() - raw.data()) : 0;
      Add(type, value.valueOffset() + static_cast<std::uint32_t>(within), url);
    }
  }

  void ReadApplet(const AttributeList& attributes) {
    const Attribute archive = attributes.find(Attr::kArchive);
    const Attribute file = archive ? archive : attributes.find(Attr::kCode);
    if (!file) return;
    std::string_view target = rows_.Decoded(file);
    if (const Attribute codeBase = attributes.find(Attr::kCodebase)) {
      const std::string_view base = rows_.Decoded(codeBase);
      if (rules_.joinsEmptyCodeBase || !base.empty()) {
        target = rows_.Keep(JoinCodeBase(base, target));
      }
    }
    Add(LT_APPLET, file.valueOffset(), target);
  }

  // With exactly one "/" between the two.
  static std::string JoinCodeBase(std::string_view codeBase, std::string_view file) {
    std::string joined(codeBase);
    const auto last = FindLastCharMB(codeBase, '/');
    const bool ends = last != std::string::npos && last + 1 == codeBase.size();
    const bool begins = !file.empty() && file.front() == '/';
    if (ends && begins) joined.pop_back();
    if (!ends && !begins) joined.push_back('/');
    return joined.append(file);
  }

  const PagePart* part_ = nullptr;
  When when_ = When::kLater;  // of the reference being read
  const RuleFlags& rules_;
  PageRows& rows_;
  std::vector<std::string_view> candidates_;
  std::vector<LinkRow> metaAddresses_;
};

}  // namespace

// Blocks of memory that are filled in turn and kept when they are emptied.
struct PageRows::Arena {
  static constexpr std::size_t kBlock = std::size_t{1} << 16;

  char* Take(std::size_t size) {
    if (size > kBlock) {
      large.push_back(std::make_unique<char[]>(size));
      return large.back().get();
    }
    if (current == blocks.size() || kBlock - used < size) {
      if (current < blocks.size()) ++current;
      if (current == blocks.size()) blocks.push_back(std::make_unique<char[]>(kBlock));
      used = 0;
    }
    used += size;
    return blocks[current].get() + used - size;
  }

  void Clear() {
    current = 0;
    used = 0;
    large.clear();
  }

  std::vector<std::unique_ptr<char[]>> blocks;
  std::vector<std::unique_ptr<char[]>> large;  // one text each, freed with the page
  std::size_t current = 0;
  std::size_t used = 0;
};

PageRows::PageRows() : arena_(std::make_unique<Arena>()) {}
PageRows::~PageRows() = default;

void PageRows::Clear() {
  hasTitle = false;
  title = {};
  parts.Clear();
  metas.clear();
  links.clear();
  anchorLinks = 0;
  anchors.clear();
  arena_->Clear();
}

std::string_view PageRows::Decoded(const Attribute& attribute) {
  const std::string_view raw = attribute.rawValue();
  if (!NeedsDecoding(raw)) return raw;
  scratch_.clear();
  attribute.appendValue(scratch_);
  return Keep(scratch_);
}

std::string_view PageRows::Keep(std::string_view text) {
  if (text.empty()) return {};
  char* const kept = arena_->Take(text.size());
  std::memcpy(kept, text.data(), text.size());
  return {kept, text.size()};
}

void ExtractPage(const Document& document, LinkRules rules, PageRows& rows) {
  rows.Clear();
  rows.parts.Read(document, FlagsOf(rules));
  Extraction(rules, rows).Run();
}

}  // namespace zvrsit
