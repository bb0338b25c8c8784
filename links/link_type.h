// Link-type codes: one bit per kind of reference, and two for the last kinds. They stand in link
// records and are OR-ed into masks by callers, so a value never changes.
#pragma once

#include <cstdint>

#include "platform/api.h"

namespace zvrsit {

inline constexpr std::uint32_t LT_META_REFRESH = 0x2;
inline constexpr std::uint32_t LT_BODY_BACKGROUND = 0x4;
inline constexpr std::uint32_t LT_TABLE_BACKGROUND = 0x8;  // web rules: of THEAD, TBODY, TFOOT too
inline constexpr std::uint32_t LT_TR_BACKGROUND = 0x10;
inline constexpr std::uint32_t LT_TD_BACKGROUND = 0x20;
inline constexpr std::uint32_t LT_ANCHOR = 0x40;
inline constexpr std::uint32_t LT_LINK = 0x100;        // LINK HREF that is no style sheet
inline constexpr std::uint32_t LT_IMG = 0x200;         // IMG SRC, no map
inline constexpr std::uint32_t LT_IMG_USEMAP = 0x400;  // IMG SRC with USEMAP, ISMAP or not
inline constexpr std::uint32_t LT_IMG_ISMAP = 0x800;   // IMG SRC with ISMAP alone
inline constexpr std::uint32_t LT_FRAME = 0x1000;
inline constexpr std::uint32_t LT_APPLET = 0x2000;  // ARCHIVE, else CODE, on CODEBASE
inline constexpr std::uint32_t LT_INPUT = 0x4000;
inline constexpr std::uint32_t LT_FORM = 0x8000;
inline constexpr std::uint32_t LT_SCRIPT = 0x10000;
inline constexpr std::uint32_t LT_AREA = 0x20000;
inline constexpr std::uint32_t LT_EMBED = 0x40000;
inline constexpr std::uint32_t LT_CSS_OTHER = 0x100000;  // style sheets: any other reference
inline constexpr std::uint32_t LT_CSS_LINK = 0x200000;
inline constexpr std::uint32_t LT_CSS_IMPORT = 0x400000;
inline constexpr std::uint32_t LT_CSS_IMAGE = 0x800000;
inline constexpr std::uint32_t LT_SELF_ANCHOR = 0x1000000;  // A HREF with "#" into its own page
inline constexpr std::uint32_t LT_TH_BACKGROUND = 0x2000000;
inline constexpr std::uint32_t LT_IMG_MAPFILE = 0x4000000;  // IMG MAPFILE of an ISMAP image
inline constexpr std::uint32_t LT_APPLET_FILE = 0x8000000;  // a file of an applet's code base

// Read under LinkRules::Web only. Bit 31 stays free: link types travel as signed words.
inline constexpr std::uint32_t LT_IFRAME = 0x1;
inline constexpr std::uint32_t LT_OBJECT = 0x80;        // OBJECT DATA
inline constexpr std::uint32_t LT_MEDIA = 0x80000;      // VIDEO, AUDIO, SOURCE, TRACK SRC; POSTER
inline constexpr std::uint32_t LT_SRCSET = 0x10000000;  // SRCSET, IMAGESRCSET: one per candidate
inline constexpr std::uint32_t LT_FORMACTION = 0x20000000;  // of BUTTON and INPUT; PING
inline constexpr std::uint32_t LT_SVG = 0x40000000;         // href, xlink:href in SVG

// Likewise; there was no bit left. Each is a pair of kinds that it resembles, so a mask that wants
// one of the two has it.
inline constexpr std::uint32_t LT_META_URL = LT_LINK | LT_META_REFRESH;    // og:image and its like
inline constexpr std::uint32_t LT_CITE = LT_LINK | LT_ANCHOR;              // CITE
inline constexpr std::uint32_t LT_LINKED_DATA = LT_LINK | LT_SCRIPT;       // JSON-LD
inline constexpr std::uint32_t LT_IMPORT_MAP = LT_SCRIPT | LT_IFRAME;      // SCRIPT TYPE=importmap
inline constexpr std::uint32_t LT_SPECULATION = LT_SCRIPT | LT_ANCHOR;     // speculationrules
inline constexpr std::uint32_t LT_MANIFEST = LT_LINK | LT_IMG;             // of a web app manifest
inline constexpr std::uint32_t LT_SITEMAP = LT_ANCHOR | LT_AREA;           // of it and robots.txt
inline constexpr std::uint32_t LT_REDIRECT = LT_ANCHOR | LT_META_REFRESH;  // of `_redirects`

// The name of a code as it is written above ("LT_ANCHOR"); "LT_UNKNOWN" for any other number.
ZVRSIT_API const char* LinkTypeName(std::uint32_t type);
// The code of a name; 0 when there is none of that name.
ZVRSIT_API std::uint32_t LinkTypeOfName(const char* name);

}  // namespace zvrsit
