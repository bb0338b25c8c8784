// A text as the tokenizer and a document in place need it, for tests.
#pragma once

#include <string>
#include <string_view>

#include "dom/byte_search.h"

namespace zvrsit::test {

// The text with the zeros behind it.
inline std::string Padded(std::string_view text) {
  return std::string(text) + std::string(kTextPadding, '\0');
}

}  // namespace zvrsit::test
