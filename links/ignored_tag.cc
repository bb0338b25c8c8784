#include "links/ignored_tag.h"

#include <algorithm>

#include "util/ascii.h"

namespace zvrsit {
namespace {

// The text from the name of the last tag that begins before `offset`; empty for none.
std::string_view TagBefore(std::string_view text, std::size_t offset) {
  for (std::size_t end = std::min(offset, text.size()); end > 0;) {
    const std::size_t sign = text.rfind('<', end - 1);
    if (sign == text.npos) break;
    if (sign + 1 < text.size() && IsAsciiLetter(text[sign + 1])) return text.substr(sign + 1);
    end = sign;
  }
  return {};
}

// Takes the value of an attribute off, if there is one: `rest` begins behind its name.
void SkipValue(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\f\r"), rest.size()));
  if (!rest.starts_with('=')) return;
  rest.remove_prefix(1);
  rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\f\r"), rest.size()));
  const bool isQuoted = rest.starts_with('"') || rest.starts_with('\'');
  const std::size_t end = isQuoted ? rest.find(rest.front(), 1) : rest.find_first_of(" \t\n\f\r>");
  rest.remove_prefix(std::min(isQuoted && end != rest.npos ? end + 1 : end, rest.size()));
}

}  // namespace

bool IsIgnoredAt(std::string_view text, std::size_t offset) {
  const std::size_t begin = offset - std::min(offset, kLongestTag);
  std::string_view rest =
      TagBefore(text.substr(0, offset + kLongestTag).substr(begin), offset - begin);
  rest.remove_prefix(std::min(rest.find_first_of(" \t\n\f\r/>"), rest.size()));
  while (true) {
    rest.remove_prefix(std::min(rest.find_first_not_of(" \t\n\f\r/"), rest.size()));
    if (rest.empty() || rest.front() == '>') return false;
    const std::string_view name = rest.substr(0, rest.find_first_of(" \t\n\f\r/>=", 1));
    if (EqualsLower(name, kIgnoreAttribute)) return true;
    rest.remove_prefix(name.size());
    SkipValue(rest);
  }
}

}  // namespace zvrsit
