#include "css/page_styles.h"

#include <utility>

#include "dom/attr_table.h"
#include "links/html_values.h"

namespace zvrsit {
namespace {

// The content of a STYLE or LINK element of another TYPE is no style sheet.
bool IsCss(const AttributeList& attributes, bool parameters) {
  const Attribute type = attributes.find(Attr::kType);
  return !type || IsCssType(type.value(), parameters);
}

// Attributes of SVG elements that are CSS properties of the same names and may hold addresses.
constexpr AttrSet kPresentationAttributes{Attr::kClipPath,    Attr::kCursor,    Attr::kFill,
                                          Attr::kFilter,      Attr::kMarkerEnd, Attr::kMarkerMid,
                                          Attr::kMarkerStart, Attr::kMask,      Attr::kStroke};

bool HoldsCharacterReference(std::string_view html) {
  return html.find('&') != std::string_view::npos;
}

// Whether the rules let an element count.
bool Counts(const Element& element, const RuleFlags& rules) {
  return rules.readsShadowRoots || !element.inShadow();
}

// In SVG a STYLE is no raw text. So the sheet is made of the element's own texts and CDATA
// sections.
void VisitSvgStyle(const Element& element, const VisitStyleText& visit) {
  StyleText style;
  style.parts = element.ownTexts();
  if (style.parts.empty()) return;
  style.raw = style.parts.front().rawData();
  style.isPlain = style.parts.size() == 1 && !HoldsCharacterReference(style.raw);
  visit(style);
}

void VisitAttribute(const Attribute& attribute, std::string_view property,
                    const VisitStyleText& visit) {
  StyleText style;
  style.raw = attribute.rawValue();
  style.isPlain = !HoldsCharacterReference(style.raw);
  if (style.isPlain && style.raw.find('(') == std::string_view::npos) return;  // holds no address
  style.attribute = attribute;
  style.property = property;
  visit(style);
}

}  // namespace

std::string StyleText::Decoded() const {
  if (isPlain) return std::string(raw);
  if (attribute) return attribute.value();
  std::string sheet;
  for (const Text& text : parts) sheet += text.data(true);
  return sheet;
}

void StyleText::CollectReferences(std::string_view text, std::vector<CssReference>& found) const {
  if (property.empty()) {
    CollectCssReferences(text, source(), found);
  } else {
    CollectCssReferencesOfValue(text, property, found);
  }
}

void VisitStyles(const Document& document, const RuleFlags& rules, const VisitStyleText& visit) {
  for (const std::uint32_t index : document.elementsOf(Tag::kStyle)) {
    const Element element = document.element(index);
    const Text text = element.firstChild().asText();
    if (!text || !Counts(element, rules) || !IsCss(element.attributes(), false)) continue;
    StyleText style;
    style.raw = text.rawData();
    visit(style);
  }
  for (const std::uint32_t index : document.elementsOf(Tag::kSvgStyle)) {
    const Element element = document.element(index);
    if (Counts(element, rules) && IsCss(element.attributes(), false)) VisitSvgStyle(element, visit);
  }
  bool hasBody = false;
  for (const ElementAttribute& style : document.attributesNamed(Attr::kStyle)) {
    if (!Counts(style.element, rules)) continue;
    if (rules.mendsTree && style.element.tag() == Tag::kBody) {
      // A browser gives the attributes of a second BODY to the first, where that lacks them.
      if (std::exchange(hasBody, true)) continue;
    }
    VisitAttribute(style.attribute, {}, visit);
  }
}

void VisitSvgProperties(const Document& document, const VisitStyleText& visit) {
  if (document.elementsOf(Tag::kSvg).empty()) return;
  for (std::uint32_t index = 0; index < document.elementCount(); ++index) {
    const Element element = document.element(index);
    if (element.isHtml() || element.inTemplate()) continue;
    const AttributeList attributes = element.attributes();
    for (std::size_t i = 0; i < attributes.size(); ++i) {
      const Attribute attribute = attributes.item(i);
      if (!kPresentationAttributes.contains(attribute.attr())) continue;
      VisitAttribute(attribute, AttrName(attribute.attr()), visit);
    }
  }
}

SheetLink SheetLinkOf(const Element& link, const RuleFlags& rules) {
  const AttributeList attributes = link.attributes();
  const Attribute rel = attributes.find(Attr::kRel);
  if (!rel || !attributes.find(Attr::kHref) || !Counts(link, rules)) return SheetLink::kNone;
  const std::string words = rel.value();
  const bool isStyleLink = IsStyleSheetRel(words);
  if (!isStyleLink && !HoldsStyleSheetRel(words)) return SheetLink::kNone;
  if (rules.mindsTypes && !IsCss(attributes, true)) return SheetLink::kNone;
  return isStyleLink ? SheetLink::kStyleLink : SheetLink::kReadToo;
}

}  // namespace zvrsit
