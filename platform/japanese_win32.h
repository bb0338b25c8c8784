// Text of the Japanese charsets that Windows has no page for on every machine, or only a part of.
#pragma once

#include <string>
#include <string_view>

namespace zvrsit::platform {

// Decodes EUC-JP and ISO-2022-JP. Rows and cells mean what page 932 has for them, with the
// characters of makers that pages on the web use; three-byte characters of EUC-JP what page 20932
// has. A malformed character becomes U+FFFD; an ASCII byte that follows it is kept.
std::wstring WideOfEucJp(std::string_view bytes);
std::wstring WideOfIso2022Jp(std::string_view bytes);

}  // namespace zvrsit::platform
