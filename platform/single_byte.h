// Searching and replacing single-byte characters of text in the code page. A double-byte character
// is stepped over whole: its lead byte is not compared, its trail byte not looked at. A lead byte
// that ends the text stands alone.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/code_page_text.h"

namespace zvrsit::platform {

// Calls `visit(position)` for each single-byte character from byte `start` on, which must not be a
// trail byte.
template <class Visit>
void ForEachSingleByte(std::string_view text, std::size_t start, Visit visit) {
  const auto& isLead = LeadBytes();
  for (std::size_t i = start; i < text.size(); ++i) {
    if (isLead[static_cast<unsigned char>(text[i])]) {
      ++i;
    } else {
      visit(i);
    }
  }
}

inline char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

inline bool IsAsciiLetter(char c) {
  return LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z';
}

// Equal except for the case of single-byte ASCII letters.
inline bool EqualButForCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  const auto& isLead = LeadBytes();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (isLead[static_cast<unsigned char>(a[i])]) {
      if (a.substr(i, 2) != b.substr(i, 2)) return false;
      ++i;
    } else if (LowerAscii(a[i]) != LowerAscii(b[i])) {
      return false;
    }
  }
  return true;
}

// The position of the last single-byte `wanted`, or npos.
inline std::size_t FindLastSingleByte(std::string_view text, char wanted) {
  if (!HasLeadBytes()) return text.rfind(wanted);
  std::size_t last = std::string_view::npos;
  ForEachSingleByte(text, 0, [&](std::size_t i) {
    if (text[i] == wanted) last = i;
  });
  return last;
}

// Replaces every single-byte `from` by `to`, from byte `start` on.
inline void ReplaceSingleByte(std::string& text, std::size_t start, char from, char to) {
  if (!HasLeadBytes()) {
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), from, to);
    return;
  }
  ForEachSingleByte(text, start, [&](std::size_t i) {
    if (text[i] == from) text[i] = to;
  });
}

// Where the last component of a `\` path begins: after the last `\`, or after the colon of a
// drive.
inline std::size_t LastComponent(std::string_view path) {
  const std::size_t separator = FindLastSingleByte(path, '\\');
  if (separator != std::string_view::npos) return separator + 1;
  return path.size() >= 2 && path[1] == ':' && IsAsciiLetter(path[0]) ? 2 : 0;
}

}  // namespace zvrsit::platform
