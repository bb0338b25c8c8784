#include "platform/pair_decoder.h"

#include <string>

#include "platform/charset.h"
#include "platform/pair_source.h"
#include "platform/pair_tables.h"
#include "platform/utf8.h"

namespace zvrsit::platform {
namespace {

constexpr std::size_t kPairsAtOnce = 4096;
constexpr char32_t kHalfWidthKatakana = 0xFF61;  // where they begin

bool IsIn(unsigned byte, unsigned first, unsigned last) {
  return byte >= first && byte <= last;
}
bool IsEuc(unsigned byte) {
  return IsIn(byte, 0xA1, 0xFE);
}

// The character at a row and a cell of JIS X 0208, both from 0x21 to 0x7E; 0 for none. Shift_JIS
// lays two rows after each of its lead bytes (JIS X 0208:1997, annex 1).
char32_t CharacterOfRow(const PairTable& shiftJis, unsigned row, unsigned cell) {
  const unsigned lead = (row + 1) / 2 + (row < 0x5F ? 0x70 : 0xB0);
  const unsigned trail = row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
  return shiftJis.At(static_cast<unsigned char>(lead), static_cast<unsigned char>(trail));
}

class PairDecoder {
 public:
  PairDecoder(std::string_view bytes, const CodePointSink& sink) : rest_(bytes), sink_(sink) {
    out_.reserve(kPairsAtOnce);
  }
  ~PairDecoder() { sink_(out_); }
  PairDecoder(const PairDecoder&) = delete;
  PairDecoder& operator=(const PairDecoder&) = delete;

  void DecodeDoubleByte(unsigned codePage, const PairTable& table) {
    while (SkipAscii()) {
      const unsigned first = ByteAt(0);
      if (codePage == kShiftJis && IsIn(first, 0xA1, 0xDF)) {
        Put(kHalfWidthKatakana + first - 0xA1, 1);
      } else if (first == 0x80 && (codePage == kShiftJis || codePage == kGb18030)) {
        Put(codePage == kShiftJis ? 0x80 : 0x20AC, 1);
      } else if (codePage == kGb18030 && first != 0xFF && IsIn(ByteAt(1), '0', '9')) {
        TakeFourBytes();
      } else if (codePage == kBig5 && first == 0x88 && PutTwo(ByteAt(1))) {
        rest_.remove_prefix(2);
      } else if (IsIn(first, 0x81, codePage == kShiftJis ? 0xFC : 0xFE) && first != 0xA0) {
        TakePair(table);
      } else if (first == 0xA0 && codePage != kShiftJis) {
        TakePair(table);
      } else {
        Put(kReplacementCharacter, 1);
      }
    }
  }

  void DecodeEucJp(const PairTable& shiftJis, const PairTable& jis0212) {
    while (SkipAscii()) {
      const unsigned first = ByteAt(0), second = ByteAt(1), third = ByteAt(2);
      if (first == 0x8E && IsIn(second, 0xA1, 0xDF)) {
        Put(kHalfWidthKatakana + second - 0xA1, 2);
      } else if (first == 0x8F && IsEuc(second)) {
        const char32_t meaning = IsEuc(third) ? jis0212.At(Byte(second), Byte(third)) : 0;
        PutOrReplace(meaning, 3);
      } else if (IsEuc(first) && IsEuc(second)) {
        PutOrReplace(CharacterOfRow(shiftJis, first & 0x7F, second & 0x7F), 2);
      } else {
        PutOrReplace(0, first == 0x8E || first == 0x8F || IsEuc(first) ? 2 : 1);
      }
    }
  }

  void DecodeIso2022Jp(const PairTable& shiftJis) {
    Set set = Set::kAscii;
    bool isFresh = false;  // nothing came after the last escape sequence
    while (!rest_.empty()) {
      const unsigned first = ByteAt(0);
      if (first != kEscape) {
        isFresh = false;
        TakeOfSet(set, shiftJis);
        continue;
      }
      const Set called = SetOf(rest_.substr(0, 3));
      if (called == Set::kUnknown || isFresh) Put(kReplacementCharacter, 0);
      rest_.remove_prefix(called == Set::kUnknown ? 1 : 3);
      isFresh = called != Set::kUnknown;
      if (isFresh) set = called;
    }
  }

 private:
  enum class Set { kAscii, kRoman, kKatakana, kRows, kUnknown };
  static constexpr unsigned kEscape = 0x1B;
  static constexpr unsigned kNoByte = 0x100;  // after the end

  static unsigned char Byte(unsigned byte) { return static_cast<unsigned char>(byte); }
  unsigned ByteAt(std::size_t at) const {
    return at < rest_.size() ? static_cast<unsigned char>(rest_[at]) : kNoByte;
  }

  void Put(char32_t codePoint, std::size_t taken) {
    if (out_.size() == kPairsAtOnce) {
      sink_(out_);
      out_.clear();
    }
    out_ += codePoint;
    rest_.remove_prefix(taken);
  }

  // False at the end of the text.
  bool SkipAscii() {
    for (std::size_t ascii = AsciiPrefix(rest_); ascii > 0; --ascii) Put(ByteAt(0), 1);
    return !rest_.empty();
  }

  // `meaning` is that of `length` bytes. Where it is 0, an ASCII byte among them counts as itself.
  void PutOrReplace(char32_t meaning, std::size_t length) {
    if (meaning != 0) return Put(meaning, length);
    std::size_t taken = 1;
    while (taken < length && IsIn(ByteAt(taken), 0x80, 0xFF)) ++taken;
    Put(kReplacementCharacter, taken);
  }

  void TakePair(const PairTable& table) {
    const unsigned second = ByteAt(1);
    PutOrReplace(second == kNoByte ? 0 : table.At(Byte(ByteAt(0)), Byte(second)), 2);
  }

  // A character of Big5 with its accent; false for all others.
  bool PutTwo(unsigned trail) {
    if (trail != 0x62 && trail != 0x64 && trail != 0xA3 && trail != 0xA5) return false;
    Put(trail < 0x80 ? 0xCA : 0xEA, 0);
    Put(trail == 0x62 || trail == 0xA3 ? 0x304 : 0x30C, 0);
    return true;
  }

  // A lead byte and a digit of GB 18030.
  void TakeFourBytes() {
    if (rest_.size() < 3 || (IsIn(ByteAt(2), 0x81, 0xFE) && rest_.size() < 4)) {
      return Put(kReplacementCharacter, rest_.size());
    }
    if (!IsIn(ByteAt(2), 0x81, 0xFE) || !IsIn(ByteAt(3), '0', '9')) {
      return Put(kReplacementCharacter, 1);
    }
    const char32_t meaning = MeaningOfFourBytes(rest_.substr(0, 4));
    Put(meaning != 0 ? meaning : kReplacementCharacter, 4);
  }

  // The character set that an escape sequence calls.
  static Set SetOf(std::string_view sequence) {
    if (sequence == "\x1B(B") return Set::kAscii;
    if (sequence == "\x1B(J") return Set::kRoman;
    if (sequence == "\x1B(I") return Set::kKatakana;
    return sequence == "\x1B$@" || sequence == "\x1B$B" ? Set::kRows : Set::kUnknown;
  }

  void TakeOfSet(Set set, const PairTable& shiftJis) {
    const unsigned first = ByteAt(0);
    if (set == Set::kRows) return TakeOfRows(shiftJis);
    if (set == Set::kKatakana) {
      const bool isKatakana = IsIn(first, 0x21, 0x5F);
      return Put(isKatakana ? kHalfWidthKatakana + first - 0x21 : kReplacementCharacter, 1);
    }
    const bool isShift = first == 0x0E || first == 0x0F;
    if (first >= 0x80 || isShift) return Put(kReplacementCharacter, 1);
    if (set == Set::kRoman && first == '\\') return Put(0xA5, 1);
    Put(set == Set::kRoman && first == '~' ? 0x203E : first, 1);
  }

  void TakeOfRows(const PairTable& shiftJis) {
    const unsigned first = ByteAt(0), second = ByteAt(1);
    if (!IsIn(first, 0x21, 0x7E) || second == kNoByte || second == kEscape) {
      return Put(kReplacementCharacter, 1);
    }
    const char32_t meaning = IsIn(second, 0x21, 0x7E) ? CharacterOfRow(shiftJis, first, second) : 0;
    Put(meaning != 0 ? meaning : kReplacementCharacter, 2);
  }

  std::string_view rest_;
  const CodePointSink& sink_;
  std::u32string out_;
};

}  // namespace

bool DecodePairs(const Charset& charset, std::string_view bytes, const CodePointSink& sink) {
  const bool isPage = charset.kind == CharsetKind::kDoubleByte;
  const PairTable& table = PairTableOf(isPage ? charset.codePage : kShiftJis);
  if (table.empty()) return false;
  PairDecoder decoder(bytes, sink);
  if (isPage) {
    decoder.DecodeDoubleByte(charset.codePage, table);
  } else if (charset.kind == CharsetKind::kIso2022Jp) {
    decoder.DecodeIso2022Jp(table);
  } else {
    const PairTable& jis0212 = PairTableOf(kJis0212);
    if (jis0212.empty()) return false;
    decoder.DecodeEucJp(table, jis0212);
  }
  return true;
}

}  // namespace zvrsit::platform
