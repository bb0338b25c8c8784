#include "exports/words.h"

#include <iterator>

#include "links/link_type.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

struct WordOfTypes {
  std::uint32_t types;  // an OR of codes
  const char* word;
};

constexpr WordOfTypes kFileWords[] = {
    {FT_HTML, "page"},
    {FT_CSS, "style sheet"},
    {FT_JPEG | FT_GIF | FT_BMP | FT_PNG | FT_TIFF | FT_XBM | FT_FPX | FT_PCD, "image"},
    {FT_MIDI | FT_WAV | FT_AU, "sound"},
    {FT_JS, "script"},
    {FT_JAVA, "applet"},
    {FT_TXT, "text"},
    {FT_CSV, "table"},
};
constexpr WordOfTypes kLinkWords[] = {
    {LT_ANCHOR | LT_AREA, "link"},
    {LT_SELF_ANCHOR, "link within the page"},
    {LT_LINK, "link element"},
    {LT_META_REFRESH, "redirect"},
    {LT_IMG | LT_IMG_USEMAP | LT_IMG_ISMAP | LT_SRCSET, "image"},
    {LT_IMG_MAPFILE, "image map"},
    {LT_BODY_BACKGROUND | LT_TABLE_BACKGROUND | LT_TR_BACKGROUND | LT_TD_BACKGROUND |
         LT_TH_BACKGROUND,
     "background"},
    {LT_FRAME | LT_IFRAME, "frame"},
    {LT_FORM | LT_FORMACTION, "form"},
    {LT_INPUT, "image button"},
    {LT_SCRIPT, "script"},
    {LT_APPLET | LT_APPLET_FILE, "applet"},
    {LT_EMBED | LT_OBJECT, "embedded object"},
    {LT_MEDIA, "media"},
    {LT_SVG, "drawing"},
    {LT_CSS_LINK, "style sheet"},
    {LT_CSS_IMPORT, "imported style sheet"},
    {LT_CSS_IMAGE, "image of a style sheet"},
    {LT_CSS_OTHER, "file of a style sheet"},
};

template <std::size_t kCount>
const char* WordOf(const WordOfTypes (&words)[kCount], std::uint32_t type, const char* other) {
  for (const WordOfTypes& row : words) {
    if ((row.types & type) != 0) return row.word;
  }
  return other;
}

}  // namespace

const char* WordOfFileType(std::uint32_t type) {
  return WordOf(kFileWords, type, "file");
}

const char* WordOfLinkType(std::uint32_t type) {
  return WordOf(kLinkWords, type, "reference");
}

}  // namespace zvrsit
