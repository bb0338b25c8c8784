// The string hash of the ELF object format (System V ABI, "Hash Table").
#pragma once

#include <cstdint>
#include <string_view>

namespace zvrsit {

// 28 bits. Names in database files are found by it modulo a bucket count.
constexpr std::uint32_t ElfHash(std::string_view text) {
  std::uint32_t hash = 0;
  for (char c : text) {
    hash = (hash << 4) + static_cast<unsigned char>(c);
    const std::uint32_t top = hash & 0xF0000000;
    hash = (hash ^ top >> 24) & 0x0FFFFFFF;
  }
  return hash;
}

}  // namespace zvrsit
