// The searches of the HTML tokenizer, once portable and once with SSE2.
//
// Both work on text that ends in zeros: kTextPadding of them are readable from `end` on. Each
// search gives the first byte that it looks for, or `end`.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zvrsit {

inline constexpr std::size_t kTextPadding = 64;

// What a byte means inside a tag.
enum ByteClass : unsigned char {
  kSpaceByte = 1,         // tab, line feed, form feed, carriage return, space
  kTagNameEnd = 2,        // ends the name of a tag
  kAttributeNameEnd = 4,  // ends the name of an attribute
  kUnquotedValueEnd = 8,  // ends a value without quotes
  kLetterByte = 16,
  kMarkupByte = 32,  // after "<", begins markup
};

inline constexpr std::array<unsigned char, 256> kByteClasses = [] {
  std::array<unsigned char, 256> classes{};
  for (const char space : {'\t', '\n', '\f', '\r', ' '}) {
    classes[static_cast<unsigned char>(space)] =
        kSpaceByte | kTagNameEnd | kAttributeNameEnd | kUnquotedValueEnd;
  }
  classes['/'] = kTagNameEnd | kAttributeNameEnd | kMarkupByte;
  classes['>'] = kTagNameEnd | kAttributeNameEnd | kUnquotedValueEnd;
  classes['='] = kAttributeNameEnd;
  classes['!'] = classes['?'] = kMarkupByte;
  for (int letter = 'a'; letter <= 'z'; ++letter) {
    classes[letter] = classes[letter - 'a' + 'A'] = kLetterByte | kMarkupByte;
  }
  return classes;
}();

inline bool IsByte(char byte, ByteClass which) {
  return (kByteClasses[static_cast<unsigned char>(byte)] & which) != 0;
}

struct PortableSearch {
  static const char* Byte(const char* from, const char* end, char byte) {
    const void* found = std::memchr(from, byte, static_cast<std::size_t>(end - from));
    return found != nullptr ? static_cast<const char*>(found) : end;
  }
  static const char* TagNameEnd(const char* from, const char* end) {
    return Class(from, end, kTagNameEnd);
  }
  static const char* AttributeNameEnd(const char* from, const char* end) {
    return Class(from, end, kAttributeNameEnd);
  }
  static const char* UnquotedValueEnd(const char* from, const char* end) {
    return Class(from, end, kUnquotedValueEnd);
  }

 private:
  static const char* Class(const char* from, const char* end, ByteClass which) {
    while (from < end && !IsByte(*from, which)) ++from;
    return from;
  }
};

#if defined(__SSE2__)
struct Sse2Search {
  static const char* Byte(const char* from, const char* end, char byte) {
    // Most runs of text and most values are short. Behind them the C library is faster.
    const __m128i wanted = _mm_set1_epi8(byte);
    for (int block = 0; block < 4; ++block, from += 16) {
      const unsigned hits = Bits(_mm_cmpeq_epi8(Load(from), wanted));
      if (hits != 0) {
        from += std::countr_zero(hits);
        return from < end ? from : end;
      }
      if (end - from <= 16) return end;
    }
    return PortableSearch::Byte(from, end, byte);
  }
  static const char* TagNameEnd(const char* from, const char* end) {
    return Stop<kTagNameEnd>(from, end);
  }
  static const char* AttributeNameEnd(const char* from, const char* end) {
    return Stop<kAttributeNameEnd>(from, end);
  }
  static const char* UnquotedValueEnd(const char* from, const char* end) {
    return Stop<kUnquotedValueEnd>(from, end);
  }

 private:
  static __m128i Load(const char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  }
  static unsigned Bits(__m128i bytes) { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }

  // Stops at every byte up to the space, which takes in the zeros at the end; the control
  // characters among them that end nothing are stepped over.
  template <ByteClass kWhich>
  static const char* Stop(const char* from, const char* end) {
    const __m128i space = _mm_set1_epi8(' ');
    while (from < end) {
      const __m128i bytes = Load(from);
      __m128i hit = _mm_cmpeq_epi8(_mm_min_epu8(bytes, space), bytes);
      hit = _mm_or_si128(hit, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('>')));
      if constexpr (kWhich != kUnquotedValueEnd) {
        hit = _mm_or_si128(hit, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('/')));
      }
      if constexpr (kWhich == kAttributeNameEnd) {
        hit = _mm_or_si128(hit, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('=')));
      }
      const unsigned hits = Bits(hit);
      if (hits == 0) {
        from += 16;
        continue;
      }
      from += std::countr_zero(hits);
      if (IsByte(*from, kWhich)) return from;
      if (from < end) ++from;
    }
    return end;
  }
};
using DefaultSearch = Sse2Search;
#else
using DefaultSearch = PortableSearch;
#endif

}  // namespace zvrsit
