#include "util/mb_string.h"

#include <algorithm>

#include "platform/code_page.h"

namespace zvrsit {
namespace {

char UpperAscii(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}
char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// Replaces each single-byte character by what `change` makes of it.
template <class Change>
void ChangeSingleBytes(std::string& text, Change change) {
  if (!platform::HasLeadBytes()) {
    std::transform(text.begin(), text.end(), text.begin(), change);
    return;
  }
  const auto& isLead = platform::LeadBytes();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isLead[static_cast<unsigned char>(text[i])]) {
      ++i;
    } else {
      text[i] = change(text[i]);
    }
  }
}

}  // namespace

std::size_t FindChar(std::string_view text, char wanted) {
  return text.find(wanted);
}
std::size_t FindHash(std::string_view text) {
  return FindChar(text, '#');
}
std::size_t FindQuery(std::string_view text) {
  return FindChar(text, '?');
}

std::size_t FindLastCharMB(std::string_view text, char wanted) {
  if (!platform::HasLeadBytes()) return text.rfind(wanted);
  const auto& isLead = platform::LeadBytes();
  std::size_t last = std::string_view::npos;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isLead[static_cast<unsigned char>(text[i])]) {
      ++i;
    } else if (text[i] == wanted) {
      last = i;
    }
  }
  return last;
}

std::size_t FindLastHashMB(std::string_view text) {
  return FindLastCharMB(text, '#');
}
std::size_t FindLastBackslashMB(std::string_view text) {
  return FindLastCharMB(text, '\\');
}

int ToUpperMB(std::string& text) {
  ChangeSingleBytes(text, UpperAscii);
  return 0;
}

int ToLowerMB(std::string& text) {
  ChangeSingleBytes(text, LowerAscii);
  return 0;
}

int ReplaceCharMB(std::string& text, char from, char to) {
  ChangeSingleBytes(text, [from, to](char c) { return c == from ? to : c; });
  return 0;
}

}  // namespace zvrsit
