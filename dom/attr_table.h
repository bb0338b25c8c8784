// Looking up the names of attributes while a page is read.
#pragma once

#include "dom/attr.h"
#include "dom/name_table.h"

namespace zvrsit {

using AttrNameTable = NameTable<Attr, 128>;
extern const AttrNameTable kAttrNameTable;

// Of a name in a text that goes on for at least eight readable bytes.
inline Attr AttrOfPadded(const char* name, std::size_t length) {
  return kAttrNameTable.FindPadded(name, length, Attr::kOther);
}

}  // namespace zvrsit
