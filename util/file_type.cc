#include "util/file_type.h"

#include <algorithm>
#include <array>

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

struct ExtensionType {
  std::uint64_t extension;
  std::uint32_t type;
  constexpr bool operator<(const ExtensionType& other) const { return extension < other.extension; }
};

// In the order of the packed extensions.
constexpr auto kTypes = [] {
  std::array types = std::to_array<ExtensionType>({
      {Pack("htm"), FT_HTML},   {Pack("html"), FT_HTML},  {Pack("shtm"), FT_HTML},
      {Pack("shtml"), FT_HTML}, {Pack("jpeg"), FT_JPEG},  {Pack("jpg"), FT_JPEG},
      {Pack("jpe"), FT_JPEG},   {Pack("gif"), FT_GIF},    {Pack("bmp"), FT_BMP},
      {Pack("tif"), FT_TIFF},   {Pack("tiff"), FT_TIFF},  {Pack("png"), FT_PNG},
      {Pack("mid"), FT_MIDI},   {Pack("midi"), FT_MIDI},  {Pack("wav"), FT_WAV},
      {Pack("au"), FT_AU},      {Pack("class"), FT_JAVA}, {Pack("jar"), FT_JAVA},
      {Pack("css"), FT_CSS},    {Pack("js"), FT_JS},      {Pack("txt"), FT_TXT},
      {Pack("csv"), FT_CSV},    {Pack("cdf"), FT_CDF},    {Pack("xbm"), FT_XBM},
      {Pack("fpx"), FT_FPX},    {Pack("pcd"), FT_PCD},    {Pack("mif"), FT_MIF},
      {Pack("dcm"), FT_DCM},
  });
  std::sort(types.begin(), types.end());
  return types;
}();

std::uint32_t TypeOfExtension(std::uint64_t extension) {
  const auto found =
      std::lower_bound(kTypes.begin(), kTypes.end(), ExtensionType{extension, FT_OTHER});
  return found != kTypes.end() && found->extension == extension ? found->type : FT_OTHER;
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
