#include "platform/japanese_win32.h"

#include <windows.h>

#include "platform/utf8.h"

namespace zvrsit::platform {
namespace {

constexpr unsigned kShiftJis = 932;
constexpr unsigned kEucWithSupplement = 20932;
constexpr unsigned char kHalfWidth = 0x8E;   // in EUC-JP, before a half-width katakana
constexpr unsigned char kSupplement = 0x8F;  // before a character of JIS X 0212
constexpr unsigned char kEscape = 0x1B;

unsigned char ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

// What `length` bytes mean as one character of a page; U+FFFD where they are none.
wchar_t Meaning(unsigned page, unsigned char first, unsigned char second, int length) {
  const char bytes[2] = {static_cast<char>(first), static_cast<char>(second)};
  wchar_t unit;
  const int units = ::MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes, length, &unit, 1);
  return units == 1 ? unit : static_cast<wchar_t>(kReplacementCharacter);
}

// The character at a row and a cell of JIS X 0208, both from 0x21 to 0x7E. Shift_JIS lays two rows
// after each of its lead bytes (JIS X 0208:1997, annex 1).
wchar_t CharacterOfRow(unsigned row, unsigned cell) {
  const unsigned lead = (row + 1) / 2 + (row < 0x5F ? 0x70 : 0xB0);
  const unsigned trail = row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
  return Meaning(kShiftJis, static_cast<unsigned char>(lead), static_cast<unsigned char>(trail), 2);
}

wchar_t HalfWidthKatakana(unsigned char byte) {
  return Meaning(kShiftJis, byte, 0, 1);
}

bool IsRowByte(unsigned char byte) {
  return byte >= 0x21 && byte <= 0x7E;
}
bool IsEucByte(unsigned char byte) {
  return byte >= 0xA1 && byte <= 0xFE;
}

// Takes one character of EUC-JP that does not begin with ASCII off the front of `rest`.
wchar_t TakeEuc(std::string_view& rest) {
  const unsigned char first = ByteAt(rest, 0), second = ByteAt(rest, 1), third = ByteAt(rest, 2);
  if (first == kHalfWidth && second >= 0xA1 && second <= 0xDF) {
    rest.remove_prefix(2);
    return HalfWidthKatakana(second);
  }
  if (first == kSupplement && IsEucByte(second) && IsEucByte(third)) {
    rest.remove_prefix(3);
    return Meaning(kEucWithSupplement, second, third & 0x7F, 2);
  }
  if (IsEucByte(first) && IsEucByte(second)) {
    rest.remove_prefix(2);
    return CharacterOfRow(first & 0x7F, second & 0x7F);
  }
  const bool begins = first == kHalfWidth || first == kSupplement || IsEucByte(first);
  rest.remove_prefix(begins && second >= 0x80 ? 2 : 1);
  return static_cast<wchar_t>(kReplacementCharacter);
}

enum class Set { kAscii, kRoman, kKatakana, kRows, kUnknown };

// The character set that an escape sequence of three bytes calls.
Set SetOf(std::string_view sequence) {
  if (sequence == "\x1B(B") return Set::kAscii;
  if (sequence == "\x1B(J") return Set::kRoman;
  if (sequence == "\x1B(I") return Set::kKatakana;
  return sequence == "\x1B$@" || sequence == "\x1B$B" ? Set::kRows : Set::kUnknown;
}

wchar_t MeaningInSet(Set set, unsigned char byte) {
  if (byte >= 0x80) return static_cast<wchar_t>(kReplacementCharacter);
  if (set == Set::kRoman && byte == '\\') return L'\u00A5';
  if (set == Set::kRoman && byte == '~') return L'\u203E';
  if (set != Set::kKatakana || byte < 0x21) return byte;
  return HalfWidthKatakana(byte | 0x80);
}

}  // namespace

std::wstring WideOfEucJp(std::string_view rest) {
  std::wstring wide;
  wide.reserve(rest.size());
  while (!rest.empty()) {
    if (static_cast<unsigned char>(rest[0]) >= 0x80) {
      wide += TakeEuc(rest);
    } else {
      wide += static_cast<wchar_t>(rest[0]);
      rest.remove_prefix(1);
    }
  }
  return wide;
}

std::wstring WideOfIso2022Jp(std::string_view rest) {
  std::wstring wide;
  Set set = Set::kAscii;
  while (!rest.empty()) {
    const unsigned char first = ByteAt(rest, 0), second = ByteAt(rest, 1);
    std::size_t taken = 1;
    if (first == kEscape) {
      const Set called = SetOf(rest.substr(0, 3));
      if (called == Set::kUnknown) {
        wide += static_cast<wchar_t>(kReplacementCharacter);
      } else {
        set = called;
        taken = 3;
      }
    } else if (set == Set::kRows && IsRowByte(first) && IsRowByte(second)) {
      wide += CharacterOfRow(first, second);
      taken = 2;
    } else if (set == Set::kRows && IsRowByte(first)) {
      wide += static_cast<wchar_t>(kReplacementCharacter);
    } else {
      wide += MeaningInSet(set, first);
    }
    rest.remove_prefix(taken);
  }
  return wide;
}

}  // namespace zvrsit::platform
