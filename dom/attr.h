// The attribute names that the document resolves once, while it is read.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/api.h"

namespace zvrsit {

enum class Attr : std::uint16_t {
  kOther,
  kAction,
  kAlt,
  kArchive,
  kAs,
  kBackground,
  kCharset,
  kClass,
  kClipPath,
  kCode,
  kCodebase,
  kContent,
  kCursor,
  kData,
  kDownload,
  kDynsrc,
  kEncoding,
  kFill,
  kFilter,
  kFormaction,
  kHref,
  kHttpEquiv,
  kId,
  kImagesizes,
  kImagesrcset,
  kIsmap,
  kLang,
  kLanguage,
  kLowsrc,
  kManifest,
  kMapfile,
  kMarkerEnd,
  kMarkerMid,
  kMarkerStart,
  kMask,
  kMedia,
  kMethod,
  kName,
  kObject,
  kPing,
  kPoster,
  kProperty,
  kRel,
  kRev,
  kShadowrootmode,
  kSizes,
  kSrc,
  kSrcdoc,
  kSrcset,
  kStroke,
  kStyle,
  kTarget,
  kTitle,
  kType,
  kUsemap,
  kValue,
  kXlinkHref,
  kCite,
  kCount
};

inline constexpr std::size_t kAttrCount = static_cast<std::size_t>(Attr::kCount);

// The number of an attribute name in any ASCII case; kOther for a name without one.
ZVRSIT_API Attr AttrOf(std::string_view name);

// The name in lower case, "" for kOther.
ZVRSIT_API std::string_view AttrName(Attr attr);

}  // namespace zvrsit
