#include "dom/double_byte.h"

#include "platform/code_page_text.h"

namespace zvrsit {

void MaskTrailBytes(const char* text, std::size_t length, char* masked) {
  // The lowest trail byte: 0x31 in 1361 (Johab), 0x40 or above in the others.
  const unsigned char lowest = platform::CodePage() == 1361 ? 0x31 : 0x40;
  const auto& leads = platform::LeadBytes();
  for (std::size_t i = 0; i < length; ++i) {
    masked[i] = text[i];
    if (!leads[static_cast<unsigned char>(text[i])] || i + 1 == length) continue;
    if (static_cast<unsigned char>(text[i + 1]) >= lowest) masked[++i] = '\x80';
  }
}

}  // namespace zvrsit
