// Decoding text of the charsets that have more than one byte a character, after the decoders of the
// Encoding Standard (encoding.spec.whatwg.org, sections 10 to 13).
#pragma once

#include <functional>
#include <string_view>

namespace zvrsit::platform {

struct Charset;

using CodePointSink = std::function<void(std::u32string_view)>;

// Hands the code points to `sink`, piece by piece. A malformed character becomes U+FFFD. An ASCII
// byte inside it counts as itself, except in ISO-2022-JP. `charset` is of kind kDoubleByte, kEucJp
// or kIso2022Jp. False when the system does not know it.
bool DecodePairs(const Charset& charset, std::string_view bytes, const CodePointSink& sink);

}  // namespace zvrsit::platform
