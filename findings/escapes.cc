#include "findings/escapes.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "platform/code_page.h"

namespace zvrsit {
namespace {

#if defined(_WIN32)
constexpr bool kEscapesBackslash = false;
#else
constexpr bool kEscapesBackslash = true;
#endif

bool IsUtf8(std::string_view text) {
  return platform::ToUtf8(text) == text;
}

// How many bytes the character at the start of a text that is not empty has; 0 for no character.
std::size_t CharacterLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return IsUtf8(text.substr(0, length)) ? length : 0;
}

bool IsEscape(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  return text.size() >= 4 && text.starts_with("\\x") && kDigits.find(text[2]) != kDigits.npos &&
         kDigits.find(text[3]) != kDigits.npos;
}

bool HoldsEscape(std::string_view text) {
  for (std::size_t at = text.find('\\'); at != text.npos; at = text.find('\\', at + 1)) {
    if (IsEscape(text.substr(at))) return true;
  }
  return false;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0) {
      escaped += fmt::format("\\x{:02X}", static_cast<unsigned char>(text.front()));
    } else if (text.front() == '\\') {
      escaped += "\\\\";
    } else {
      escaped += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return escaped;
}

// Of a character of that many bytes as above.
int CodePointOf(std::string_view character) {
  const auto bits = [character](std::size_t i, int mask) { return character[i] & mask; };
  return character.size() == 1   ? bits(0, 0x7F)
         : character.size() == 2 ? bits(0, 0x1F) << 6 | bits(1, 0x3F)
                                 : bits(0, 0x0F) << 12 | bits(1, 0x3F) << 6 | bits(2, 0x3F);
}

}  // namespace

std::size_t ControlLength(std::string_view text) {
  const auto byte = [text](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
  };
  if (byte(0) == '\r') return byte(1) == '\n' ? 0 : 1;
  if (byte(0) < ' ' || byte(0) == 0x7F) return byte(0) == '\n' || byte(0) == '\t' ? 0 : 1;
  if (byte(0) == 0xC2) return byte(1) >= 0x80 && byte(1) < 0xA0 ? 2 : 0;
  const bool turns = (byte(1) == 0x80 && byte(2) >= 0xAA && byte(2) <= 0xAE) ||
                     (byte(1) == 0x81 && byte(2) >= 0xA6 && byte(2) <= 0xA9);
  return byte(0) == 0xE2 && turns ? 3 : 0;
}

bool IsPlain(std::string_view text) {
  if (platform::CodePage() != platform::kUtf8) return false;
  bool isPlain = true;  // looked at after the loop, so that compilers take 16 bytes at a time
  for (const char c : text) {
    isPlain &= c >= ' ' && c < 0x7F && c != '"' && c != '\\';
  }
  return isPlain;
}

// In another code page every name has its characters.
std::string JsonText(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string converted = platform::ToUtf8(text);
  if (platform::CodePage() != platform::kUtf8) return converted;
  return converted == text && !HoldsEscape(text) ? converted : Escaped(text);
}

std::string TextOfJson(const std::string& text) {
  if (platform::CodePage() != platform::kUtf8 || !HoldsEscape(text)) return text;
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsEscape(std::string_view(text).substr(i))) {
      plain += static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16));
      i += 3;
    } else {
      if (text[i] == '\\') ++i;
      plain += text[i];
    }
  }
  return plain;
}

std::string LineText(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  std::string line;
  for (const char byte : text) {
    const auto value = static_cast<unsigned char>(byte);
    if (byte == '\n') {
      line += "\\n";
    } else if (byte == '\t') {
      line += "\\t";
    } else if (byte == '\\' && kEscapesBackslash) {
      line += "\\\\";
    } else if (value < 0x20 || value == 0x7F) {
      line += fmt::format("\\x{:02x}", value);
    } else {
      line += byte;
    }
  }
  return platform::CodePage() == platform::kUtf8 ? WithoutControls(std::move(line)) : line;
}

std::string WithoutControls(std::string text) {
  std::string shown;
  std::size_t copied = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= ' ' && c < 0x7F) continue;
    const std::size_t length = ControlLength(std::string_view(text).substr(i));
    if (length == 0) continue;
    shown += std::string_view(text).substr(copied, i - copied);
    shown += fmt::format("\\u{:04x}", CodePointOf(std::string_view(text).substr(i, length)));
    copied = i + length;
  }
  return copied == 0 ? text : shown + text.substr(copied);
}

std::string CsvField(std::string_view text) {
  constexpr std::string_view kCalculated = "=+-@\t\r'";
  static constexpr Replacements kQuote{{'"', "\"\""}};
  const bool isGuarded = !text.empty() && kCalculated.find(text.front()) != kCalculated.npos;
  const std::string field = (isGuarded ? "'" : "") + kQuote.In(text);
  return text.find_first_of(",\"\r\n") == text.npos ? field : "\"" + field + "\"";
}

std::string XmlText(std::string_view text) {
  return XmlMarkup(platform::ToUtf8(LineText(text)));
}

// Two code points that are no characters cannot stand in XML: U+FFFE and U+FFFF.
std::string XmlMarkup(std::string_view utf8) {
  static constexpr Replacements kMarkup{
      {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
  std::string text = kMarkup.In(utf8);
  for (std::size_t at = 0; (at = text.find("\xEF\xBF", at)) != text.npos; at += 3) {
    if (text[at + 2] == '\xBE' || text[at + 2] == '\xBF') text[at + 2] = '\xBD';
  }
  return text;
}

}  // namespace zvrsit
