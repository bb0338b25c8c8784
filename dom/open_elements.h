// Which HTML elements are open. This must be known in the parts of SVG and MathML whose content is
// HTML, and everywhere in a page that declares a shadow root.
//
// Tags that are missing are added as browsers do (the tree construction section of the WHATWG HTML
// standard) for the cases that pages have: P, list items, headings, tables, OPTION, BUTTON, A. What
// browsers do about formatting elements that end in the wrong order is done in part: the element is
// taken out, what is in it goes on, and none is opened anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "dom/name_table.h"

namespace zvrsit {

class OpenElements {
 public:
  void Clear() { open_.clear(), bodyHasBegun_ = bodyHasRoot_ = false; }
  std::size_t size() const { return open_.size(); }
  // Forgets all but the first `size`.
  void Cut(std::size_t size) { open_.resize(size); }

  // The first elements that a tag can close: any tag, and one of a table or of a part of one.
  struct Reach {
    std::size_t all;
    std::size_t tables;
  };
  struct StartTag {
    NameKey name;
    bool hasContent;  // false: void, or its content is no markup
    bool isCustom;
  };
  // Closes what a start tag ends. False: a part of a table that lies in none.
  bool Start(const StartTag& start, const Reach& reach);
  // Then opens its element.
  void Push(const StartTag& start);
  // False: the end of a table, or of a part of one, that is not open.
  bool End(const NameKey& name, const Reach& reach);

  // The last tag ended all SVG and MathML that began where at least so many elements were open.
  std::size_t foreignLimit() const { return foreignLimit_; }
  // Forgets what was taken out of the middle, where nothing is left in it; to be called after each
  // tag, with the first number that nobody else knows.
  void DropRemoved(std::size_t from);

  // Whether the innermost open element, from number `from` on, can be given a shadow root; if so,
  // it gets one. If no element is open, it is the body when `inBody`.
  bool TakeShadowRoot(std::size_t from, bool inBody);

 private:
  struct Element {
    NameKey name;
    std::uint16_t traits = 0;
    bool hasRoot = false;
  };

  static bool IsTable(const Element& element);
  // The number of the outermost element that is looked at.
  std::size_t Deepest() const;
  void CloseP(std::size_t from);
  bool Remove(const NameKey& name, std::size_t from);
  void EndFormatting(const NameKey& name, std::size_t from);
  void CloseBefore(const StartTag& start, std::uint16_t traits, std::size_t from);
  bool CloseTableParts(std::uint16_t traits, std::size_t from);
  template <class Wanted>
  bool CloseNearest(Wanted wanted, std::uint16_t barriers, std::size_t from);

  static constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

  std::vector<Element> open_;
  std::size_t foreignLimit_ = kNoLimit;
  bool bodyHasBegun_ = false;
  bool bodyHasRoot_ = false;
};

}  // namespace zvrsit
