// File types: one bit of a 32-bit word, chosen by the extension of a name.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/api.h"

namespace zvrsit {

// The codes are stored in databases and compared with masks of programs. 0x8, 0x4000 and 0x8000
// are left out on purpose.
inline constexpr std::uint32_t FT_OTHER = 0x000001;
inline constexpr std::uint32_t FT_HTML = 0x000002;
inline constexpr std::uint32_t FT_CSS = 0x000004;
inline constexpr std::uint32_t FT_JPEG = 0x000010;
inline constexpr std::uint32_t FT_GIF = 0x000020;
inline constexpr std::uint32_t FT_BMP = 0x000040;
inline constexpr std::uint32_t FT_PNG = 0x000080;
inline constexpr std::uint32_t FT_TIFF = 0x000100;
inline constexpr std::uint32_t FT_MIDI = 0x000200;
inline constexpr std::uint32_t FT_WAV = 0x000400;
inline constexpr std::uint32_t FT_AU = 0x000800;
inline constexpr std::uint32_t FT_JAVA = 0x001000;
inline constexpr std::uint32_t FT_JS = 0x002000;
inline constexpr std::uint32_t FT_TXT = 0x010000;
inline constexpr std::uint32_t FT_CSV = 0x020000;
inline constexpr std::uint32_t FT_CDF = 0x040000;
inline constexpr std::uint32_t FT_XBM = 0x080000;
inline constexpr std::uint32_t FT_FPX = 0x100000;
inline constexpr std::uint32_t FT_PCD = 0x200000;
inline constexpr std::uint32_t FT_MIF = 0x400000;
inline constexpr std::uint32_t FT_DCM = 0x800000;

// The type of a file name, path or URL in the code page. It depends on the text after the last
// single-byte "." of the whole text, in any letter case. FT_OTHER for everything else, and for
// null.
ZVRSIT_API std::uint32_t ClassifyFileType(const char* name);
ZVRSIT_API std::uint32_t ClassifyFileType(std::string_view name);

// Every code above: the mask of all types.
inline constexpr std::uint32_t kAllFileTypes =
    FT_OTHER | FT_HTML | FT_CSS | FT_JPEG | FT_GIF | FT_BMP | FT_PNG | FT_TIFF | FT_MIDI | FT_WAV |
    FT_AU | FT_JAVA | FT_JS | FT_TXT | FT_CSV | FT_CDF | FT_XBM | FT_FPX | FT_PCD | FT_MIF | FT_DCM;

}  // namespace zvrsit
