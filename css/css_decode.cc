#include "css/css_decode.h"

#include "platform/code_page_text.h"
#include "platform/utf8.h"

namespace zvrsit {
namespace {

constexpr size_t kDeclarationLimit = 1024;

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// The label of the @charset rule at the beginning; empty when there is none in the exact form.
std::string_view DeclaredLabel(std::string_view bytes) {
  constexpr std::string_view kRule = "@charset \"";
  bytes = bytes.substr(0, kDeclarationLimit);
  if (!StartsWith(bytes, kRule)) return {};
  const size_t end = bytes.find('"', kRule.size());
  if (end == std::string_view::npos || bytes.substr(end, 2) != "\";") return {};
  return bytes.substr(kRule.size(), end - kRule.size());
}

// A rule that could be read as ASCII does not stand in UTF-16, whatever it says.
std::string_view WithoutUtf16(std::string_view label) {
  std::string lower(label);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c | 0x20);
  }
  const size_t start = lower.find_first_not_of(" \t\n\f\r");
  if (start != std::string::npos && lower.compare(start, 6, "utf-16") == 0) return "utf-8";
  return label;
}

std::string_view Converted(std::string_view bytes, std::string_view label, std::string& buffer) {
  if (platform::IsCodePageUtf8(label) && platform::IsValidUtf8(bytes)) return bytes;
  platform::ConvertToCodePage(bytes, label, buffer);
  return buffer;
}

}  // namespace

std::string_view DecodeSheet(std::string_view bytes, std::string& buffer) {
  struct Mark {
    std::string_view bytes;
    const char* label;
  };
  static constexpr Mark kMarks[] = {
      {"\xEF\xBB\xBF", "utf-8"}, {"\xFE\xFF", "utf-16be"}, {"\xFF\xFE", "utf-16le"}};
  for (const Mark& mark : kMarks) {
    if (!StartsWith(bytes, mark.bytes)) continue;
    return Converted(bytes.substr(mark.bytes.size()), mark.label, buffer);
  }
  const std::string_view label = WithoutUtf16(DeclaredLabel(bytes));
  // Converting nothing tells whether the label is known.
  const bool isKnown = !label.empty() && platform::ConvertToCodePage({}, label, buffer);
  if (isKnown) return Converted(bytes, label, buffer);
  return platform::CodePage() == platform::kUtf8 ? Converted(bytes, "utf-8", buffer) : bytes;
}

}  // namespace zvrsit
