#include "links/link_type.h"

#include <cstring>

namespace zvrsit {
namespace {

struct NamedType {
  std::uint32_t type;
  const char* name;
};

constexpr NamedType kNamedTypes[] = {
    {LT_IFRAME, "LT_IFRAME"},
    {LT_META_REFRESH, "LT_META_REFRESH"},
    {LT_BODY_BACKGROUND, "LT_BODY_BACKGROUND"},
    {LT_TABLE_BACKGROUND, "LT_TABLE_BACKGROUND"},
    {LT_TR_BACKGROUND, "LT_TR_BACKGROUND"},
    {LT_TD_BACKGROUND, "LT_TD_BACKGROUND"},
    {LT_ANCHOR, "LT_ANCHOR"},
    {LT_OBJECT, "LT_OBJECT"},
    {LT_LINK, "LT_LINK"},
    {LT_IMG, "LT_IMG"},
    {LT_IMG_USEMAP, "LT_IMG_USEMAP"},
    {LT_IMG_ISMAP, "LT_IMG_ISMAP"},
    {LT_FRAME, "LT_FRAME"},
    {LT_APPLET, "LT_APPLET"},
    {LT_INPUT, "LT_INPUT"},
    {LT_FORM, "LT_FORM"},
    {LT_SCRIPT, "LT_SCRIPT"},
    {LT_AREA, "LT_AREA"},
    {LT_EMBED, "LT_EMBED"},
    {LT_MEDIA, "LT_MEDIA"},
    {LT_CSS_OTHER, "LT_CSS_OTHER"},
    {LT_CSS_LINK, "LT_CSS_LINK"},
    {LT_CSS_IMPORT, "LT_CSS_IMPORT"},
    {LT_CSS_IMAGE, "LT_CSS_IMAGE"},
    {LT_SELF_ANCHOR, "LT_SELF_ANCHOR"},
    {LT_TH_BACKGROUND, "LT_TH_BACKGROUND"},
    {LT_IMG_MAPFILE, "LT_IMG_MAPFILE"},
    {LT_APPLET_FILE, "LT_APPLET_FILE"},
    {LT_SRCSET, "LT_SRCSET"},
    {LT_FORMACTION, "LT_FORMACTION"},
    {LT_SVG, "LT_SVG"},
    {LT_META_URL, "LT_META_URL"},
    {LT_CITE, "LT_CITE"},
    {LT_LINKED_DATA, "LT_LINKED_DATA"},
    {LT_IMPORT_MAP, "LT_IMPORT_MAP"},
    {LT_SPECULATION, "LT_SPECULATION"},
    {LT_MANIFEST, "LT_MANIFEST"},
    {LT_SITEMAP, "LT_SITEMAP"},
    {LT_REDIRECT, "LT_REDIRECT"},
};

}  // namespace

const char* LinkTypeName(std::uint32_t type) {
  for (const NamedType& named : kNamedTypes) {
    if (named.type == type) return named.name;
  }
  return "LT_UNKNOWN";
}

std::uint32_t LinkTypeOfName(const char* name) {
  for (const NamedType& named : kNamedTypes) {
    if (std::strcmp(named.name, name) == 0) return named.type;
  }
  return 0;
}

}  // namespace zvrsit
