// Integers on disk: little-endian, whatever the machine is, at any alignment.
#pragma once

#include <cstdint>

namespace zvrsit {

inline std::uint32_t LoadLEU32(const void* bytes) {
  const auto* b = static_cast<const unsigned char*>(bytes);
  return static_cast<std::uint32_t>(b[0]) | static_cast<std::uint32_t>(b[1]) << 8 |
         static_cast<std::uint32_t>(b[2]) << 16 | static_cast<std::uint32_t>(b[3]) << 24;
}

inline void StoreLEU32(void* bytes, std::uint32_t value) {
  auto* b = static_cast<unsigned char*>(bytes);
  b[0] = static_cast<unsigned char>(value);
  b[1] = static_cast<unsigned char>(value >> 8);
  b[2] = static_cast<unsigned char>(value >> 16);
  b[3] = static_cast<unsigned char>(value >> 24);
}

inline std::int32_t LoadLE32(const void* bytes) {
  return static_cast<std::int32_t>(LoadLEU32(bytes));
}

inline void StoreLE32(void* bytes, std::int32_t value) {
  StoreLEU32(bytes, static_cast<std::uint32_t>(value));
}

}  // namespace zvrsit
