#include "util/file_type.h"

#include "platform/single_byte.h"
#include "util/mb_string.h"

namespace zvrsit {
namespace {

constexpr std::size_t kLongestExtension = 5;
constexpr std::uint64_t kEmptyPack = 1;  // keeps texts apart that differ in leading zero bytes

// The bytes of a short text as one number, so that an extension is compared in one step.
constexpr std::uint64_t Pack(std::string_view text) {
  std::uint64_t packed = kEmptyPack;
  for (char c : text) packed = packed << 8 | static_cast<unsigned char>(c);
  return packed;
}

// No extension in the table holds a byte above 0x7F. So an extension with a double-byte character
// matches none, even though its trail bytes are made lower case too.
std::uint64_t PackLowered(std::string_view text) {
  std::uint64_t packed = kEmptyPack;
  for (const char c : text) {
    packed = packed << 8 | static_cast<unsigned char>(platform::LowerAscii(c));
  }
  return packed;
}

std::uint32_t TypeOfExtension(std::uint64_t extension) {
  switch (extension) {
    case Pack("htm"):
    case Pack("html"):
    case Pack("shtm"):
    case Pack("shtml"):
      return FT_HTML;
    case Pack("jpeg"):
    case Pack("jpg"):
    case Pack("jpe"):
      return FT_JPEG;
    case Pack("gif"):
      return FT_GIF;
    case Pack("bmp"):
      return FT_BMP;
    case Pack("tif"):
    case Pack("tiff"):
      return FT_TIFF;
    case Pack("png"):
      return FT_PNG;
    case Pack("mid"):
    case Pack("midi"):
      return FT_MIDI;
    case Pack("wav"):
      return FT_WAV;
    case Pack("au"):
      return FT_AU;
    case Pack("class"):
    case Pack("jar"):
      return FT_JAVA;
    case Pack("css"):
      return FT_CSS;
    case Pack("js"):
      return FT_JS;
    case Pack("txt"):
      return FT_TXT;
    case Pack("csv"):
      return FT_CSV;
    case Pack("cdf"):
      return FT_CDF;
    case Pack("xbm"):
      return FT_XBM;
    case Pack("fpx"):
      return FT_FPX;
    case Pack("pcd"):
      return FT_PCD;
    case Pack("mif"):
      return FT_MIF;
    case Pack("dcm"):
      return FT_DCM;
    default:
      return FT_OTHER;
  }
}

}  // namespace

std::uint32_t ClassifyFileType(std::string_view name) {
  // This is the last "." of the whole text, folders included: `dir.old\readme` is FT_OTHER.
  const std::size_t dot = FindLastCharMB(name, '.');
  if (dot == std::string_view::npos) return FT_OTHER;
  const std::string_view extension = name.substr(dot + 1);
  if (extension.size() > kLongestExtension) return FT_OTHER;
  return TypeOfExtension(PackLowered(extension));
}

std::uint32_t ClassifyFileType(const char* name) {
  return name ? ClassifyFileType(std::string_view(name)) : FT_OTHER;
}

}  // namespace zvrsit
