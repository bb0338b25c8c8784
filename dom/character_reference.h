// Character references of HTML: "&amp;", "&#38;", "&#x26;".
#pragma once

#include <cstddef>
#include <string_view>

namespace zvrsit {

// What a reference stands for; a length of 0 when there is none.
struct CharacterReference {
  std::size_t length = 0;  // bytes of the text that it takes up
  char32_t first = 0;
  char32_t second = 0;  // 0 for none
};

// The reference that `text` begins with, at its "&". In an attribute value a reference without ";"
// does not count before "=" or a letter or digit.
CharacterReference MatchCharacterReference(std::string_view text, bool inAttribute);

}  // namespace zvrsit
