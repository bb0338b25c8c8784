#include "dom/open_elements.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace zvrsit {
namespace {

enum Trait : std::uint16_t {
  kSpecial = 1,      // the end tag of an element that is not special does not reach beyond it
  kEndsP = 2,        // its start tag ends a P
  kScope = 4,        // no end tag reaches beyond it but those of a table
  kHost = 8,         // can be given a shadow root
  kListItem = 0x10,  // LI
  kTerm = 0x20,      // DT, DD
  kHeading = 0x40,
  kThin = 0x80,  // special, but a list item in it ends the one around it
  kFormatting = 0x100,
  kCell = 0x200,  // parts of a table, from the inside
  kRow = 0x400,
  kRows = 0x800,
  kTable = 0x1000,
  kPage = 0x2000,    // HTML, HEAD, BODY: there is one of each
  kOfHead = 0x4000,  // does not begin the body
  kList = 0x8000,    // no end tag of a list item reaches beyond it
};
constexpr std::uint16_t kBlock = kSpecial | kEndsP;
constexpr std::uint16_t kTableParts = kCell | kRow | kRows;

using TraitTable = NameTable<std::uint16_t, 256>;
constexpr auto Of = [](std::string_view name, unsigned traits) {
  return TraitTable::Entry{name, static_cast<std::uint16_t>(traits)};
};
constexpr TraitTable kTraits(std::to_array<TraitTable::Entry>({
    Of("a", kFormatting),
    Of("address", kBlock | kThin),
    Of("applet", kSpecial | kScope),
    Of("article", kBlock | kHost),
    Of("aside", kBlock | kHost),
    Of("b", kFormatting),
    Of("base", kOfHead),
    Of("basefont", kOfHead),
    Of("bgsound", kOfHead),
    Of("big", kFormatting),
    Of("blockquote", kBlock | kHost),
    Of("body", kPage),
    Of("button", kSpecial),
    Of("caption", kSpecial | kScope | kRows),
    Of("center", kBlock),
    Of("code", kFormatting),
    Of("colgroup", kSpecial | kRows),
    Of("dd", kBlock | kTerm),
    Of("details", kBlock),
    Of("dialog", kEndsP),
    Of("dir", kBlock),
    Of("div", kBlock | kThin | kHost),
    Of("dl", kBlock),
    Of("dt", kBlock | kTerm),
    Of("em", kFormatting),
    Of("fieldset", kBlock),
    Of("figcaption", kBlock),
    Of("figure", kBlock),
    Of("font", kFormatting),
    Of("footer", kBlock | kHost),
    Of("form", kBlock),
    Of("h1", kBlock | kHeading | kHost),
    Of("h2", kBlock | kHeading | kHost),
    Of("h3", kBlock | kHeading | kHost),
    Of("h4", kBlock | kHeading | kHost),
    Of("h5", kBlock | kHeading | kHost),
    Of("h6", kBlock | kHeading | kHost),
    Of("head", kPage | kOfHead),
    Of("header", kBlock | kHost),
    Of("hgroup", kBlock),
    Of("hr", kBlock),
    Of("html", kPage | kOfHead),
    Of("i", kFormatting),
    Of("li", kBlock | kListItem),
    Of("link", kOfHead),
    Of("listing", kBlock),
    Of("main", kBlock | kHost),
    Of("marquee", kSpecial | kScope),
    Of("menu", kBlock),
    Of("meta", kOfHead),
    Of("nav", kBlock | kHost),
    Of("nobr", kFormatting),
    Of("noframes", kOfHead),
    Of("noscript", kSpecial | kOfHead),
    Of("object", kSpecial | kScope),
    Of("ol", kBlock | kList),
    Of("p", kBlock | kThin | kHost),
    Of("plaintext", kBlock),
    Of("pre", kBlock),
    Of("s", kFormatting),
    Of("script", kOfHead),
    Of("search", kBlock),
    Of("section", kBlock | kHost),
    Of("select", kSpecial),
    Of("small", kFormatting),
    Of("span", kHost),
    Of("strike", kFormatting),
    Of("strong", kFormatting),
    Of("style", kOfHead),
    Of("summary", kBlock),
    Of("table", kBlock | kScope | kTable),
    Of("tbody", kSpecial | kRows),
    Of("td", kSpecial | kScope | kCell),
    Of("tfoot", kSpecial | kRows),
    Of("th", kSpecial | kScope | kCell),
    Of("thead", kSpecial | kRows),
    Of("title", kOfHead),
    Of("tr", kSpecial | kRow),
    Of("tt", kFormatting),
    Of("u", kFormatting),
    Of("ul", kBlock | kList),
    Of("xmp", kBlock),
}));

constexpr NameKey kP = MakeNameKey("p");
constexpr NameKey kButton = MakeNameKey("button");
constexpr NameKey kOption = MakeNameKey("option");
constexpr NameKey kForm = MakeNameKey("form");
constexpr NameKey kA = MakeNameKey("a");

// The search goes no further up, so a page with very many open elements takes linear time. Only a
// page that is made to cost time is so deep.
constexpr std::size_t kDeepest = 128;

}  // namespace

std::size_t OpenElements::Deepest() const {
  return open_.size() - std::min(open_.size(), kDeepest);
}

// Closes the nearest element that is `wanted`, with everything open in it. False when there is none
// before an element with one of the traits `barriers`.
template <class Wanted>
bool OpenElements::CloseNearest(Wanted wanted, std::uint16_t barriers, std::size_t from) {
  for (std::size_t i = open_.size(); i > std::max(from, Deepest()); --i) {
    const Element& element = open_[i - 1];
    if (wanted(element)) {
      Cut(i - 1);
      return true;
    }
    if ((element.traits & barriers) != 0) return false;
  }
  return false;
}

// A BUTTON keeps the P around it.
void OpenElements::CloseP(std::size_t from) {
  for (std::size_t i = open_.size(); i > std::max(from, Deepest()); --i) {
    const Element& element = open_[i - 1];
    if (element.name == kP) return Cut(i - 1);
    if ((element.traits & kScope) != 0 || element.name == kButton) return;
  }
}

// Takes out one element, and leaves open what is in it. It leaves a place without a name, so that
// what counts the elements below it goes on to be right.
bool OpenElements::Remove(const NameKey& name, std::size_t from) {
  for (std::size_t i = open_.size(); i > std::max(from, Deepest()); --i) {
    Element& element = open_[i - 1];
    if ((element.traits & kScope) != 0) return false;
    if (element.name != name) continue;
    element = {};
    return true;
  }
  return false;
}

// Takes out a formatting element. SVG and MathML that no special element in it holds end with it;
// formatting elements that end so begin anew with what follows, so they stay.
void OpenElements::EndFormatting(const NameKey& name, std::size_t from) {
  std::size_t keep = open_.size();
  while (keep > std::max(from, Deepest()) && (open_[keep - 1].traits & kSpecial) == 0) --keep;
  if (Remove(name, from)) foreignLimit_ = keep;
}

void OpenElements::DropRemoved(std::size_t from) {
  while (open_.size() > from && open_.back().name == NameKey()) open_.pop_back();
}

// Closes the elements that end where such an element begins.
void OpenElements::CloseBefore(const StartTag& start, std::uint16_t traits, std::size_t from) {
  // A list item ends at the next one of its list.
  if (const auto item = static_cast<std::uint16_t>(traits & (kListItem | kTerm)); item != 0) {
    for (std::size_t i = open_.size(); i > std::max(from, Deepest()); --i) {
      const std::uint16_t other = open_[i - 1].traits;
      if ((other & item) != 0) Cut(i - 1);
      if ((other & (kSpecial | kThin)) == kSpecial) break;
    }
  }
  if ((traits & kEndsP) != 0) CloseP(from);
  if (open_.size() > from) {
    const Element& last = open_.back();
    const bool isHeading = (traits & last.traits & kHeading) != 0;
    if (isHeading || (last.name == kOption && start.name == kOption)) open_.pop_back();
  }
  if (start.name == kA || start.name == kButton) End(start.name, {from, from});
}

// Closes the parts of the innermost table that cannot contain such a part; false when no table is
// open.
bool OpenElements::CloseTableParts(std::uint16_t traits, std::size_t from) {
  // Parts of the same level, and of lower levels.
  const unsigned parts = ((traits & kTableParts) << 1) - 1;
  std::size_t keep = open_.size();
  for (std::size_t i = open_.size(); i > std::max(from, Deepest()); --i) {
    const std::uint16_t other = open_[i - 1].traits;
    if ((other & kTable) != 0) {
      Cut(keep);
      return true;
    }
    if ((other & kTableParts & parts) != 0) keep = i - 1;
  }
  return false;
}

bool OpenElements::IsTable(const Element& element) {
  return (element.traits & kTable) != 0;
}

bool OpenElements::Start(const StartTag& start, const Reach& reach) {
  foreignLimit_ = kNoLimit;
  const std::uint16_t traits = kTraits.Find(start.name, 0);
  if ((traits & kOfHead) == 0) bodyHasBegun_ = true;
  if ((traits & kTableParts) != 0) return CloseTableParts(traits, reach.tables);
  // A table lies in a cell or caption of another, or ends it.
  if ((traits & kTable) != 0) CloseNearest(IsTable, kScope, reach.tables);
  if ((traits & kPage) == 0) CloseBefore(start, traits, reach.all);
  return true;
}

void OpenElements::Push(const StartTag& start) {
  const std::uint16_t traits = kTraits.Find(start.name, 0);
  if (!start.hasContent || (traits & kPage) != 0) return;
  const auto host = static_cast<std::uint16_t>(start.isCustom ? kHost : 0);
  open_.push_back({start.name, static_cast<std::uint16_t>(traits | host)});
}

bool OpenElements::End(const NameKey& name, const Reach& reach) {
  foreignLimit_ = kNoLimit;
  const std::uint16_t traits = kTraits.Find(name, 0);
  const auto isNamed = [&](const Element& element) { return element.name == name; };
  if ((traits & (kTableParts | kTable)) != 0) return CloseNearest(isNamed, kTable, reach.tables);
  if (name == kP) {
    CloseP(reach.all);
  } else if (name == kForm) {
    Remove(name, reach.all);
  } else if ((traits & kHeading) != 0) {
    CloseNearest([](const Element& element) { return (element.traits & kHeading) != 0; }, kScope,
                 reach.all);
  } else if ((traits & kFormatting) != 0) {
    if (!CloseNearest(isNamed, kSpecial, reach.all)) EndFormatting(name, reach.all);
  } else {
    const std::uint16_t barriers = (traits & kListItem) != 0  ? kScope | kList
                                   : (traits & kSpecial) != 0 ? kScope
                                                              : kSpecial;
    CloseNearest(isNamed, barriers, reach.all);
  }
  return true;
}

bool OpenElements::TakeShadowRoot(std::size_t from, bool inBody) {
  if (open_.size() == from) {
    return inBody && bodyHasBegun_ && !std::exchange(bodyHasRoot_, true);
  }
  Element& last = open_.back();
  return (last.traits & kHost) != 0 && !std::exchange(last.hasRoot, true);
}

}  // namespace zvrsit
