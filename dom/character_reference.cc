#include "dom/character_reference.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/utf8.h"

namespace zvrsit {
namespace {

struct NamedReference {
  std::uint32_t first : 31;
  std::uint32_t withoutSemicolon : 1;
  std::uint16_t second;
};

constexpr NamedReference kNamed[] = {
#define R(name, first, second, withoutSemicolon) {first, withoutSemicolon, second},
#include "dom/named_references.inc"
#undef R
};
constexpr std::size_t kNamedCount = std::size(kNamed);

// All names one after the other, each with a terminator.
constexpr char kReferenceNames[] =
#define R(name, first, second, withoutSemicolon) name "\0"
#include "dom/named_references.inc"
#undef R
    ;

// Where each name begins in kReferenceNames; one more for the end.
constexpr auto kNameStart = [] {
  std::array<std::uint16_t, kNamedCount + 1> starts{};
  std::size_t at = 0;
  for (std::size_t i = 0; i < kNamedCount; ++i) {
    starts[i] = static_cast<std::uint16_t>(at);
    while (kReferenceNames[at] != '\0') ++at;
    ++at;
  }
  starts[kNamedCount] = static_cast<std::uint16_t>(at);
  return starts;
}();
static_assert(sizeof(kReferenceNames) <= 0x10000);

// Byte `depth` of name `index`; the terminator where the name ends there.
unsigned char NameByte(std::size_t index, std::size_t depth) {
  return static_cast<unsigned char>(kReferenceNames[kNameStart[index] + depth]);
}

bool IsAsciiAlnum(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The names that agree with the text so far: a range of the sorted table.
struct NameRange {
  std::size_t low = 0;
  std::size_t high = kNamedCount;

  void Narrow(std::size_t depth, unsigned char byte) {
    low = Bound(depth, byte);
    high = Bound(depth, byte + 1u);
  }
  std::size_t Bound(std::size_t depth, unsigned byte) const {
    std::size_t from = low;
    std::size_t to = high;
    while (from < to) {
      const std::size_t middle = (from + to) / 2;
      if (NameByte(middle, depth) < byte) {
        from = middle + 1;
      } else {
        to = middle;
      }
    }
    return from;
  }
};

// The longest name that `text`, after the "&", begins with.
CharacterReference MatchNamed(std::string_view text, bool inAttribute) {
  CharacterReference best;
  bool semicolon = false;
  NameRange range;
  for (std::size_t depth = 0; depth < text.size(); ++depth) {
    const char c = text[depth];
    if (!IsAsciiAlnum(c)) break;
    range.Narrow(depth, static_cast<unsigned char>(c));
    if (range.low == range.high) break;
    if (NameByte(range.low, depth + 1) != '\0') continue;
    const NamedReference& named = kNamed[range.low];
    semicolon = depth + 1 < text.size() && text[depth + 1] == ';';
    if (semicolon || named.withoutSemicolon) {
      best = {depth + 2 + (semicolon ? 1 : 0), named.first, named.second};
    }
    if (semicolon) return best;
  }
  const std::size_t next = best.length - 1;  // in `text`, which lacks the "&"
  if (inAttribute && best.length != 0 && next < text.size() &&
      (text[next] == '=' || IsAsciiAlnum(text[next]))) {
    return {};
  }
  return best;
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 16;
}

// The character of a number. The C1 controls mean the characters of windows-1252.
char32_t CodePointOf(char32_t number) {
  static constexpr std::uint16_t kC1[32] = {
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
      0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
  if (number == 0 || number > 0x10FFFF || (number >= 0xD800 && number <= 0xDFFF)) {
    return platform::kReplacementCharacter;
  }
  return number >= 0x80 && number <= 0x9F ? kC1[number - 0x80] : number;
}

// `text` is at its "&#".
CharacterReference MatchNumeric(std::string_view text) {
  std::size_t i = 2;
  const bool hex = i < text.size() && (text[i] == 'x' || text[i] == 'X');
  const int base = hex ? 16 : 10;
  if (hex) ++i;
  const std::size_t digits = i;
  char32_t number = 0;
  for (; i < text.size() && HexDigit(text[i]) < base; ++i) {
    number = number * static_cast<char32_t>(base) + static_cast<char32_t>(HexDigit(text[i]));
    number = std::min<char32_t>(number, 0x110000);
  }
  if (i == digits) return {};
  if (i < text.size() && text[i] == ';') ++i;
  return {i, CodePointOf(number), 0};
}

}  // namespace

CharacterReference MatchCharacterReference(std::string_view text, bool inAttribute) {
  if (text.size() < 2) return {};
  if (text[1] == '#') return MatchNumeric(text);
  return MatchNamed(text.substr(1), inAttribute);
}

}  // namespace zvrsit
