// Attributes by name and in sets, while a page is read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "dom/attr.h"
#include "dom/name_table.h"

namespace zvrsit {

using AttrNameTable = NameTable<Attr, 128>;
extern const AttrNameTable kAttrNameTable;

// The number of a name in a text with at least eight readable bytes from there on.
inline Attr AttrOfPadded(const char* name, std::size_t length) {
  return kAttrNameTable.FindPadded(name, length, Attr::kOther);
}

class AttrSet {
 public:
  constexpr AttrSet() = default;
  constexpr AttrSet(std::initializer_list<Attr> attrs) {
    for (const Attr attr : attrs) bits_ |= BitOf(attr);
  }
  constexpr bool contains(Attr attr) const { return (bits_ & BitOf(attr)) != 0; }
  constexpr bool empty() const { return bits_ == 0; }

 private:
  static constexpr std::uint64_t BitOf(Attr attr) {
    return std::uint64_t{1} << static_cast<std::size_t>(attr);
  }
  static_assert(kAttrCount <= 64);

  std::uint64_t bits_ = 0;
};

}  // namespace zvrsit
