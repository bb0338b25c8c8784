// Where SVG and MathML begin and end, and the content of TEMPLATE, told from the tags alone.
//
// Kept is a stack of the few elements that change how names are read: `svg`, `math`, the elements
// in them whose content is HTML again (integration points), and `template`. Beside it the HTML
// elements that are open in integration points, which keep their end tags from ending them; where
// all are followed, those of the whole page. Else an end tag of an HTML element ends the SVG or
// MathML that it stands in, as if that element had been open around it; in a browser a stray one
// does not. A tag looks at a bounded number of elements, however deep it is.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "dom/open_elements.h"
#include "dom/tag_traits.h"

namespace zvrsit {

class ForeignContent {
 public:
  // `followsAll`: every tag is told, and a TEMPLATE declares a shadow root only for an element that
  // can have one. Else SVG, MATH and TEMPLATE are told, and what comes until Idle().
  explicit ForeignContent(bool followsAll) : followsAll_(followsAll) {}

  // Nothing on the stack: every tag is HTML.
  bool Idle() const { return stack_.empty() && !followsAll_; }

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
    bool isEmpty = false;         // an HTML element is, too
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
  // The tags of SVG and MathML that are kept.
  static constexpr std::array kOnStack{Tag::kSvg,     Tag::kMath,         Tag::kForeignObject,
                                       Tag::kSvgDesc, Tag::kSvgTitle,     Tag::kMi,
                                       Tag::kMo,      Tag::kMn,           Tag::kMs,
                                       Tag::kMtext,   Tag::kAnnotationXml};
  static std::size_t PlaceOf(Tag tag);

  struct Entry {
    Kind kind;
    Tag tag;
    // Elements of SVG and MathML begun in it and not ended whose names are otherwise HTML's alone.
    std::uint32_t likeHtml;
    std::size_t htmlAround;         // HTML elements that were open when it began
    std::uint32_t nearestHtml;      // the nearest entry whose content is HTML, itself included
    std::uint32_t nearestTemplate;  // the nearest template of either kind, itself included
    // The first entry of those in a row that no HTML element stands between.
    std::uint32_t runBegin;
    std::array<std::uint32_t, kOnStack.size()> nearest;  // the nearest of each tag, itself included
  };

  bool InForeign() const { return !stack_.empty() && IsForeign(stack_.back().kind); }
  static bool IsForeign(Kind kind) { return kind == Kind::kSvg || kind == Kind::kMath; }
  // What the innermost content of HTML is that of; kNone for the page.
  std::uint32_t NearestHtml() const { return stack_.empty() ? kNone : stack_.back().nearestHtml; }
  // The first HTML element that is open in it.
  std::size_t FirstHtml() const {
    const std::uint32_t nearest = NearestHtml();
    return nearest == kNone ? 0 : stack_[nearest].htmlAround;
  }
  bool FollowsHtml() const;
  static bool IsTemplate(Kind kind) { return kind == Kind::kTemplate || kind == Kind::kShadow; }

  Placed StartHtml(Tag tag, const StartTag& start);
  Placed StartForeign(const StartTag& start);
  bool DeclaresShadow(const StartTag& start);
  bool EndElementOfStack(Tag tag);
  void EndHtml(const NameKey& name);
  void EndForeign(const NameKey& name, Tag htmlTag, bool isHtmlOnly);
  void Push(Kind kind, Tag tag);
  void PopTo(std::size_t size);
  void LeaveForeign();

  const bool followsAll_;
  std::vector<Entry> stack_;
  OpenElements html_;
  std::uint32_t templates_ = 0;  // on the stack
  std::uint32_t shadows_ = 0;
};

}  // namespace zvrsit
