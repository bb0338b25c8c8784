// Records that are nothing but 32-bit words, to and from the bytes of a file.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "util/little_endian.h"

namespace zvrsit {

template <class Rec>
using WordBytes = std::array<unsigned char, sizeof(Rec)>;

// `Rec` holds signed 32-bit words in file order and nothing else.
template <class Rec>
WordBytes<Rec> StoreWords(const Rec& record) {
  static_assert(std::is_trivially_copyable_v<Rec> && sizeof(Rec) % 4 == 0);
  const auto words = std::bit_cast<std::array<std::int32_t, sizeof(Rec) / 4>>(record);
  WordBytes<Rec> bytes;
  for (std::size_t i = 0; i < words.size(); ++i) StoreLE32(bytes.data() + 4 * i, words[i]);
  return bytes;
}

template <class Rec>
Rec LoadWords(const unsigned char* bytes) {
  std::array<std::int32_t, sizeof(Rec) / 4> words;
  for (std::size_t i = 0; i < words.size(); ++i) words[i] = LoadLE32(bytes + 4 * i);
  return std::bit_cast<Rec>(words);
}

// The same bytes as a payload of an undo cell.
template <class Rec>
std::string WordsAsText(const Rec& record) {
  const WordBytes<Rec> bytes = StoreWords(record);
  return std::string(bytes.begin(), bytes.end());
}

template <class Rec>
[[nodiscard]] bool WordsFromText(std::string_view text, Rec& record) {
  if (text.size() != sizeof(Rec)) return false;
  record = LoadWords<Rec>(reinterpret_cast<const unsigned char*>(text.data()));
  return true;
}

}  // namespace zvrsit
