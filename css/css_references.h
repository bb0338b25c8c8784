// The references of one piece of style text: a sheet, a STYLE element or a style attribute.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvrsit {

enum class CssReferenceKind : std::uint8_t {
  kImport,  // the sheet that an @import names
  kImage,   // the value of a property that takes an image
  kOther,   // fonts, behaviours, filters, custom properties and the rest
};

struct CssReference {
  CssReferenceKind kind;
  std::string text;     // as written, escapes decoded; never empty, never a bare "#fragment"
  std::int32_t offset;  // in bytes, of its token in the text
  // Of the address itself, without quotes and the like, nothing decoded.
  std::int32_t valueOffset;
  std::int32_t valueLength;
};

enum class CssSource : std::uint8_t {
  kSheet,         // a list of rules
  kDeclarations,  // the content of a style attribute
};

// Appends to `found`, in the order of the text, what a reader of the sheet would fetch:
//   - the address of each @import that stands where imports may stand: outside of every block,
//     after nothing but @charset, the names of layers and other imports;
//   - each url() and src() in a declaration, and each string of an image-set().
// Other addresses are names, not references: those in the parts before the block of @namespace,
// @document and @supports, in selectors, and in the conditions after the address of an @import.
// `text` is in the code page. The time is linear in its length, and nothing is recursive.
void CollectCssReferences(std::string_view text, CssSource source,
                          std::vector<CssReference>& found);
// The same for the value of one property, given as an attribute of SVG; `property` is in lower
// case. A text with a ";" is no value, and refers to nothing.
void CollectCssReferencesOfValue(std::string_view value, std::string_view property,
                                 std::vector<CssReference>& found);

}  // namespace zvrsit
