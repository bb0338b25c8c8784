// The searches of the HTML tokenizer.
//
// They work on text that is followed by zeros: kTextPadding bytes from `end` on are readable. Each
// gives the first byte that it looks for, or `end`.
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
  kZeroByte = 64,    // the end of the text, perhaps
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
  classes['\0'] = kZeroByte;
  classes['!'] = classes['?'] = kMarkupByte;
  for (int letter = 'a'; letter <= 'z'; ++letter) {
    classes[letter] = classes[letter - 'a' + 'A'] = kLetterByte | kMarkupByte;
  }
  return classes;
}();

inline bool IsByte(char byte, ByteClass which) {
  return (kByteClasses[static_cast<unsigned char>(byte)] & which) != 0;
}

// The first byte of one class. Names and values without quotes are short. A processor predicts
// where such a loop ends, and reads on at once; for the result of a vector instruction it would
// wait.
inline const char* FindClass(const char* from, const char* end, ByteClass which) {
  const auto stop = static_cast<ByteClass>(which | kZeroByte);
  for (;; ++from) {
    while (!IsByte(*from, stop)) ++from;
    if (*from != '\0' || from >= end) return from;
  }
}

// The first `byte`, which must not be zero. Runs of text and quoted values are long enough for
// vector instructions.
struct PortableSearch {
  static const char* Byte(const char* from, const char* end, char byte) {
    const void* found = std::memchr(from, byte, static_cast<std::size_t>(end - from));
    return found != nullptr ? static_cast<const char*>(found) : end;
  }
};

#if defined(__SSE2__)
struct Sse2Search {
  static const char* Byte(const char* from, const char* end, char byte) {
    // The bytes after the end are zeros, so nothing is found there.
    for (; from < end; from += 16) {
      if (const unsigned hits = Bits(Equal(Load(from), byte))) {
        return from + First(hits);
      }
    }
    return end;
  }

 private:
  static __m128i Load(const char* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  }
  static __m128i Equal(__m128i block, char byte) {
    return _mm_cmpeq_epi8(block, _mm_set1_epi8(byte));
  }
  static unsigned Bits(__m128i mask) { return static_cast<unsigned>(_mm_movemask_epi8(mask)); }
  static unsigned First(unsigned bits) { return static_cast<unsigned>(std::countr_zero(bits)); }
};
using DefaultSearch = Sse2Search;
#else
using DefaultSearch = PortableSearch;
#endif

}  // namespace zvrsit
