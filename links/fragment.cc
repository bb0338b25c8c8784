#include "links/fragment.h"

#include "links/url_text.h"
#include "util/ascii.h"

namespace zvrsit {

std::string FragmentOf(std::string_view text) {
  std::string fragment;
  const std::size_t hash = FindMB(text, 0, [](char c) { return c == '#'; });
  if (hash == text.size()) return fragment;
  for (const char c : text.substr(hash + 1)) {
    if (c != '\t' && c != '\n' && c != '\r') fragment += c;
  }
  if (const auto directive = fragment.find(":~:"); directive != fragment.npos) {
    fragment.erase(directive);
  }
  while (!fragment.empty() && static_cast<unsigned char>(fragment.back()) <= ' ') {
    fragment.pop_back();
  }
  return fragment;
}

bool NamesAnElement(std::string_view fragment) {
  if (fragment.empty() || fragment.front() == '/' || fragment.front() == '!') return false;
  return !EqualsLower(fragment, "top");
}

std::string DecodedFragment(std::string_view fragment) {
  std::string decoded;
  for (std::size_t i = 0; i < fragment.size(); ++i) {
    if (fragment[i] == '%' && i + 2 < fragment.size()) {
      const int high = HexValue(fragment[i + 1]);
      const int low = HexValue(fragment[i + 2]);
      if (high >= 0 && low >= 0) {
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
        continue;
      }
    }
    decoded += fragment[i];
  }
  return decoded;
}

}  // namespace zvrsit
