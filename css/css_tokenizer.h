// Splits the text of a style sheet into tokens, after section 4 of CSS Syntax Module Level 3.
//
// The text is in the code page. Nothing is copied: a token holds parts of the text, and escapes are
// decoded when a value is asked for. Line ends (CR, FF, CR LF) and NUL are treated as after the
// preprocessing of the standard. There is one pass, in linear time. Parse errors appear only as the
// two bad token types.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zvrsit {

enum class CssTokenType : uint8_t {
  kEnd,
  kIdent,
  kFunction,  // a name and its "("
  kAtKeyword,
  kHash,
  kString,
  kBadString,  // ends before a raw line end
  kUrl,        // url( with an unquoted address; a quoted one is a kFunction
  kBadUrl,
  kDelim,  // any other single character
  kNumber,
  kPercentage,
  kDimension,
  kUnicodeRange,  // only where asked for
  kWhitespace,
  kCdo,  // <!--
  kCdc,  // -->
  kColon,
  kSemicolon,
  kComma,
  kOpenSquare,
  kCloseSquare,
  kOpenParen,
  kCloseParen,
  kOpenCurly,
  kCloseCurly,
};

// The slices are good as long as the text is.
struct CssToken {
  CssTokenType type = CssTokenType::kEnd;
  // kHash: the name could be an identifier. Numbers: written as an integer.
  bool flag = false;
  // The whole token as written.
  std::string_view raw;
  // Not decoded: the name of an identifier, function, at-keyword or hash; the content of a string
  // or URL; the unit of a dimension.
  std::string_view value;
};

// Appends a token's value with its escapes decoded. An escape that names no character of the
// code page gives what platform::AppendCodePoint gives for it.
void AppendCssValue(std::string& out, std::string_view value);
std::string CssValue(std::string_view value);
// The same for the first character or escape from `at` on; the place after it.
size_t AppendCssCharacter(std::string& out, std::string_view value, size_t at);

// Whether the decoded value equals `lowerCase` (lower-case ASCII), ASCII letter case aside.
bool CssValueIs(std::string_view value, std::string_view lowerCase);

class CssTokenizer {
 public:
  // With `unicodeRanges`, U+26 and the like are single tokens, as in the value of a unicode-range
  // descriptor. Without it they are an identifier and numbers.
  explicit CssTokenizer(std::string_view text, bool unicodeRanges = false);

  // The next token; kEnd, again and again, at the end of the text. Comments are stepped over.
  CssToken Next();

 private:
  // The byte at a position; -1 past the end.
  int At(size_t position) const {
    return position < text_.size() ? static_cast<unsigned char>(text_[position]) : -1;
  }
  bool StartsEscape(size_t position) const;
  bool StartsName(size_t position) const;
  bool StartsNumber(size_t position) const;
  bool StartsUnicodeRange(size_t position) const;

  // Each gives the position after the thing that begins at `position`.
  size_t SkipCharacter(size_t position) const;
  size_t SkipEscape(size_t position) const;
  size_t SkipName(size_t position) const;
  size_t SkipDigits(size_t position) const;
  size_t SkipWhitespace(size_t position) const;
  size_t SkipBadUrl(size_t position) const;
  void SkipComments();

  // Each makes the token that begins at position_, and moves past it.
  CssToken Finish(CssTokenType type, size_t end);
  CssToken FinishValue(CssTokenType type, size_t from, size_t to, size_t end);
  CssToken NumericToken();
  CssToken NameToken();
  CssToken UrlToken(size_t contentStart);
  CssToken StringToken();
  CssToken HashToken();
  CssToken AtKeywordToken();
  CssToken UnicodeRangeToken();
  CssToken SymbolToken(int symbol);

  std::string_view text_;
  const std::array<bool, 256>& leadBytes_;
  size_t position_ = 0;
  bool unicodeRanges_;
};

}  // namespace zvrsit
