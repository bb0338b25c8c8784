// The style texts of a document.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "css/css_references.h"
#include "dom/document.h"
#include "links/link_rules.h"

namespace zvrsit {

// A STYLE element's content, a style attribute, or an attribute of SVG that is a property.
struct StyleText {
  // The part of the document's text in which it begins, and if it is plain, all of it.
  std::string_view raw;
  // Whether `raw` is what it means; else it holds character references, or has several parts.
  bool isPlain = true;
  Attribute attribute;        // empty for an element's content
  std::vector<Text> parts;    // of an SVG STYLE that is not plain
  std::string_view property;  // in lower case; empty for anything but a property

  CssSource source() const { return attribute ? CssSource::kDeclarations : CssSource::kSheet; }
  std::string Decoded() const;
  // Appends what it refers to, as CollectCssReferences does; `text` is its meaning.
  void CollectReferences(std::string_view text, std::vector<CssReference>& found) const;
};

using VisitStyleText = std::function<void(const StyleText& style)>;

// The STYLE elements that hold CSS, those of SVG after those of HTML; then the style attributes.
void VisitStyles(const Document& document, const RuleFlags& rules, const VisitStyleText& visit);
// The attributes of SVG that are properties. With RuleFlags::readsSvgProperties.
void VisitSvgProperties(const Document& document, const VisitStyleText& visit);

// What a LINK element is to the sheets of its page.
enum class SheetLink {
  kNone,
  kStyleLink,  // its REL is STYLESHEET
  kReadToo,    // other words beside it: an ordinary link, but the sheet is read all the same
};
SheetLink SheetLinkOf(const Element& link, const RuleFlags& rules);

}  // namespace zvrsit
