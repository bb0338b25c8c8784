#include "dom/html_text.h"

#include "dom/byte_search.h"
#include "dom/character_reference.h"
#include "platform/code_page_text.h"
#include "platform/utf8.h"

namespace zvrsit {
namespace {

struct Decoding {
  bool references;
  bool inAttribute;
  bool replaceNul;
};

constexpr Decoding kDecodingOfAttributes{true, true, true};

Decoding DecodingOf(TextKind kind) {
  const bool references = kind == TextKind::kData || kind == TextKind::kRcdata;
  const bool replaceNul = kind == TextKind::kRcdata || kind == TextKind::kRawText;
  return {references, false, replaceNul};
}

bool NeedsWork(char c) {
  return c == '&' || c == '\r' || c == '\0';
}

#if defined(__SSE2__)
// One bit for each of 16 bytes; it is set for a byte that is not plain.
unsigned WorkBits(const char* from) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  const __m128i hits = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('&')),
                                                 _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r'))),
                                    _mm_cmpeq_epi8(bytes, _mm_setzero_si128()));
  return static_cast<unsigned>(_mm_movemask_epi8(hits));
}
#endif

// The first byte at or after `from` that is not plain.
std::size_t FindWork(std::string_view raw, std::size_t from) {
  std::size_t i = from;
#if defined(__SSE2__)
  for (; raw.size() - i >= 16; i += 16) {
    const unsigned bits = WorkBits(raw.data() + i);
    if (bits != 0) return i + static_cast<std::size_t>(std::countr_zero(bits));
  }
#endif
  while (i < raw.size() && !NeedsWork(raw[i])) ++i;
  return i;
}

// Appends what the bytes at the front of `raw` stand for; how many they are.
std::size_t AppendOne(std::string& out, std::string_view raw, const Decoding& decoding) {
  if (raw.front() == '\r') {
    out += '\n';
    return raw.size() > 1 && raw[1] == '\n' ? 2 : 1;
  }
  if (raw.front() == '&' && decoding.references) {
    const CharacterReference found = MatchCharacterReference(raw, decoding.inAttribute);
    if (found.length != 0) {
      platform::AppendCodePoint(out, found.first);
      if (found.second != 0) platform::AppendCodePoint(out, found.second);
      return found.length;
    }
  }
  if (raw.front() == '\0' && decoding.replaceNul) {
    platform::AppendCodePoint(out, platform::kReplacementCharacter);
  } else {
    out += raw.front();
  }
  return 1;
}

void Append(std::string& out, std::string_view raw, const Decoding& decoding) {
  std::size_t from = 0;
  for (std::size_t at; (at = FindWork(raw, from)) < raw.size();) {
    out.append(raw, from, at - from);
    from = at + AppendOne(out, raw.substr(at), decoding);
  }
  out.append(raw, from);
}

}  // namespace

bool NeedsDecoding(std::string_view raw) {
#if defined(__SSE2__)
  std::size_t i = 0;
  while (i < raw.size() && WorkBits(raw.data() + i) == 0) i += 16;
  if (i >= raw.size()) return false;
  return FindWork(raw, i) < raw.size();  // what was found may stand after the end
#else
  return FindWork(raw, 0) < raw.size();
#endif
}

void AppendText(std::string& out, std::string_view raw, TextKind kind) {
  Append(out, raw, DecodingOf(kind));
}

void AppendAttributeValue(std::string& out, std::string_view raw) {
  Append(out, raw, kDecodingOfAttributes);
}

std::size_t AppendFirstOfText(std::string& out, std::string_view raw, TextKind kind) {
  return AppendOne(out, raw, DecodingOf(kind));
}

std::size_t AppendFirstOfAttribute(std::string& out, std::string_view raw) {
  return AppendOne(out, raw, kDecodingOfAttributes);
}

void AppendPlain(std::string& out, std::string_view raw) {
  Append(out, raw, {false, false, true});
}

void AppendName(std::string& out, std::string_view raw) {
  for (const char c : raw) {
    if (c == '\0') {
      platform::AppendCodePoint(out, platform::kReplacementCharacter);
    } else {
      out += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    }
  }
}

}  // namespace zvrsit
