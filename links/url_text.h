// URLs as texts: their parts, and a relative one joined to another, after the URL Standard
// (url.spec.whatwg.org). Texts are in the ANSI code page; `\` counts as "/" everywhere.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/code_page_text.h"
#include "util/ascii.h"

namespace zvrsit {

inline bool IsSlash(char c) {
  return c == '/' || c == '\\';
}

// Index of the first single-byte character that `matches`, or the size.
template <class Predicate>
std::size_t FindMB(std::string_view text, std::size_t from, Predicate matches) {
  const std::array<bool, 256>& isLead = platform::LeadBytes();
  for (std::size_t i = from; i < text.size(); ++i) {
    if (isLead[static_cast<unsigned char>(text[i])]) {
      ++i;
    } else if (matches(text[i])) {
      return i;
    }
  }
  return text.size();
}

// The value of a hexadecimal digit, else -1.
inline int HexValue(char c) {
  if (IsAsciiDigit(c)) return c - '0';
  const char lower = LowerAscii(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The scheme of an absolute URL, without its ":"; empty when the target is relative.
std::string_view SchemeOf(std::string_view target);
// Whether a scheme is that of pages.
inline bool IsHttp(std::string_view scheme) {
  return EqualsLower(scheme, "http") || EqualsLower(scheme, "https");
}
std::string_view WithoutQueryAndFragment(std::string_view target);
// How many dots a segment means: 1 for ".", 2 for "..", where each dot may be written "%2e"; else
// 0.
int DotsOf(std::string_view segment);

// Appends a part of a URL with its percent-encoded bytes decoded. They are UTF-8, as in browsers,
// whatever the code page. False where the part is none: its bytes are appended as they are.
bool AppendPercentDecoded(std::string_view part, std::string& out);

// Appends a `\` path, or a part of one, to a URL. What has a meaning in URLs is percent-encoded.
void AppendPathToUrl(std::string_view path, std::string& url);

// A relative target joined to the absolute URL (or "//host" URL) `base`; false when that has no
// path to join to.
bool JoinToUrl(std::string_view base, std::string_view target, std::string& out);

}  // namespace zvrsit
