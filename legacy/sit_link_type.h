// Link types of the older generation.
#pragma once

#include <cstdint>

#include "platform/api.h"

namespace zvrsit {

// What a link record says of its reference, 1 to 13:
//
//   type  reference                                            link-type codes of the pages' reader
//      1  A HREF                                               LT_ANCHOR, LT_SELF_ANCHOR
//      2  IMG SRC, with or without a map                       LT_IMG, LT_IMG_USEMAP, LT_IMG_ISMAP
//      3  IMG MAPFILE                                          LT_IMG_MAPFILE
//      4  FRAME SRC                                            LT_FRAME
//      5  LINK HREF that is no style sheet                     LT_LINK
//      6  LINK HREF with REL=STYLESHEET                        LT_CSS_LINK
//      7  BACKGROUND of BODY, TABLE, TR, TD, TH                LT_*_BACKGROUND
//      8  INPUT SRC                                            LT_INPUT
//      9  AREA HREF                                            LT_AREA
//     10  FORM ACTION                                          LT_FORM
//     11  SCRIPT SRC                                           LT_SCRIPT
//     12  EMBED SRC, APPLET, every file of an APPLET's folder  LT_EMBED, LT_APPLET, LT_APPLET_FILE
//     13  META refresh                                         LT_META_REFRESH
enum SitLinkType : int {
  kSitLinkAnchor = 1,
  kSitLinkImage = 2,
  kSitLinkMapFile = 3,
  kSitLinkFrame = 4,
  kSitLinkLink = 5,
  kSitLinkStyleSheet = 6,
  kSitLinkBackground = 7,
  kSitLinkInput = 8,
  kSitLinkArea = 9,
  kSitLinkForm = 10,
  kSitLinkScript = 11,
  kSitLinkObject = 12,
  kSitLinkRefresh = 13,
};

inline constexpr int kSitLinkFirst = kSitLinkAnchor;
inline constexpr int kSitLinkLast = kSitLinkRefresh;

inline bool IsLinkType(int type) {
  return type >= kSitLinkFirst && type <= kSitLinkLast;
}

// The type of an LT_ code; 0 for a reference that the older generation does not record.
ZVRSIT_API int SitLinkTypeOf(std::uint32_t linkTypeCode);

}  // namespace zvrsit
