#include "css/css_tokenizer.h"

#include <algorithm>
#include <iterator>

#include "platform/code_page_text.h"

namespace zvrsit {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
// The lowest second byte of a double-byte character in any of the code pages. A lead byte before a
// lower byte is a character by itself. So a damaged character does not hide a quote or a line end.
constexpr int kLowestTrailByte = 0x31;
constexpr int kMostHexDigits = 6;

bool IsNewline(int c) {
  return c == '\n' || c == '\r' || c == '\f';
}
bool IsWhitespace(int c) {
  return c == ' ' || c == '\t' || IsNewline(c);
}
bool IsDigit(int c) {
  return c >= '0' && c <= '9';
}
bool IsLetter(int c) {
  return (c | 0x20) >= 'a' && (c | 0x20) <= 'z' && c > 0;
}

int HexDigit(int c) {
  if (IsDigit(c)) return c - '0';
  const int lower = c | 0x20;
  return c > 0 && lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// NUL stands for U+FFFD, which may begin a name.
bool IsNameStart(int c) {
  return IsLetter(c) || c == '_' || c >= 0x80 || c == 0;
}
bool IsNameCharacter(int c) {
  return IsNameStart(c) || IsDigit(c) || c == '-';
}

bool IsNonPrintable(int c) {
  return (c >= 1 && c <= 8) || c == 0x0B || (c >= 0x0E && c <= 0x1F) || c == 0x7F;
}

size_t CharacterLength(std::string_view text, size_t position,
                       const std::array<bool, 256>& leadBytes) {
  if (!leadBytes[static_cast<unsigned char>(text[position])]) return 1;
  if (position + 1 >= text.size()) return 1;
  return static_cast<unsigned char>(text[position + 1]) >= kLowestTrailByte ? 2 : 1;
}

struct Escape {
  size_t end;          // after the escape
  bool isHex;          // else the character that follows the backslash stands for itself
  char32_t codePoint;  // of a hexadecimal escape
};

// Reads the escape whose backslash is at `position`.
Escape ReadEscape(std::string_view text, size_t position, const std::array<bool, 256>& leadBytes) {
  const size_t start = position + 1;
  size_t at = start;
  char32_t codePoint = 0;
  while (at < text.size() && at < start + kMostHexDigits && HexDigit(text[at]) >= 0) {
    codePoint = codePoint * 16 + static_cast<char32_t>(HexDigit(text[at++]));
  }
  if (at == start) {
    return {at < text.size() ? at + CharacterLength(text, at, leadBytes) : at, false, 0};
  }
  if (at < text.size() && IsWhitespace(text[at])) {
    at += text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 2 : 1;
  }
  const bool isSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (codePoint == 0 || codePoint > 0x10FFFF || isSurrogate) codePoint = kReplacement;
  return {at, true, codePoint};
}

// Appends what the escape at `position` stands for; the position after it.
size_t AppendEscape(std::string& out, std::string_view value, size_t position,
                    const std::array<bool, 256>& leadBytes) {
  const size_t next = position + 1;
  // Only strings hold an escaped line end; it joins two lines.
  if (next < value.size() && IsNewline(value[next])) {
    return next + (value.substr(next, 2) == "\r\n" ? 2 : 1);
  }
  const Escape escape = ReadEscape(value, position, leadBytes);
  if (escape.isHex) {
    platform::AppendCodePoint(out, escape.codePoint);
  } else if (next >= value.size() || value[next] == '\0') {
    platform::AppendCodePoint(out, kReplacement);
  } else {
    out.append(value, next, escape.end - next);
  }
  return escape.end;
}

// Characters that are tokens of their own; every other one is a delimiter.
struct Symbol {
  char character;
  CssTokenType type;
};
constexpr Symbol kSymbols[] = {
    {':', CssTokenType::kColon},       {';', CssTokenType::kSemicolon},
    {',', CssTokenType::kComma},       {'[', CssTokenType::kOpenSquare},
    {']', CssTokenType::kCloseSquare}, {'(', CssTokenType::kOpenParen},
    {')', CssTokenType::kCloseParen},  {'{', CssTokenType::kOpenCurly},
    {'}', CssTokenType::kCloseCurly},
};

}  // namespace

size_t AppendCssCharacter(std::string& out, std::string_view value, size_t at) {
  const auto& leadBytes = platform::LeadBytes();
  if (value[at] == '\\') return AppendEscape(out, value, at, leadBytes);
  if (value[at] == '\0') {
    platform::AppendCodePoint(out, kReplacement);
    return at + 1;
  }
  const size_t length = CharacterLength(value, at, leadBytes);
  out.append(value, at, length);
  return at + length;
}

void AppendCssValue(std::string& out, std::string_view value) {
  for (size_t at = 0; at < value.size();) at = AppendCssCharacter(out, value, at);
}

std::string CssValue(std::string_view value) {
  std::string decoded;
  AppendCssValue(decoded, value);
  return decoded;
}

bool CssValueIs(std::string_view value, std::string_view lowerCase) {
  std::string decoded;
  if (value.find('\\') != std::string_view::npos) {
    AppendCssValue(decoded, value);
    value = decoded;
  }
  if (value.size() != lowerCase.size()) return false;
  for (size_t i = 0; i < value.size(); ++i) {
    const int c = static_cast<unsigned char>(value[i]);
    if ((c >= 'A' && c <= 'Z' ? c | 0x20 : c) != lowerCase[i]) return false;
  }
  return true;
}

CssTokenizer::CssTokenizer(std::string_view text, bool unicodeRanges)
    : text_(text), leadBytes_(platform::LeadBytes()), unicodeRanges_(unicodeRanges) {}

bool CssTokenizer::StartsEscape(size_t position) const {
  return At(position) == '\\' && !IsNewline(At(position + 1));
}

bool CssTokenizer::StartsName(size_t position) const {
  if (At(position) != '-') return IsNameStart(At(position)) || StartsEscape(position);
  const int second = At(position + 1);
  return second == '-' || IsNameStart(second) || StartsEscape(position + 1);
}

bool CssTokenizer::StartsNumber(size_t position) const {
  if (At(position) == '+' || At(position) == '-') ++position;
  if (At(position) == '.') ++position;
  return IsDigit(At(position));
}

bool CssTokenizer::StartsUnicodeRange(size_t position) const {
  if ((At(position) | 0x20) != 'u' || At(position + 1) != '+') return false;
  const int first = At(position + 2);
  return first == '?' || HexDigit(first) >= 0;
}

size_t CssTokenizer::SkipCharacter(size_t position) const {
  return position + CharacterLength(text_, position, leadBytes_);
}

size_t CssTokenizer::SkipEscape(size_t position) const {
  return ReadEscape(text_, position, leadBytes_).end;
}

size_t CssTokenizer::SkipName(size_t position) const {
  for (;;) {
    if (IsNameCharacter(At(position))) {
      position = SkipCharacter(position);
    } else if (StartsEscape(position)) {
      position = SkipEscape(position);
    } else {
      return position;
    }
  }
}

size_t CssTokenizer::SkipDigits(size_t position) const {
  while (IsDigit(At(position))) ++position;
  return position;
}

size_t CssTokenizer::SkipWhitespace(size_t position) const {
  while (IsWhitespace(At(position))) ++position;
  return position;
}

// Steps after the ")" that ends a URL in which something forbidden was found.
size_t CssTokenizer::SkipBadUrl(size_t position) const {
  while (At(position) >= 0) {
    if (At(position) == ')') return position + 1;
    position = StartsEscape(position) ? SkipEscape(position) : SkipCharacter(position);
  }
  return position;
}

void CssTokenizer::SkipComments() {
  while (At(position_) == '/' && At(position_ + 1) == '*') {
    const size_t end = text_.find("*/", position_ + 2);
    position_ = end == std::string_view::npos ? text_.size() : end + 2;
  }
}

CssToken CssTokenizer::Finish(CssTokenType type, size_t end) {
  return FinishValue(type, end, end, end);
}

CssToken CssTokenizer::FinishValue(CssTokenType type, size_t from, size_t to, size_t end) {
  CssToken token;
  token.type = type;
  token.raw = text_.substr(position_, end - position_);
  token.value = text_.substr(from, to - from);
  position_ = end;
  return token;
}

CssToken CssTokenizer::NumericToken() {
  size_t end = position_;
  if (At(end) == '+' || At(end) == '-') ++end;
  end = SkipDigits(end);
  bool isInteger = true;
  if (At(end) == '.' && IsDigit(At(end + 1))) {
    end = SkipDigits(end + 1);
    isInteger = false;
  }
  if ((At(end) | 0x20) == 'e') {
    const size_t sign = At(end + 1) == '+' || At(end + 1) == '-' ? 1 : 0;
    if (IsDigit(At(end + 1 + sign))) {
      end = SkipDigits(end + 1 + sign);
      isInteger = false;
    }
  }
  CssToken token;
  if (StartsName(end)) {
    const size_t unitEnd = SkipName(end);
    token = FinishValue(CssTokenType::kDimension, end, unitEnd, unitEnd);
  } else if (At(end) == '%') {
    token = Finish(CssTokenType::kPercentage, end + 1);
  } else {
    token = Finish(CssTokenType::kNumber, end);
  }
  token.flag = isInteger;
  return token;
}

CssToken CssTokenizer::NameToken() {
  const size_t end = SkipName(position_);
  if (At(end) != '(') return FinishValue(CssTokenType::kIdent, position_, end, end);
  if (CssValueIs(text_.substr(position_, end - position_), "url")) {
    const size_t content = SkipWhitespace(end + 1);
    if (At(content) != '"' && At(content) != '\'') return UrlToken(content);
  }
  return FinishValue(CssTokenType::kFunction, position_, end, end + 1);
}

CssToken CssTokenizer::UrlToken(size_t contentStart) {
  for (size_t at = contentStart;;) {
    const int c = At(at);
    if (c < 0) return FinishValue(CssTokenType::kUrl, contentStart, at, at);
    if (c == ')') return FinishValue(CssTokenType::kUrl, contentStart, at, at + 1);
    if (IsWhitespace(c)) {
      const size_t close = SkipWhitespace(at);
      if (At(close) < 0) return FinishValue(CssTokenType::kUrl, contentStart, at, close);
      if (At(close) == ')') return FinishValue(CssTokenType::kUrl, contentStart, at, close + 1);
      return Finish(CssTokenType::kBadUrl, SkipBadUrl(close));
    }
    if (c == '\\' && StartsEscape(at)) {
      at = SkipEscape(at);
    } else if (c == '\\' || c == '"' || c == '\'' || c == '(' || IsNonPrintable(c)) {
      return Finish(CssTokenType::kBadUrl, SkipBadUrl(at));
    } else {
      at = SkipCharacter(at);
    }
  }
}

CssToken CssTokenizer::StringToken() {
  const int quote = At(position_);
  const size_t start = position_ + 1;
  for (size_t at = start;;) {
    const int c = At(at);
    if (c < 0) return FinishValue(CssTokenType::kString, start, at, at);
    if (c == quote) return FinishValue(CssTokenType::kString, start, at, at + 1);
    if (IsNewline(c)) return Finish(CssTokenType::kBadString, at);
    if (c != '\\') {
      at = SkipCharacter(at);
    } else if (At(at + 1) < 0) {
      return FinishValue(CssTokenType::kString, start, at, at + 1);
    } else if (IsNewline(At(at + 1))) {
      at += 2;  // of an escaped CR LF, the LF is next
      if (At(at - 1) == '\r' && At(at) == '\n') ++at;
    } else {
      at = SkipEscape(at);
    }
  }
}

CssToken CssTokenizer::HashToken() {
  const size_t start = position_ + 1;
  if (!IsNameCharacter(At(start)) && !StartsEscape(start)) {
    return Finish(CssTokenType::kDelim, start);
  }
  const bool isIdentifier = StartsName(start);
  const size_t end = SkipName(start);
  CssToken token = FinishValue(CssTokenType::kHash, start, end, end);
  token.flag = isIdentifier;
  return token;
}

CssToken CssTokenizer::AtKeywordToken() {
  const size_t start = position_ + 1;
  if (!StartsName(start)) return Finish(CssTokenType::kDelim, start);
  const size_t end = SkipName(start);
  return FinishValue(CssTokenType::kAtKeyword, start, end, end);
}

CssToken CssTokenizer::UnicodeRangeToken() {
  const size_t start = position_ + 2;
  size_t end = start;
  while (end < start + kMostHexDigits && HexDigit(At(end)) >= 0) ++end;
  const size_t digitsEnd = end;
  while (end < start + kMostHexDigits && At(end) == '?') ++end;
  if (end == digitsEnd && At(end) == '-' && HexDigit(At(end + 1)) >= 0) {
    const size_t last = end + 1;
    end = last;
    while (end < last + kMostHexDigits && HexDigit(At(end)) >= 0) ++end;
  }
  return FinishValue(CssTokenType::kUnicodeRange, start, end, end);
}

CssToken CssTokenizer::SymbolToken(int symbol) {
  const auto known = std::ranges::find(kSymbols, symbol, &Symbol::character);
  return Finish(known == std::end(kSymbols) ? CssTokenType::kDelim : known->type, position_ + 1);
}

CssToken CssTokenizer::Next() {
  SkipComments();
  const int c = At(position_);
  if (c < 0) return CssToken();
  if (IsWhitespace(c)) return Finish(CssTokenType::kWhitespace, SkipWhitespace(position_));
  if (c == '"' || c == '\'') return StringToken();
  if (c == '#') return HashToken();
  if (c == '@') return AtKeywordToken();
  if (StartsNumber(position_)) return NumericToken();
  if (text_.substr(position_, 3) == "-->") return Finish(CssTokenType::kCdc, position_ + 3);
  if (text_.substr(position_, 4) == "<!--") return Finish(CssTokenType::kCdo, position_ + 4);
  if (unicodeRanges_ && StartsUnicodeRange(position_)) return UnicodeRangeToken();
  if (StartsName(position_)) return NameToken();
  return SymbolToken(c);
}

}  // namespace zvrsit
