#include "legacy/sit_link_type.h"

#include "links/link_type.h"

namespace zvrsit {

namespace {

struct TypePair {
  std::uint32_t types;  // codes of the newer generation
  int type;
};

constexpr TypePair kTypes[] = {
    {LT_ANCHOR | LT_SELF_ANCHOR, kSitLinkAnchor},
    {LT_IMG | LT_IMG_USEMAP | LT_IMG_ISMAP, kSitLinkImage},
    {LT_IMG_MAPFILE, kSitLinkMapFile},
    {LT_FRAME, kSitLinkFrame},
    {LT_LINK, kSitLinkLink},
    {LT_CSS_LINK, kSitLinkStyleSheet},
    {LT_BODY_BACKGROUND | LT_TABLE_BACKGROUND | LT_TR_BACKGROUND | LT_TD_BACKGROUND |
         LT_TH_BACKGROUND,
     kSitLinkBackground},
    {LT_INPUT, kSitLinkInput},
    {LT_AREA, kSitLinkArea},
    {LT_FORM, kSitLinkForm},
    {LT_SCRIPT, kSitLinkScript},
    {LT_EMBED | LT_APPLET | LT_APPLET_FILE, kSitLinkObject},
    {LT_META_REFRESH, kSitLinkRefresh},
};

}  // namespace

int SitLinkTypeOf(std::uint32_t linkTypeCode) {
  for (const TypePair& pair : kTypes) {
    if ((pair.types & linkTypeCode) != 0) return pair.type;
  }
  return 0;
}

}  // namespace zvrsit
