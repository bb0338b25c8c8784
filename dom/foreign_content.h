// Finds from the tags alone where SVG and MathML begin and end, and where the content of a TEMPLATE
// does.
//
// Kept is a stack of the open elements of SVG and MathML and of the open TEMPLATEs. Beside it the
// HTML elements that are open in integration points, the parts of SVG and MathML whose content is
// HTML again; where all are followed, those of the whole page. An end tag in SVG or MathML that
// ends nothing there may end an HTML element around it: a page that has such a one is to be read
// again with all followed. A tag looks at a bounded number of elements, however deep it is.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "dom/open_elements.h"
#include "dom/tag_traits.h"

namespace zvrsit {

class ForeignContent {
 public:
  // With `followsAll` every tag must be given, and a TEMPLATE declares a shadow root only for an
  // element that can have one. Without it only SVG, MATH and TEMPLATE must be given, and all that
  // follows them until Idle().
  explicit ForeignContent(bool followsAll) : followsAll_(followsAll) {}

  // Nothing on the stack: every tag is HTML.
  bool Idle() const { return stack_.empty() && !followsAll_; }

  bool InTemplate() const { return templates_ > 0; }
  // Within a template that declares a shadow root.
  bool InShadow() const { return shadows_ > 0; }
  // Whether a tag came whose meaning HTML elements around it decide that were not followed.
  bool LacksHtml() const { return lacksHtml_; }
  // The number of the SVG STYLE that text is now content of; kNone when of none.
  std::uint32_t SvgStyle() const {
    const bool inStyle = !stack_.empty() && stack_.back().tag == Tag::kSvgStyle;
    return inStyle ? stack_.back().element : kNone;
  }
  // Whether the innermost open element is SVG or MathML, so that a CDATA section is one.
  bool IsInnermost() const;

  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  struct StartTag {
    NameKey name;
    std::uint32_t element;  // its number
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
  void End(const NameKey& name);

 private:
  enum class Kind : std::uint8_t { kSvg, kMath, kIntegrationPoint, kTemplate, kShadow };

  struct NameHash {
    std::size_t operator()(const NameKey& name) const {
      return static_cast<std::size_t>((name.head ^ name.tail) * 0x9E3779B97F4A7C15 >> 32);
    }
  };

  struct Entry {
    Kind kind;
    Tag tag;
    std::uint32_t element;          // its number
    std::size_t htmlAround;         // HTML elements that were open when it began
    std::uint32_t nearestHtml;      // the nearest entry whose content is HTML, itself included
    std::uint32_t nearestTemplate;  // the nearest template of either kind, itself included
    // The first entry of a row of entries that have no HTML element between them.
    std::uint32_t runBegin;
    // In innermost_, and what stands there without this entry; null for a template.
    std::uint32_t* innermost;
    std::uint32_t nextOfName;
  };

  bool InForeign() const { return !stack_.empty() && IsForeign(stack_.back().kind); }
  static bool IsForeign(Kind kind) { return kind == Kind::kSvg || kind == Kind::kMath; }
  // The entry whose HTML content is the innermost; kNone for the page.
  std::uint32_t NearestHtml() const { return stack_.empty() ? kNone : stack_.back().nearestHtml; }
  // The first HTML elements that a tag can close: those in it, but the parts of a table in all of
  // the innermost template.
  OpenElements::Reach HtmlReach() const {
    return {HtmlIn(NearestHtml()), HtmlIn(stack_.empty() ? kNone : stack_.back().nearestTemplate)};
  }
  std::size_t HtmlIn(std::uint32_t entry) const {
    return entry == kNone ? 0 : stack_[entry].htmlAround;
  }
  bool FollowsHtml() const;
  static bool IsTemplate(Kind kind) { return kind == Kind::kTemplate || kind == Kind::kShadow; }

  Placed StartHtml(Tag tag, const StartTag& start);
  Placed StartForeign(const StartTag& start);
  bool DeclaresShadow(const StartTag& start);
  bool EndNearest(const NameKey& name);
  void EndTemplate();
  void EndHtml(const NameKey& name);
  void DropEnded();
  void EndForeign(const NameKey& name);
  void Push(Kind kind, Tag tag, const StartTag& start);
  void PopTo(std::size_t size);
  void LeaveForeign();

  const bool followsAll_;
  std::vector<Entry> stack_;
  // Where on the stack the innermost element of each name is.
  std::unordered_map<NameKey, std::uint32_t, NameHash> innermost_;
  OpenElements html_;
  std::uint32_t templates_ = 0;  // on the stack
  std::uint32_t shadows_ = 0;
  bool lacksHtml_ = false;
};

}  // namespace zvrsit
