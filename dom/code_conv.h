// From the bytes of a page to text in the process's code page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/api.h"

namespace zvrsit {

// Converts one page after the other; the buffer stays with the object.
class ZVRSIT_API CodeConv {
 public:
  // Converts `size` bytes at `top`. With `charset` 0 the encoding of the page is, in this order:
  //   1. what a byte-order mark says (UTF-8, UTF-16); the mark is left out of the text;
  //   2. what the head declares (META, XML declaration), as browsers look for it;
  //   3. the code page. Where that is UTF-8 and the bytes are not: UTF-8 all the same when at least
  //      half of the sequences beyond ASCII are well-formed (a page with a flaw), else
  //      windows-1252 (a page from before UTF-8), as in browsers.
  // Any other `charset` is the number of the page's code page. Bytes already in the code page are
  // taken as they are, except that malformed UTF-8 becomes U+FFFD.
  // False when `top` is null, the page or its text is larger than 2^31-1 bytes, or `charset` is
  // not known; then text() is null.
  bool Import(const char* top, std::size_t size, int charset);

  // The text, good until the next Import. If nothing had to be converted, it lies in the bytes
  // given to Import and ends where they end; these bytes must be kept as long as it is used. Else
  // kTextPadding zeros follow it.
  const char* text() const { return text_; }
  std::size_t length() const { return length_; }

  // The label of the encoding that the page was read in; "" for a code page that has none.
  const std::string& charset() const { return charset_; }

  // Whether the text is an unchanged part of the page. Then a byte offset in the text plus
  // textOffset() is an offset in the page.
  bool borrowed() const { return borrowed_; }
  std::size_t textOffset() const { return textOffset_; }

 private:
  // Each imports `page` from `skip` on, or gives false when it does not know the label.
  ZVRSIT_LOCAL bool ImportLabelled(std::string_view page, std::string_view label, std::size_t skip);
  ZVRSIT_LOCAL bool ImportOwnPage(std::string_view page, std::size_t skip);
  ZVRSIT_LOCAL bool ImportUndeclared(std::string_view page);
  ZVRSIT_LOCAL bool Convert(std::string_view bytes, std::string_view label);

  std::string converted_;
  std::string charset_;
  const char* text_ = nullptr;
  std::size_t length_ = 0;
  std::size_t textOffset_ = 0;
  bool borrowed_ = false;
};

}  // namespace zvrsit
