// The encoding that a page declares about itself.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// The label that a byte-order mark stands for and the length of the mark; an empty label without.
struct ByteOrderMark {
  std::string_view label;
  std::size_t length = 0;
};
ByteOrderMark FindByteOrderMark(std::string_view page);

// The label of the first META with CHARSET, or with HTTP-EQUIV "content-type" and a charset in its
// CONTENT, within the first 1024 bytes or behind them in the head; else that of an XML declaration;
// in lower case, "" without. A META with a label that is not known counts as none.
// A page that can be read this far is not UTF-16: such a label means UTF-8, as in browsers.
std::string PrescanCharset(std::string_view page);

}  // namespace zvrsit
