// The encoding that a page declares about itself.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit {

// The label that a byte-order mark stands for, and the length of the mark; an empty label when
// there is none.
struct ByteOrderMark {
  std::string_view label;
  std::size_t length = 0;
};
ByteOrderMark FindByteOrderMark(std::string_view page);

// The label that the page declares, in lower case; "" when it declares none. It comes from the
// first META with CHARSET, or with HTTP-EQUIV "content-type" and a charset in its CONTENT. This
// META stands in the first 1024 bytes, or after them in the head. Without one it comes from an XML
// declaration. A META with an unknown label does not count. A page that can be read so far is not
// UTF-16, so such a label means UTF-8, as in browsers.
std::string PrescanCharset(std::string_view page);

}  // namespace zvrsit
