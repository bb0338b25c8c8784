#include "links/server_code.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "util/ascii.h"

namespace zvrsit {
namespace {

constexpr auto kNotFound = std::string_view::npos;

// No tag or expression is longer. The limit makes a page with very many beginnings take linear
// time.
constexpr std::size_t kLongest = 1000;

bool IsOfName(char c) {
  return IsAsciiLetter(c) || IsAsciiDigit(c) || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

// The end of `mark` from `at` on, or the end of the text.
std::size_t After(std::string_view text, std::string_view mark, std::size_t at) {
  const std::size_t found = text.find(mark, at);
  return found == kNotFound ? text.size() : found + mark.size();
}

// The end of a quoted text that begins at `at`. A backslash hides the byte after it.
std::size_t AfterQuoted(std::string_view text, std::size_t at) {
  const char quote = text[at];
  for (std::size_t i = at + 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == quote) {
      return i + 1;
    }
  }
  return text.size();
}

// The end of a here-document that begins at `at` with "<<<": the line that begins with its label,
// perhaps after white space. Without a here-document, the place after the "<<<".
std::size_t AfterHereDocument(std::string_view text, std::size_t at) {
  const std::size_t none = at + 3;
  std::size_t begin = text.find_first_not_of(" \t", none);
  if (begin == kNotFound) return text.size();
  if (text[begin] == '"' || text[begin] == '\'') ++begin;
  std::size_t end = begin;
  while (end < text.size() && IsOfName(text[end])) ++end;
  const std::string_view label = text.substr(begin, end - begin);
  if (label.empty() || IsAsciiDigit(label.front())) return none;
  for (std::size_t line = text.find('\n', end); line != kNotFound; line = text.find('\n', line)) {
    line = text.find_first_not_of(" \t", line + 1);
    if (line == kNotFound) break;
    const std::size_t after = line + label.size();
    if (text.substr(line, label.size()) == label &&
        (after == text.size() || !IsOfName(text[after]))) {
      return after;
    }
  }
  return text.size();
}

// The end of a comment to the end of the line, which "?>" ends too.
std::size_t AfterLineComment(std::string_view text, std::size_t at) {
  const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
  return std::min(text.substr(0, end).find("?>", at), end);
}

// The end of PHP code that begins at `at`, after "<?": a "?>" outside of strings and comments.
std::size_t AfterPhp(std::string_view text, std::size_t at) {
  while (at < text.size()) {
    const std::string_view rest = text.substr(at);
    if (rest.starts_with("?>")) return at + 2;
    if (rest.front() == '"' || rest.front() == '\'' || rest.front() == '`') {
      at = AfterQuoted(text, at);
    } else if (rest.starts_with("/*")) {
      at = After(text, "*/", at + 2);
    } else if (rest.starts_with("//") || (rest.front() == '#' && !rest.starts_with("#["))) {
      at = AfterLineComment(text, at);
    } else if (rest.starts_with("<<<")) {
      at = AfterHereDocument(text, at);
    } else {
      ++at;
    }
  }
  return at;
}

// The end of a tag of a tag library that begins at `at`; `at` when none does.
std::size_t AfterLibraryTag(std::string_view text, std::size_t at) {
  text = text.substr(0, at + std::min(kLongest, text.size() - at));
  std::size_t name = at + 1;
  if (name < text.size() && text[name] == '/') ++name;
  std::size_t colon = name;
  while (colon < text.size() && IsOfName(text[colon])) ++colon;
  const std::string_view prefix = text.substr(name, colon - name);
  if (prefix.empty() || prefix == "svg" || colon + 1 >= text.size() || text[colon] != ':' ||
      !IsAsciiLetter(text[colon + 1])) {
    return at;
  }
  for (std::size_t i = colon; i < text.size(); ++i) {
    if (text[i] == '>') return i + 1;
    if (text[i] == '"' || text[i] == '\'') {
      const std::size_t end = text.find(text[i], i + 1);
      if (end == kNotFound) return at;
      i = end;
    }
  }
  return at;
}

// The end of an expression that begins at `at`; `at` when none does, or it has no end.
std::size_t AfterExpression(std::string_view text, std::size_t at) {
  struct Marks {
    std::string_view begin;
    std::string_view end;
  };
  constexpr std::array<Marks, 5> kMarks{
      {{"${", "}"}, {"#{", "}"}, {"{{", "}}"}, {"{%", "%}"}, {"{!!", "!!}"}}};
  const std::string_view rest = text.substr(at, kLongest);
  for (const Marks& marks : kMarks) {
    if (!rest.starts_with(marks.begin)) continue;
    // It must end on the same line. So braces of scripts and styles do not hide the text after
    // them.
    const std::string_view line = rest.substr(0, rest.find('\n'));
    const std::size_t end = line.find(marks.end, marks.begin.size());
    if (end != kNotFound) return at + end + marks.end.size();
  }
  return at;
}

// The end of server code that begins at `at`; `at` when none does.
std::size_t AfterCode(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  if (rest.starts_with("<?xml ")) return After(text, "?>", at);
  if (rest.starts_with("<?")) return AfterPhp(text, at + 2);
  if (rest.starts_with("<%--")) return After(text, "--%>", at + 4);
  if (rest.starts_with("<%")) return After(text, "%>", at + 2);
  return rest.front() == '<' ? AfterLibraryTag(text, at) : AfterExpression(text, at);
}

}  // namespace

void HideServerCode(std::string& page) {
  constexpr std::string_view kBeginnings = "<$#{";
  for (std::size_t at = 0; (at = page.find_first_of(kBeginnings, at)) != kNotFound;) {
    const std::size_t end = AfterCode(page, at);
    std::fill(page.begin() + static_cast<std::ptrdiff_t>(at),
              page.begin() + static_cast<std::ptrdiff_t>(end), kServerCode);
    at = std::max(end, at + 1);
  }
}

}  // namespace zvrsit
