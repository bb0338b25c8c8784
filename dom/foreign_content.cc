#include "dom/foreign_content.h"

namespace zvrsit {
namespace {

constexpr TagSet kMathTextTags{Tag::kMi, Tag::kMo, Tag::kMn, Tag::kMs, Tag::kMtext};
constexpr TagSet kSvgHtmlTags{Tag::kForeignObject, Tag::kSvgDesc, Tag::kSvgTitle};

// Elements that are those of SVG only there: MathML has others of these names, which load nothing.
constexpr TagSet kSvgOnlyTags{Tag::kSvgA,      Tag::kFeImage,  Tag::kImage,   Tag::kUse,
                              Tag::kSvgScript, Tag::kSvgStyle, Tag::kSvgTitle};

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

bool ForeignContent::CdataAllowed() const {
  if (stack_.empty() || IsTemplate(stack_.back().kind)) return false;
  return InForeign() || stack_.back().openHtml == 0;
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
    Push(start.declaresShadow ? Kind::kShadow : Kind::kTemplate, tag);
    ++(start.declaresShadow ? shadows_ : templates_);
  } else if (placed.foreign) {
    if (!start.selfClosing) Push(tag == Tag::kSvg ? Kind::kSvg : Kind::kMath, tag);
  } else if (!stack_.empty() && !kVoidTags.contains(tag)) {
    ++stack_.back().openHtml;
  }
  return placed;
}

ForeignContent::Placed ForeignContent::StartForeign(const StartTag& start) {
  const Tag tag = ForeignTagOf(start.name);
  const bool svg = stack_.back().kind == Kind::kSvg;
  const bool isOther = !svg && kSvgOnlyTags.contains(tag);
  const Placed placed{isOther ? Tag::kOther : tag, true, InTemplate(), InShadow()};
  if (start.selfClosing) return placed;
  if (IsHtmlOnly(start.name, start.isCustom)) ++stack_.back().openHtml;
  if (tag == Tag::kSvg) {
    Push(Kind::kSvg, tag);
  } else if (tag == Tag::kMath && !svg) {
    Push(Kind::kMath, tag);
  } else if (svg ? kSvgHtmlTags.contains(tag)
                 : kMathTextTags.contains(tag) ||
                       (tag == Tag::kAnnotationXml && start.htmlAnnotation)) {
    Push(Kind::kIntegrationPoint, tag);
  }
  return placed;
}

void ForeignContent::End(const NameKey& name, bool isCustom) {
  if (stack_.empty()) return;
  const Tag html = HtmlTagOf(name);
  if (html == Tag::kTemplate && !(InForeign() && stack_.back().openHtml > 0)) {
    if (stack_.back().nearestTemplate != kNone) PopTo(stack_.back().nearestTemplate);
  } else if (InForeign()) {
    EndForeign(name, html, IsHtmlOnly(name, isCustom));
  } else if (stack_.back().kind == Kind::kIntegrationPoint &&
             ForeignTagOf(name) == stack_.back().tag) {
    PopTo(stack_.size() - 1);
  } else {
    EndHtml(html);
  }
}

void ForeignContent::EndHtml(Tag tag) {
  if (!kVoidTags.contains(tag) && stack_.back().openHtml > 0) --stack_.back().openHtml;
}

void ForeignContent::EndForeign(const NameKey& name, Tag htmlTag, bool isHtmlOnly) {
  const Tag foreignTag = ForeignTagOf(name);
  Entry& top = stack_.back();
  if (foreignTag == top.tag) return PopTo(stack_.size() - 1);
  const std::uint32_t around = top.nearestHtml;
  if (around != kNone && stack_[around].kind == Kind::kIntegrationPoint &&
      stack_[around].tag == foreignTag) {
    return PopTo(around);
  }
  const bool image = foreignTag == Tag::kImage;
  if (isHtmlOnly && top.openHtml > 0) {
    --top.openHtml;
  } else if (isHtmlOnly || (kBreakoutTags.contains(htmlTag) && !image)) {
    LeaveForeign();
    if (!stack_.empty()) EndHtml(htmlTag);
  }
}

void ForeignContent::Push(Kind kind, Tag tag) {
  const auto self = static_cast<std::uint32_t>(stack_.size());
  Entry entry{kind, tag, 0, self, self};
  if (IsForeign(kind)) entry.nearestHtml = stack_.empty() ? kNone : stack_.back().nearestHtml;
  if (!IsTemplate(kind)) {
    entry.nearestTemplate = stack_.empty() ? kNone : stack_.back().nearestTemplate;
  }
  stack_.push_back(entry);
}

void ForeignContent::PopTo(std::size_t size) {
  for (; stack_.size() > size; stack_.pop_back()) {
    if (stack_.back().kind == Kind::kTemplate) --templates_;
    if (stack_.back().kind == Kind::kShadow) --shadows_;
  }
}

void ForeignContent::LeaveForeign() {
  const std::uint32_t around = stack_.back().nearestHtml;
  PopTo(around == kNone ? 0 : around + 1);
}

}  // namespace zvrsit
