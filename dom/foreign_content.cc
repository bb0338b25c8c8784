#include "dom/foreign_content.h"

#include <algorithm>

namespace zvrsit {
namespace {

constexpr TagSet kMathTextTags{Tag::kMi, Tag::kMo, Tag::kMn, Tag::kMs, Tag::kMtext};
constexpr TagSet kSvgHtmlTags{Tag::kForeignObject, Tag::kSvgDesc, Tag::kSvgTitle};

// Elements that are those of SVG only there: MathML has others of these names, which load nothing.
constexpr TagSet kSvgOnlyTags{Tag::kSvg, Tag::kSvgA,      Tag::kFeImage,  Tag::kImage,
                              Tag::kUse, Tag::kSvgScript, Tag::kSvgStyle, Tag::kSvgTitle};

// Names that are HTML's alone: their end tag in SVG or MathML belongs to an element around it, if
// none of that name was begun inside.
constexpr TagSet kHtmlOnlyTags{
    Tag::kBody,   Tag::kHtml,     Tag::kForm,   Tag::kButton,  Tag::kTbody,   Tag::kTd,
    Tag::kTh,     Tag::kTfoot,    Tag::kThead,  Tag::kTr,      Tag::kCaption, Tag::kObject,
    Tag::kSelect, Tag::kNoscript, Tag::kApplet, Tag::kPicture, Tag::kMap,     Tag::kTemplate,
    Tag::kOption, Tag::kIns,      Tag::kDel,    Tag::kQ};

// The same for names that have no tag.
using NameSet = NameTable<bool, 64>;
constexpr NameSet kHtmlOnlyNames(std::to_array<NameSet::Entry>(
    {{"abbr", true},   {"address", true}, {"article", true},  {"aside", true},
     {"bdo", true},    {"cite", true},    {"details", true},  {"dfn", true},
     {"dialog", true}, {"dir", true},     {"fieldset", true}, {"figcaption", true},
     {"figure", true}, {"footer", true},  {"header", true},   {"hgroup", true},
     {"kbd", true},    {"label", true},   {"legend", true},   {"main", true},
     {"mark", true},   {"marquee", true}, {"nav", true},      {"optgroup", true},
     {"samp", true},   {"search", true},  {"section", true},  {"summary", true},
     {"time", true}}));

bool IsHtmlOnly(const NameKey& name, bool isCustom) {
  return isCustom || kHtmlOnlyTags.contains(HtmlTagOf(name)) || kHtmlOnlyNames.Find(name, false);
}

}  // namespace

std::size_t ForeignContent::PlaceOf(Tag tag) {
  return static_cast<std::size_t>(std::ranges::find(kOnStack, tag) - kOnStack.begin());
}

bool ForeignContent::CdataAllowed() const {
  if (stack_.empty() || IsTemplate(stack_.back().kind)) return false;
  return InForeign() || html_.size() == stack_.back().htmlAround;
}

// Whether it is known which HTML elements are open around here.
bool ForeignContent::FollowsHtml() const {
  const std::uint32_t nearest = NearestHtml();
  return followsAll_ || (nearest != kNone && stack_[nearest].kind == Kind::kIntegrationPoint);
}

ForeignContent::Placed ForeignContent::Start(const StartTag& start) {
  const Tag html = HtmlTagOf(start.name);
  if (!InForeign()) return StartHtml(html, start);
  if (kBreakoutTags.contains(html) || (html == Tag::kFont && start.breaksOutFont)) {
    // `image` has the tag of `img`, but is an element of SVG.
    if (ForeignTagOf(start.name) != Tag::kImage) {
      LeaveForeign();
      return StartHtml(html, start);
    }
  }
  return StartForeign(start);
}

ForeignContent::Placed ForeignContent::StartHtml(Tag tag, const StartTag& start) {
  const Placed placed{tag, tag == Tag::kSvg || tag == Tag::kMath, InTemplate(), InShadow()};
  if (tag == Tag::kTemplate) {
    const bool shadow = DeclaresShadow(start);
    Push(shadow ? Kind::kShadow : Kind::kTemplate, tag);
    ++(shadow ? shadows_ : templates_);
    return placed;
  }
  if (FollowsHtml()) {
    const bool hasContent = !placed.foreign && !start.isEmpty && !kVoidTags.contains(tag) &&
                            ContentModelOf(tag) == ContentModel::kData;
    html_.Start({start.name, hasContent, start.isCustom}, FirstHtml());
  }
  if (placed.foreign && !start.selfClosing) Push(tag == Tag::kSvg ? Kind::kSvg : Kind::kMath, tag);
  return placed;
}

bool ForeignContent::DeclaresShadow(const StartTag& start) {
  if (!start.declaresShadow) return false;
  return !followsAll_ || html_.TakeShadowRoot(FirstHtml(), stack_.empty());
}

ForeignContent::Placed ForeignContent::StartForeign(const StartTag& start) {
  Tag tag = ForeignTagOf(start.name);
  const bool svg = stack_.back().kind == Kind::kSvg;
  // SVG begins in MathML where an `annotation-xml` holds it; else MathML has an `svg` of its own.
  const bool isSvg = svg || (tag == Tag::kSvg && stack_.back().tag == Tag::kAnnotationXml);
  if (!isSvg && kSvgOnlyTags.contains(tag)) tag = Tag::kOther;
  const Placed placed{tag, true, InTemplate(), InShadow()};
  if (start.selfClosing) return placed;
  if (IsHtmlOnly(start.name, start.isCustom)) ++stack_.back().likeHtml;
  if (tag == Tag::kSvg) {
    Push(Kind::kSvg, tag);
  } else if (svg ? kSvgHtmlTags.contains(tag)
                 : kMathTextTags.contains(tag) ||
                       (tag == Tag::kAnnotationXml && start.htmlAnnotation)) {
    Push(Kind::kIntegrationPoint, tag);
  } else if (!svg && (tag == Tag::kMath || tag == Tag::kAnnotationXml)) {
    Push(Kind::kMath, tag);
  }
  return placed;
}

void ForeignContent::End(const NameKey& name, bool isCustom) {
  const Tag html = HtmlTagOf(name);
  if (stack_.empty()) return EndHtml(name);
  if (html == Tag::kTemplate && !(InForeign() && stack_.back().likeHtml > 0)) {
    if (stack_.back().nearestTemplate != kNone) PopTo(stack_.back().nearestTemplate);
  } else if (InForeign()) {
    EndForeign(name, html, IsHtmlOnly(name, isCustom));
  } else if (IsTemplate(stack_.back().kind) || html_.size() > stack_.back().htmlAround ||
             !EndElementOfStack(ForeignTagOf(name))) {
    EndHtml(name);
  }
}

// Ends HTML elements, with the SVG and MathML in them.
void ForeignContent::EndHtml(const NameKey& name) {
  if (!FollowsHtml()) return;
  html_.End(name, FirstHtml());
  while (!stack_.empty() && stack_.back().htmlAround > html_.size()) PopTo(stack_.size() - 1);
}

// Ends the nearest element of SVG or MathML on the stack that has the tag, with all that is in it;
// false when none has up to the next HTML element.
bool ForeignContent::EndElementOfStack(Tag tag) {
  const std::size_t place = PlaceOf(tag);
  if (place == kOnStack.size()) return false;
  const std::uint32_t nearest = stack_.back().nearest[place];
  if (nearest == kNone || nearest < stack_.back().runBegin) return false;
  PopTo(nearest);
  return true;
}

void ForeignContent::EndForeign(const NameKey& name, Tag htmlTag, bool isHtmlOnly) {
  const Tag foreignTag = ForeignTagOf(name);
  if (EndElementOfStack(foreignTag)) return;
  Entry& top = stack_.back();
  const bool image = foreignTag == Tag::kImage;
  if (isHtmlOnly && top.likeHtml > 0) {
    --top.likeHtml;
  } else if (isHtmlOnly || (kBreakoutTags.contains(htmlTag) && !image)) {
    if (htmlTag == Tag::kP || htmlTag == Tag::kBr || !FollowsHtml()) LeaveForeign();
    EndHtml(name);
  }
}

void ForeignContent::Push(Kind kind, Tag tag) {
  const auto self = static_cast<std::uint32_t>(stack_.size());
  Entry entry{kind, tag, 0, html_.size(), self, self, self, {}};
  entry.nearest.fill(kNone);
  if (IsForeign(kind)) entry.nearestHtml = NearestHtml();
  if (!IsTemplate(kind)) entry.nearestTemplate = kNone;
  if (!stack_.empty()) {
    const Entry& around = stack_.back();
    if (!IsTemplate(kind)) entry.nearestTemplate = around.nearestTemplate;
    const bool hasHtmlBetween = !IsForeign(around.kind) && html_.size() > around.htmlAround;
    if (!IsTemplate(around.kind) && !hasHtmlBetween) entry.runBegin = around.runBegin;
    entry.nearest = around.nearest;
  }
  if (const std::size_t place = PlaceOf(tag); place < kOnStack.size()) entry.nearest[place] = self;
  stack_.push_back(entry);
}

void ForeignContent::PopTo(std::size_t size) {
  for (; stack_.size() > size; stack_.pop_back()) {
    if (stack_.back().kind == Kind::kTemplate) --templates_;
    if (stack_.back().kind == Kind::kShadow) --shadows_;
    html_.Cut(std::min(html_.size(), stack_.back().htmlAround));
  }
}

void ForeignContent::LeaveForeign() {
  const std::uint32_t around = NearestHtml();
  PopTo(around == kNone ? 0 : around + 1);
}

}  // namespace zvrsit
