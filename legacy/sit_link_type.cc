#include "legacy/sit_link_type.h"

#include "links/link_type.h"

namespace zvrsit {

int SitLinkTypeOf(std::uint32_t linkTypeCode) {
  switch (linkTypeCode) {
    case LT_ANCHOR:
    case LT_SELF_ANCHOR:
      return kSitLinkAnchor;
    case LT_IMG:
    case LT_IMG_USEMAP:
    case LT_IMG_ISMAP:
      return kSitLinkImage;
    case LT_IMG_MAPFILE:
      return kSitLinkMapFile;
    case LT_FRAME:
      return kSitLinkFrame;
    case LT_LINK:
      return kSitLinkLink;
    case LT_CSS_LINK:
      return kSitLinkStyleSheet;
    case LT_BODY_BACKGROUND:
    case LT_TABLE_BACKGROUND:
    case LT_TR_BACKGROUND:
    case LT_TD_BACKGROUND:
    case LT_TH_BACKGROUND:
      return kSitLinkBackground;
    case LT_INPUT:
      return kSitLinkInput;
    case LT_AREA:
      return kSitLinkArea;
    case LT_FORM:
      return kSitLinkForm;
    case LT_SCRIPT:
      return kSitLinkScript;
    case LT_EMBED:
    case LT_APPLET:
    case LT_APPLET_FILE:
      return kSitLinkObject;
    case LT_META_REFRESH:
      return kSitLinkRefresh;
    default:
      return 0;
  }
}

}  // namespace zvrsit
