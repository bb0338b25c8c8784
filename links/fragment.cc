#include "links/fragment.h"

#include <algorithm>

#include "links/url_text.h"
#include "platform/code_page_text.h"

namespace zvrsit {
namespace {

bool IsLeftOut(char c) {
  return c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

std::string_view FragmentOf(std::string_view text, std::string& buffer) {
  std::size_t hash = text.find('#');
  if (hash == text.npos) return {};
  if (platform::HasLeadBytes()) {
    hash = FindMB(text, 0, [](char c) { return c == '#'; });
    if (hash == text.size()) return {};
  }
  std::string_view fragment = text.substr(hash + 1);
  if (std::ranges::any_of(fragment, &IsLeftOut)) {
    buffer = fragment;
    std::erase_if(buffer, &IsLeftOut);
    fragment = buffer;
  }
  fragment = fragment.substr(0, fragment.find(":~:"));
  while (!fragment.empty() && static_cast<unsigned char>(fragment.back()) <= ' ') {
    fragment.remove_suffix(1);
  }
  return fragment;
}

}  // namespace zvrsit
