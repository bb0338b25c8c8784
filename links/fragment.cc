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

}  // namespace zvrsit
