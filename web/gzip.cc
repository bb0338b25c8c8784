#include "web/gzip.h"

#include <cstdint>
#include <new>

#if defined(ZVRSIT_HAS_ZLIB)
#include <zlib.h>
#endif

namespace zvrsit {

#if defined(ZVRSIT_HAS_ZLIB)
std::string Gzip(std::string_view bytes) {
  constexpr int kGzip = 15 + 16;  // the largest window, and the header of gzip
  z_stream stream{};
  if (deflateInit2(&stream, 4, Z_DEFLATED, kGzip, 9, Z_DEFAULT_STRATEGY) != Z_OK) {
    throw std::bad_alloc();
  }
  std::string zipped(deflateBound(&stream, static_cast<uLong>(bytes.size())), '\0');
  // The library takes what it reads from by a pointer to bytes that could change.
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(zipped.data());
  stream.avail_out = static_cast<uInt>(zipped.size());
  deflate(&stream, Z_FINISH);
  zipped.resize(stream.total_out);
  deflateEnd(&stream);
  return zipped;
}
#else
std::string Gzip(std::string_view bytes) {
  return std::string(bytes);
}
#endif

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text((bytes.size() + 2) / 3 * 4, '=');
  std::size_t out = 0;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t three = 0;
    for (std::size_t k = i; k < i + 3; ++k) {
      three = three << 8 | (k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0U);
    }
    const std::size_t digits = bytes.size() - i < 3 ? bytes.size() - i + 1 : 4;
    for (std::size_t k = 0; k < digits; ++k) text[out + k] = kDigits[three >> (18 - 6 * k) & 63];
    out += 4;
  }
  return text;
}

}  // namespace zvrsit
