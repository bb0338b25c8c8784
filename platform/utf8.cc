#include "platform/utf8.h"

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvrsit::platform {
namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080;

std::uint64_t LoadWord(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// How many bytes are tested for ASCII at once.
constexpr std::size_t kAsciiBlock = 64;

bool IsAsciiBlock(const char* bytes) {
#if defined(__SSE2__)
  const auto load = [bytes](std::size_t at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
  };
  const __m128i any =
      _mm_or_si128(_mm_or_si128(load(0), load(16)), _mm_or_si128(load(32), load(48)));
  return _mm_movemask_epi8(any) == 0;
#else
  std::uint64_t any = 0;
  for (std::size_t at = 0; at < kAsciiBlock; at += 8) any |= LoadWord(bytes + at);
  return (any & kHighBits) == 0;
#endif
}

struct LeadByte {
  unsigned trailBytes;                         // 0 for a byte that begins no sequence
  unsigned char firstTrailMin, firstTrailMax;  // what may follow it
};

LeadByte LeadByteOf(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

bool IsTrail(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The bytes of a well-formed sequence of two or three whose first trail byte is like any other; 0
// for whatever needs a closer look.
unsigned PlainSequence(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (text.size() < 3 || !IsTrail(text[1])) return 0;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first < 0xE1 || first > 0xEF || first == 0xED || !IsTrail(text[2])) return 0;
  return 3;
}

// How many bytes at the start of the text are well-formed.
std::size_t ValidPrefix(std::string_view text) {
  std::size_t at = 0;
  for (;;) {
    at += AsciiPrefix(text.substr(at));
    if (at == text.size()) return at;
    // Text in other scripts comes in runs.
    do {
      const std::string_view rest = text.substr(at);
      if (const unsigned plain = PlainSequence(rest)) {
        at += plain;
        continue;
      }
      const Utf8Step step = DecodeUtf8(rest);
      if (!step.valid) return at;
      at += step.length;
    } while (at < text.size() && static_cast<unsigned char>(text[at]) >= 0x80);
  }
}

constexpr std::size_t kMostUtf8Bytes = 4;

// Writes one code point; how many bytes it took.
std::size_t Encode(char32_t c, char* bytes) {
  if (c < 0x80) {
    bytes[0] = static_cast<char>(c);
    return 1;
  }
  if ((c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF) c = kReplacementCharacter;
  std::size_t length = 0;
  if (c < 0x800) {
    bytes[length++] = static_cast<char>(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    bytes[length++] = static_cast<char>(0xE0 | c >> 12);
    bytes[length++] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
  } else {
    bytes[length++] = static_cast<char>(0xF0 | c >> 18);
    bytes[length++] = static_cast<char>(0x80 | (c >> 12 & 0x3F));
    bytes[length++] = static_cast<char>(0x80 | (c >> 6 & 0x3F));
  }
  bytes[length++] = static_cast<char>(0x80 | (c & 0x3F));
  return length;
}

}  // namespace

std::size_t AsciiPrefix(std::string_view text) {
  const char* bytes = text.data();
  const std::size_t size = text.size();
  std::size_t at = 0;
  while (size - at >= kAsciiBlock && IsAsciiBlock(bytes + at)) at += kAsciiBlock;
  while (size - at >= 8 && (LoadWord(bytes + at) & kHighBits) == 0) at += 8;
  while (at < size && static_cast<unsigned char>(bytes[at]) < 0x80) ++at;
  return at;
}

bool IsValidUtf8(std::string_view text) {
  return ValidPrefix(text) == text.size();
}

Utf8Step DecodeUtf8(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {first, 1, true};
  const LeadByte lead = LeadByteOf(first);
  if (lead.trailBytes == 0) return {kReplacementCharacter, 1, false};
  char32_t codePoint = first & (0x3Fu >> lead.trailBytes);
  unsigned length = 1;
  for (; length <= lead.trailBytes; ++length) {
    const bool isFirst = length == 1;
    const unsigned char least = isFirst ? lead.firstTrailMin : 0x80;
    const unsigned char most = isFirst ? lead.firstTrailMax : 0xBF;
    if (length >= text.size()) return {kReplacementCharacter, length, false};
    const auto trail = static_cast<unsigned char>(text[length]);
    if (trail < least || trail > most) return {kReplacementCharacter, length, false};
    codePoint = codePoint << 6 | (trail & 0x3F);
  }
  return {codePoint, length, true};
}

void AppendUtf8(std::string& out, char32_t codePoint) {
  char bytes[kMostUtf8Bytes];
  out.append(bytes, Encode(codePoint, bytes));
}

void AppendUtf8(std::string& out, std::u32string_view codePoints) {
  const std::size_t start = out.size();
  out.resize(start + kMostUtf8Bytes * codePoints.size());
  char* end = out.data() + start;
  for (const char32_t codePoint : codePoints) end += Encode(codePoint, end);
  out.resize(static_cast<std::size_t>(end - out.data()));
}

void AppendUtf8Repaired(std::string& out, std::string_view text) {
  while (!text.empty()) {
    const std::size_t valid = ValidPrefix(text);
    out.append(text.substr(0, valid));
    text.remove_prefix(valid);
    if (text.empty()) return;
    AppendUtf8(out, kReplacementCharacter);
    text.remove_prefix(DecodeUtf8(text).length);
  }
}

}  // namespace zvrsit::platform
