#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>

#include "platform/charset.h"
#include "platform/code_page_text.h"
#include "platform/iconv_decoder.h"
#include "platform/pair_decoder.h"
#include "platform/utf8.h"

namespace zvrsit::platform {
namespace {

struct ByteRange {
  unsigned char first, last;
};

struct Page {
  unsigned number;
  const char* systemName;   // as iconv knows it
  ByteRange leadRanges[3];  // unused ones are zero
};

constexpr Page kPages[] = {
    {kUtf8, "UTF-8", {}},
    {932, "CP932", {{0x81, 0x9F}, {0xE0, 0xFC}, {}}},
    {936, "CP936", {{0x81, 0xFE}, {}, {}}},
    {949, "CP949", {{0x81, 0xFE}, {}, {}}},
    {950, "CP950", {{0x81, 0xFE}, {}, {}}},
    {1361, "JOHAB", {{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}}},
    {437, "CP437", {}},
    {850, "CP850", {}},
    {874, "CP874", {}},
    {1250, "CP1250", {}},
    {1251, "CP1251", {}},
    {1252, "CP1252", {}},
    {1253, "CP1253", {}},
    {1254, "CP1254", {}},
    {1255, "CP1255", {}},
    {1256, "CP1256", {}},
    {1257, "CP1257", {}},
    {1258, "CP1258", {}},
    {20866, "KOI8-R", {}},
    {21866, "KOI8-U", {}},
    {28591, "ISO-8859-1", {}},
    {28592, "ISO-8859-2", {}},
    {28593, "ISO-8859-3", {}},
    {28594, "ISO-8859-4", {}},
    {28595, "ISO-8859-5", {}},
    {28596, "ISO-8859-6", {}},
    {28597, "ISO-8859-7", {}},
    {28598, "ISO-8859-8", {}},
    {28599, "ISO-8859-9", {}},
    {28600, "ISO-8859-10", {}},
    {28601, "ISO-8859-11", {}},
    {28603, "ISO-8859-13", {}},
    {28604, "ISO-8859-14", {}},
    {28605, "ISO-8859-15", {}},
};

constexpr std::size_t kBmpSize = 0x10000;
constexpr char32_t kWonSign = 0x20A9;

// The page in force. `encoded` is null in UTF-8. Else it holds the one or two bytes of each code
// point of the basic plane as a number; 0 where the page has none.
struct State {
  const Page* page = &kPages[0];
  bool hasLeadBytes = false;
  std::array<bool, 256> isLead{};
  std::unique_ptr<std::uint16_t[]> encoded;
};
constinit State current;

bool IsUtf8() {
  return !current.encoded;
}

// The bytes of one code point as a number; 0 where there are none. A character that iconv would
// turn into ASCII (a yen sign into `\`) counts as missing: it would be taken for a separator.
std::uint16_t EncodedByIconv(iconv_t descriptor, const std::array<bool, 256>& isLead, char32_t c) {
  unsigned char bytes[4];
  char* source = reinterpret_cast<char*>(&c);
  std::size_t sourceLeft = sizeof c;
  char* target = reinterpret_cast<char*>(bytes);
  std::size_t targetLeft = sizeof bytes;
  if (::iconv(descriptor, &source, &sourceLeft, &target, &targetLeft) != 0) return 0;
  const std::size_t length = sizeof bytes - targetLeft;
  if (length == 1 && bytes[0] >= 0x80 && !isLead[bytes[0]]) return bytes[0];
  if (length == 2 && isLead[bytes[0]]) return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
  return 0;
}

// Fills the table of a double-byte page; false when the system does not know it.
bool FillDoubleByte(State& next) {
  const Iconv descriptor = OpenIconv(next.page->systemName, kCodePointCharset);
  if (!descriptor) return false;
  for (char32_t c = 0x80; c < kBmpSize; ++c) {
    if (c == 0xD800) c = 0xE000;
    next.encoded[c] = EncodedByIconv(descriptor.get(), next.isLead, c);
  }
  return true;
}

bool FillSingleByte(State& next) {
  if (!OpenIconv(kCodePointCharset, next.page->systemName)) return false;
  const ByteMeanings& meanings = MeaningsOf(next.page->systemName);
  for (unsigned byte = 0xFF; byte >= 0x80; --byte) {
    const char32_t meaning = meanings[byte];
    if (meaning != kReplacementCharacter && meaning < kBmpSize) {
      next.encoded[meaning] = static_cast<std::uint16_t>(byte);
    }
  }
  return true;
}

void AppendEncoded(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
    return;
  }
  const std::uint16_t bytes = c < kBmpSize ? current.encoded[c] : 0;
  if (bytes > 0xFF) out += static_cast<char>(bytes >> 8);
  out += bytes != 0 ? static_cast<char>(bytes & 0xFF) : '?';
}

// In page 1361 the byte of `\` looks like a won sign in its fonts, and the system reads it as that
// sign.
bool IsBackslashOfPage(char32_t c) {
  return c == kWonSign && current.page->number == 1361;
}

void AppendCodePoints(std::string& out, std::u32string_view codePoints) {
  if (IsUtf8()) return AppendUtf8(out, codePoints);
  for (const char32_t c : codePoints) AppendEncoded(out, c);
}

// Appends code points to one text: in UTF-8, or in the code page.
struct Utf8Writer {
  std::string& out;
  void operator()(char32_t c) const { AppendUtf8(out, c); }
};
struct PageWriter {
  std::string& out;
  void operator()(char32_t c) const { AppendCodePoint(out, c); }
};

// Runs of ASCII are copied as they are: every code page and charset here has ASCII at the same
// bytes, except UTF-16 and ISO-2022-JP.
template <class Writer>
void DecodeUtf8Text(std::string_view text, Writer write) {
  while (!text.empty()) {
    const std::size_t ascii = AsciiPrefix(text);
    write.out.append(text.substr(0, ascii));
    text.remove_prefix(ascii);
    if (text.empty()) return;
    const Utf8Step step = DecodeUtf8(text);
    write(step.codePoint);
    text.remove_prefix(step.length);
  }
}

template <class Writer>
void DecodeSingleByte(std::string_view text, const ByteMeanings& meanings, Writer write) {
  while (!text.empty()) {
    const std::size_t ascii = AsciiPrefix(text);
    write.out.append(text.substr(0, ascii));
    text.remove_prefix(ascii);
    if (text.empty()) return;
    write(meanings[static_cast<unsigned char>(text[0])]);
    text.remove_prefix(1);
  }
}

template <class Writer>
void DecodeUtf16(std::string_view text, bool bigEndian, Writer write) {
  const auto unitAt = [&](std::size_t at) -> char32_t {
    const auto a = static_cast<unsigned char>(text[at]);
    const auto b = static_cast<unsigned char>(text[at + 1]);
    return bigEndian ? a << 8 | b : b << 8 | a;
  };
  std::size_t at = 0;
  while (text.size() - at >= 2) {
    char32_t unit = unitAt(at);
    at += 2;
    if ((unit & 0xFC00) == 0xD800 && text.size() - at >= 2 && (unitAt(at) & 0xFC00) == 0xDC00) {
      unit = 0x10000 + ((unit & 0x3FF) << 10) + (unitAt(at) & 0x3FF);
      at += 2;
    }
    write(unit);  // a surrogate on its own becomes the replacement
  }
  if (at < text.size()) write(kReplacementCharacter);
}

const ByteMeanings& UserDefinedMeanings() {
  static const ByteMeanings meanings = [] {
    ByteMeanings result;
    for (unsigned byte = 0; byte < result.size(); ++byte) {
      result[byte] = byte < 0x80 ? byte : 0xF780 + (byte - 0x80);
    }
    return result;
  }();
  return meanings;
}

bool Decode(const Charset& charset, std::string_view bytes, std::string& out) {
  const PageWriter write{out};
  switch (charset.kind) {
    case CharsetKind::kUtf8Bytes:
      if (IsUtf8()) {
        AppendUtf8Repaired(out, bytes);
      } else {
        DecodeUtf8Text(bytes, write);
      }
      return true;
    case CharsetKind::kUtf16LittleEndian:
    case CharsetKind::kUtf16BigEndian:
      DecodeUtf16(bytes, charset.kind == CharsetKind::kUtf16BigEndian, write);
      return true;
    case CharsetKind::kUserDefined:
      DecodeSingleByte(bytes, UserDefinedMeanings(), write);
      return true;
    case CharsetKind::kSingleByte:
      DecodeSingleByte(bytes, MeaningsOf(charset.systemName), write);
      return true;
    case CharsetKind::kDoubleByte:
    case CharsetKind::kEucJp:
    case CharsetKind::kIso2022Jp:
      return DecodePairs(charset, bytes,
                         [&out](std::u32string_view piece) { AppendCodePoints(out, piece); });
  }
  return false;
}

}  // namespace

int SetCodePage(unsigned codePage) {
  const auto* page = std::find_if(std::begin(kPages), std::end(kPages),
                                  [codePage](const Page& p) { return p.number == codePage; });
  if (page == std::end(kPages)) return -1;
  State next;
  next.page = page;
  for (const ByteRange& range : page->leadRanges) {
    if (range.first == 0) continue;
    std::fill(next.isLead.begin() + range.first, next.isLead.begin() + range.last + 1, true);
    next.hasLeadBytes = true;
  }
  if (codePage != kUtf8) {
    next.encoded = std::make_unique<std::uint16_t[]>(kBmpSize);
    if (!(next.hasLeadBytes ? FillDoubleByte(next) : FillSingleByte(next))) return -1;
  }
  current = std::move(next);
  return 0;
}

unsigned CodePage() {
  return current.page->number;
}

const std::array<bool, 256>& LeadBytes() {
  return current.isLead;
}

bool HasLeadBytes() {
  return current.hasLeadBytes;
}

void AppendCodePoint(std::string& out, char32_t codePoint) {
  if (IsUtf8()) {
    AppendUtf8(out, codePoint);
  } else {
    AppendEncoded(out, codePoint);
  }
}

bool ConvertToCodePage(std::string_view bytes, std::string_view label, std::string& out) {
  const Charset* charset = FindCharset(label);
  if (!charset) return false;
  out.clear();
  out.reserve(bytes.size());
  return Decode(*charset, bytes, out);
}

bool IsCodePageUtf8(std::string_view label) {
  const Charset* charset = IsUtf8() ? FindCharset(label) : nullptr;
  return charset && charset->kind == CharsetKind::kUtf8Bytes;
}

std::string ToUtf8(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  const Utf8Writer write{out};
  if (IsUtf8()) {
    AppendUtf8Repaired(out, text);
  } else if (HasLeadBytes()) {
    DecodeByIconv(current.page->systemName, text, [&write](std::u32string_view piece) {
      for (const char32_t c : piece) write(IsBackslashOfPage(c) ? U'\\' : c);
    });
  } else {
    DecodeSingleByte(text, MeaningsOf(current.page->systemName), write);
  }
  return out;
}

}  // namespace zvrsit::platform
