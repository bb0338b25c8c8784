#include "exports/picture_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "findings/escapes.h"

namespace zvrsit {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

// Of a character of UTF-8, by its first byte; 1 for a byte within one.
std::size_t LengthAt(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return std::min(length, text.size() - at);
}

// In parts of the font's size. Characters of three bytes are mostly those of East Asia.
double WidthOf(std::string_view character) {
  constexpr std::string_view kNarrow = "ijl.,:;'|!()[]/ ";
  if (character.size() > 1) return character.size() == 2 ? 0.65 : 1;
  const char c = character.front();
  if (kNarrow.find(c) != kNarrow.npos) return 0.35;
  if (c == 'm' || c == 'w' || c == 'M' || c == 'W' || c == '@' || c == '%') return 0.95;
  return c >= 'A' && c <= 'Z' ? 0.72 : 0.6;
}

std::string InOneLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace_if(
      line, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
  return WithoutControls(std::move(line));
}

}  // namespace

std::string PictureText(std::string_view text) {
  return XmlMarkup(InOneLine(text));
}

std::string Counted(std::int64_t count, std::string_view one, std::string_view many) {
  std::string digits = std::to_string(count);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  if (count == 1) return fmt::format("{} {}", digits, one);
  return many.empty() ? fmt::format("{} {}s", digits, one) : fmt::format("{} {}", digits, many);
}

double TextWidth(std::string_view text, double fontSize) {
  double width = 0;
  for (std::size_t at = 0, length = 0; at < text.size(); at += length) {
    length = LengthAt(text, at);
    width += WidthOf(text.substr(at, length));
  }
  return width * fontSize;
}

std::string FitText(std::string_view text, double width, double fontSize) {
  constexpr std::size_t kLeastLetters = 3;
  std::string line = InOneLine(text);
  if (TextWidth(line, fontSize) <= width) return line;
  std::size_t end = 0;
  std::size_t letters = 0;
  double used = fontSize;  // by the ellipsis
  while (end < line.size()) {
    const std::size_t length = LengthAt(line, end);
    used += WidthOf(std::string_view(line).substr(end, length)) * fontSize;
    if (used > width) break;
    end += length;
    ++letters;
  }
  return letters < kLeastLetters ? "" : line.substr(0, end).append(kEllipsis);
}

void AddText(std::string& svg, std::string_view look, double x, double y, std::string_view text) {
  if (text.empty()) return;
  const std::string attribute = look.empty() ? "" : fmt::format(" class=\"{}\"", look);
  svg += fmt::format("<text{} x=\"{:.1f}\" y=\"{:.1f}\">{}</text>\n", attribute, x, y,
                     PictureText(text));
}

}  // namespace zvrsit
