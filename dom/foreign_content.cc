#include "dom/foreign_content.h"

#include <algorithm>
#include <utility>

namespace zvrsit {
namespace {

constexpr TagSet kMathTextTags{Tag::kMi, Tag::kMo, Tag::kMn, Tag::kMs, Tag::kMtext};
constexpr TagSet kSvgHtmlTags{Tag::kForeignObject, Tag::kSvgDesc, Tag::kSvgTitle};

// Elements that mean something only in SVG: MathML has elements of these names too, which load
// nothing.
constexpr TagSet kSvgOnlyTags{Tag::kSvg, Tag::kSvgA,      Tag::kFeImage,  Tag::kImage,
                              Tag::kUse, Tag::kSvgScript, Tag::kSvgStyle, Tag::kSvgTitle};

}  // namespace

bool ForeignContent::IsInnermost() const {
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
    Push(shadow ? Kind::kShadow : Kind::kTemplate, tag, start);
    ++(shadow ? shadows_ : templates_);
    return placed;
  }
  if (FollowsHtml()) {
    const bool hasContent = !placed.foreign && !start.isEmpty && !kVoidTags.contains(tag) &&
                            ContentModelOf(tag) == ContentModel::kData;
    const OpenElements::StartTag element{start.name, hasContent, start.isCustom};
    if (html_.Start(element, HtmlReach())) {
      DropEnded();
      html_.Push(element);
    } else {
      lacksHtml_ |= !followsAll_;
    }
  }
  if (placed.foreign && !start.selfClosing) {
    Push(tag == Tag::kSvg ? Kind::kSvg : Kind::kMath, tag, start);
  }
  return placed;
}

bool ForeignContent::DeclaresShadow(const StartTag& start) {
  if (!start.declaresShadow) return false;
  return !followsAll_ || html_.TakeShadowRoot(HtmlIn(NearestHtml()), stack_.empty());
}

ForeignContent::Placed ForeignContent::StartForeign(const StartTag& start) {
  Tag tag = ForeignTagOf(start.name);
  const bool svg = stack_.back().kind == Kind::kSvg;
  // In MathML, SVG begins only in an `annotation-xml`. Elsewhere MathML has an `svg` of its own.
  const bool isSvg = svg || (tag == Tag::kSvg && stack_.back().tag == Tag::kAnnotationXml);
  if (!isSvg && kSvgOnlyTags.contains(tag)) tag = Tag::kOther;
  const Placed placed{tag, true, InTemplate(), InShadow()};
  if (start.selfClosing) return placed;
  const bool isIntegrationPoint =
      isSvg ? kSvgHtmlTags.contains(tag)
            : kMathTextTags.contains(tag) || (tag == Tag::kAnnotationXml && start.htmlAnnotation);
  const Kind kind = isSvg ? Kind::kSvg : Kind::kMath;
  Push(isIntegrationPoint ? Kind::kIntegrationPoint : kind, tag, start);
  return placed;
}

void ForeignContent::End(const NameKey& name) {
  if (IsInnermost()) return EndForeign(name);
  if (HtmlTagOf(name) == Tag::kTemplate) return EndTemplate();
  EndHtml(name);
}

void ForeignContent::EndTemplate() {
  if (stack_.empty() || stack_.back().nearestTemplate == kNone) return;
  PopTo(stack_.back().nearestTemplate);
}

// Ends HTML elements, with the SVG and MathML in them.
void ForeignContent::EndHtml(const NameKey& name) {
  if (!FollowsHtml()) return;
  lacksHtml_ |= !html_.End(name, HtmlReach()) && !followsAll_;
  DropEnded();
}

// Ends the SVG and MathML in HTML elements that have ended.
void ForeignContent::DropEnded() {
  const auto hasEnded = [&](std::size_t htmlAround) {
    return htmlAround > html_.size() || htmlAround >= html_.foreignLimit();
  };
  while (!stack_.empty() && hasEnded(stack_.back().htmlAround)) PopTo(stack_.size() - 1);
  html_.DropRemoved(stack_.empty() ? 0 : stack_.back().htmlAround);
}

// Ends the nearest open element of SVG or MathML of that name, with all that is in it; false when
// there is none up to the next HTML element.
bool ForeignContent::EndNearest(const NameKey& name) {
  const auto found = innermost_.find(name);
  if (found == innermost_.end() || found->second == kNone) return false;
  if (found->second < stack_.back().runBegin) return false;
  PopTo(found->second);
  return true;
}

// As the standard's rules for tokens in foreign content say.
void ForeignContent::EndForeign(const NameKey& name) {
  const Tag html = HtmlTagOf(name);
  if (html == Tag::kP || html == Tag::kBr) {
    LeaveForeign();
    return EndHtml(name);
  }
  if (EndNearest(name)) return;
  if (html == Tag::kTemplate) return EndTemplate();
  lacksHtml_ |= !FollowsHtml();
  EndHtml(name);
}

void ForeignContent::Push(Kind kind, Tag tag, const StartTag& start) {
  const auto self = static_cast<std::uint32_t>(stack_.size());
  Entry entry{kind, tag, start.element, html_.size(), self, self, self, nullptr, kNone};
  if (IsForeign(kind)) entry.nearestHtml = NearestHtml();
  if (!IsTemplate(kind)) {
    entry.nearestTemplate = stack_.empty() ? kNone : stack_.back().nearestTemplate;
    entry.innermost = &innermost_.try_emplace(start.name, kNone).first->second;
    entry.nextOfName = std::exchange(*entry.innermost, self);
  }
  if (!stack_.empty()) {
    const Entry& around = stack_.back();
    const bool hasHtmlBetween = !IsForeign(around.kind) && html_.size() > around.htmlAround;
    if (!IsTemplate(around.kind) && !hasHtmlBetween) entry.runBegin = around.runBegin;
  }
  stack_.push_back(entry);
}

void ForeignContent::PopTo(std::size_t size) {
  for (; stack_.size() > size; stack_.pop_back()) {
    const Entry& last = stack_.back();
    if (last.kind == Kind::kTemplate) --templates_;
    if (last.kind == Kind::kShadow) --shadows_;
    if (last.innermost != nullptr) *last.innermost = last.nextOfName;
    html_.Cut(std::min(html_.size(), last.htmlAround));
  }
}

void ForeignContent::LeaveForeign() {
  const std::uint32_t around = NearestHtml();
  PopTo(around == kNone ? 0 : around + 1);
}

}  // namespace zvrsit
