// Where SVG and MathML begin and end, and the content of TEMPLATE, told from the tags alone.
//
// Kept is a stack of the few elements that change how names are read: `svg`, `math`, the elements
// in them whose content is HTML again (integration points), and `template`. Other elements are not
// on it. So an end tag of an HTML element ends the SVG or MathML around it, as if that element had
// been open; a stray one does in a browser not. Each tag takes constant time, however deep it is.
#pragma once

#include <cstdint>
#include <vector>

#include "dom/tag_traits.h"

namespace zvrsit {

class ForeignContent {
 public:
  void Clear() { stack_.clear(), templates_ = shadows_ = 0; }

  // Nothing on the stack: every tag is HTML, and only SVG, MATH and TEMPLATE need be told.
  bool Idle() const { return stack_.empty(); }

  bool InTemplate() const { return templates_ > 0; }
  // Within a template that declares a shadow root.
  bool InShadow() const { return shadows_ > 0; }
  // Whether a CDATA section is one here: the innermost open element is SVG or MathML.
  bool CdataAllowed() const;

  struct StartTag {
    NameKey name;
    bool selfClosing = false;
    bool breaksOutFont = false;   // a FONT with COLOR, FACE or SIZE
    bool htmlAnnotation = false;  // an annotation-xml whose ENCODING names HTML
    bool declaresShadow = false;  // a TEMPLATE whose content is a shadow root
    bool isCustom = false;        // the name is that of a custom element
  };
  struct Placed {
    Tag tag;
    bool foreign;
    bool inTemplate;
    bool inShadow;
  };

  // A start tag; where its element lies.
  Placed Start(const StartTag& start);
  void End(const NameKey& name, bool isCustom);

 private:
  enum class Kind : std::uint8_t { kSvg, kMath, kIntegrationPoint, kTemplate, kShadow };
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  struct Entry {
    Kind kind;
    Tag tag;
    // Elements begun in it and not ended: in HTML all of them, in SVG and MathML those whose names
    // are otherwise HTML's alone.
    std::uint32_t openHtml;
    std::uint32_t nearestHtml;      // the nearest entry whose content is HTML, itself included
    std::uint32_t nearestTemplate;  // the nearest template of either kind, itself included
  };

  bool InForeign() const { return !stack_.empty() && IsForeign(stack_.back().kind); }
  static bool IsForeign(Kind kind) { return kind == Kind::kSvg || kind == Kind::kMath; }
  static bool IsTemplate(Kind kind) { return kind == Kind::kTemplate || kind == Kind::kShadow; }

  Placed StartHtml(Tag tag, const StartTag& start);
  Placed StartForeign(const StartTag& start);
  void EndHtml(Tag tag);
  void EndForeign(const NameKey& name, Tag htmlTag, bool isHtmlOnly);
  void Push(Kind kind, Tag tag);
  void PopTo(std::size_t size);
  void LeaveForeign();

  std::vector<Entry> stack_;
  std::uint32_t templates_ = 0;  // on the stack
  std::uint32_t shadows_ = 0;
};

}  // namespace zvrsit
