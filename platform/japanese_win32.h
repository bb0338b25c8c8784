// Text of the Japanese charsets that Windows has no page for on every machine, or only a part of.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit::platform {

// Decodes EUC-JP and ISO-2022-JP. Rows and cells mean what they mean in page 932, with the vendor
// characters that pages on the web use. Characters of three bytes in EUC-JP mean what they mean in
// page 20932. A malformed character becomes U+FFFD; an ASCII byte that follows it is kept.
std::wstring WideOfEucJp(std::string_view bytes);
std::wstring WideOfIso2022Jp(std::string_view bytes);

}  // namespace zvrsit::platform
