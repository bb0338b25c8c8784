// A fast hash for tables in memory. Its values differ from process to process. So it must never be
// stored, and a hostile site cannot choose names that collide.
//
// Method: Wang Yi's wyhash (public domain). Two 64-bit words are multiplied to 128 bits, and the
// two halves are combined. The inputs are mixed in again, because a factor of zero would erase the
// other word.
#pragma once

#include <cstdint>
#include <string_view>

namespace zvrsit {

namespace hash_detail {

// Odd words with 32 bits set each, as the method wants them.
inline constexpr std::uint64_t kWordA = 0x2d358dccaa6c78a5;
inline constexpr std::uint64_t kWordB = 0x8bb84b93962eacc9;

// The random start of this process.
extern const std::uint64_t processSeed;

}  // namespace hash_detail

// Folds two words into one.
inline std::uint64_t MixWords(std::uint64_t a, std::uint64_t b) {
#if defined(__SIZEOF_INT128__)
  __extension__ typedef unsigned __int128 Wide;  // which ISO C++ does not have
  const Wide product = static_cast<Wide>(a) * b;
  return a ^ b ^ static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
#else
  const std::uint64_t aLow = a & 0xFFFFFFFF, aHigh = a >> 32;
  const std::uint64_t bLow = b & 0xFFFFFFFF, bHigh = b >> 32;
  const std::uint64_t cross = aHigh * bLow + (aLow * bLow >> 32);
  const std::uint64_t middle = aLow * bHigh + (cross & 0xFFFFFFFF);
  return a ^ b ^ (a * b) ^ (aHigh * bHigh + (cross >> 32) + (middle >> 32));
#endif
}

// The hash of a text.
std::uint64_t HashBytes(std::string_view bytes);

// The hash of two words, such as the ends of a link.
inline std::uint64_t HashWords(std::uint64_t a, std::uint64_t b) {
  return MixWords(MixWords(a ^ hash_detail::kWordA, b ^ hash_detail::processSeed),
                  hash_detail::kWordB);
}

}  // namespace zvrsit
