#include "util/hash.h"

#include <cstring>
#include <random>

namespace zvrsit {
namespace {

std::uint64_t Load64(const char* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

std::uint64_t Load32(const char* bytes) {
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// One to three bytes as one word.
std::uint64_t LoadFew(const char* bytes, std::size_t length) {
  const auto byte = [bytes](std::size_t i) {
    return static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i]));
  };
  return byte(0) << 16 | byte(length / 2) << 8 | byte(length - 1);
}

std::uint64_t DrawSeed() {
  std::random_device device;
  return static_cast<std::uint64_t>(device()) << 32 | device();
}

}  // namespace

namespace hash_detail {

const std::uint64_t processSeed = DrawSeed();

}  // namespace hash_detail

std::uint64_t HashBytes(std::string_view text) {
  using hash_detail::kWordA;
  using hash_detail::kWordB;
  const char* bytes = text.data();
  std::size_t left = text.size();
  std::uint64_t hash = hash_detail::processSeed;
  for (; left > 16; bytes += 16, left -= 16) {
    hash = MixWords(Load64(bytes) ^ kWordA, Load64(bytes + 8) ^ hash);
  }
  // What is left, 16 bytes at most, as two words that may overlap.
  std::uint64_t a = 0, b = 0;
  if (left >= 8) {
    a = Load64(bytes);
    b = Load64(bytes + left - 8);
  } else if (left >= 4) {
    a = Load32(bytes);
    b = Load32(bytes + left - 4);
  } else if (left > 0) {
    a = LoadFew(bytes, left);
  }
  hash = MixWords(a ^ kWordA, b ^ hash);
  return MixWords(hash ^ kWordA, static_cast<std::uint64_t>(text.size()) ^ kWordB);
}

}  // namespace zvrsit
