#include "css/css_decode.h"

#include "dom/charset_prescan.h"
#include "platform/code_page_text.h"
#include "platform/utf8.h"
#include "util/ascii.h"

namespace zvrsit {
namespace {

constexpr size_t kDeclarationLimit = 1024;

// The label of the @charset rule at the beginning; empty when there is none in the exact form.
std::string_view LabelOfRule(std::string_view bytes) {
  constexpr std::string_view kRule = "@charset \"";
  bytes = bytes.substr(0, kDeclarationLimit);
  if (!bytes.starts_with(kRule)) return {};
  const size_t end = bytes.find('"', kRule.size());
  if (end == std::string_view::npos || bytes.substr(end, 2) != "\";") return {};
  return bytes.substr(kRule.size(), end - kRule.size());
}

// A sheet that could be read as ASCII is not UTF-16, whatever it says.
std::string_view WithoutUtf16(std::string_view label) {
  std::string lower(label);
  LowerAsciiLetters(lower);
  const size_t start = lower.find_first_not_of(" \t\n\f\r");
  if (start != std::string::npos && lower.compare(start, 6, "utf-16") == 0) return "utf-8";
  return label;
}

// Converting nothing tells whether a label is known.
bool IsKnown(std::string_view label) {
  std::string nothing;
  return !label.empty() && platform::ConvertToCodePage({}, label, nothing);
}

std::string_view Converted(std::string_view bytes, std::string_view label, std::string& buffer) {
  if (platform::IsCodePageUtf8(label) && platform::IsValidUtf8(bytes)) return bytes;
  platform::ConvertToCodePage(bytes, label, buffer);
  return buffer;
}

}  // namespace

std::string_view DeclaredCharset(std::string_view bytes) {
  if (const ByteOrderMark mark = FindByteOrderMark(bytes); mark.length > 0) return mark.label;
  const std::string_view label = WithoutUtf16(LabelOfRule(bytes));
  return IsKnown(label) ? label : std::string_view();
}

std::string_view DecodeSheet(std::string_view bytes, std::string_view charset,
                             std::string& buffer) {
  const std::string_view declared = DeclaredCharset(bytes);
  bytes.remove_prefix(FindByteOrderMark(bytes).length);
  const std::string_view label = declared.empty() ? WithoutUtf16(charset) : declared;
  if (IsKnown(label)) return Converted(bytes, label, buffer);
  return platform::CodePage() == platform::kUtf8 ? Converted(bytes, "utf-8", buffer) : bytes;
}

bool DependsOnCharset(std::string_view bytes) {
  return platform::AsciiPrefix(bytes) < bytes.size() && DeclaredCharset(bytes).empty();
}

}  // namespace zvrsit
