// Decoding bytes to code points through iconv.
#pragma once

#include <iconv.h>

#include <array>
#include <memory>
#include <string_view>

#include "platform/pair_decoder.h"

namespace zvrsit::platform {

struct IconvCloser {
  void operator()(void* descriptor) const { ::iconv_close(descriptor); }
};
using Iconv = std::unique_ptr<void, IconvCloser>;

// Null when the system does not know one of the two names.
Iconv OpenIconv(const char* to, const char* from);

// The name under which iconv knows char32_t of this machine.
extern const char* const kCodePointCharset;

// What each byte of a single-byte charset means; U+FFFD where it means nothing. Bytes 0x80 to 0x9F
// without a meaning are the control characters of the same number, as on Windows and in browsers.
using ByteMeanings = std::array<char32_t, 256>;
const ByteMeanings& MeaningsOf(const char* charset);

// Decodes text in a double-byte code page and hands the code points to `sink`, piece by piece. A
// malformed part becomes U+FFFD: one byte when an ASCII byte follows or it could begin no
// character, else two. False when the system does not know the page.
bool DecodeByIconv(const char* charset, std::string_view bytes, const CodePointSink& sink);

}  // namespace zvrsit::platform
