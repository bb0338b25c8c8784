// The documents of a page, and the places from which their references are resolved. They are the
// page itself, and with RuleFlags::readsInnerDocuments those in the SRCDOC of its IFRAMEs.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "links/link_rules.h"

namespace zvrsit {

class Document;
class TargetResolver;

// A BASE with an HREF. The HREF itself is resolved from another base: a number, or kPageItself.
struct PageBase {
  std::string href;  // decoded
  std::int32_t around;
};
inline constexpr std::int32_t kPageItself = -1;

// How many levels of documents within documents are followed: only a page that is made to cost time
// goes deeper.
inline constexpr int kDeepestPart = 4;

// One document of a page.
struct PagePart {
  const Document* document = nullptr;
  bool isInner = false;
  std::uint32_t offset = 0;  // of an inner one: where its SRCDOC stands in the page's text
  // The base of references before its BASE, and of those after it. Both are equal in a document
  // without a BASE.
  std::int32_t baseBefore = kPageItself;
  std::int32_t base = kPageItself;
  std::uint32_t baseOffset = 0;

  // The place in the page's text that belongs to a place in this document.
  std::uint32_t OffsetInPage(std::uint32_t place) const { return isInner ? offset : place; }
  // The base of a reference that a browser follows as soon as it has read it.
  std::int32_t BaseAt(std::uint32_t place) const { return place < baseOffset ? baseBefore : base; }
};

// Reused from page to page. Inner documents live until the next.
class PageParts {
 public:
  PageParts();
  ~PageParts();
  PageParts(const PageParts&) = delete;
  PageParts& operator=(const PageParts&) = delete;

  // Reads the parts of `document`, which is the first of them. Without
  // RuleFlags::readsInnerDocuments it is the only one, and there are no bases. Documents inside
  // documents are followed a few levels deep.
  void Read(const Document& document, const RuleFlags& rules);
  void Clear();

  const std::vector<PagePart>& parts() const { return parts_; }
  const std::vector<PageBase>& bases() const { return bases_; }

  // Calls `set` with the HREF of each BASE that leads to this base, the outermost first.
  template <class Set>
  void ForEachBase(std::int32_t base, Set set) const {
    if (base == kPageItself) return;
    const PageBase& last = bases_[static_cast<std::size_t>(base)];
    ForEachBase(last.around, set);
    set(last.href);
  }

 private:
  struct Inner;

  void ReadBase(PagePart& part);
  void AddInnerParts(std::size_t outer);

  std::vector<PagePart> parts_;
  std::vector<PageBase> bases_;
  std::deque<Inner> inner_;
};

}  // namespace zvrsit
