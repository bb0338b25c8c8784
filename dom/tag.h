// The element names that the document knows, each with a number of its own.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/api.h"

namespace zvrsit {

// An HTML element has the tag of its name; `image` is an `img`, as in browsers. An element of SVG
// or MathML never has the tag of an HTML element: those that matter have tags of their own, and all
// others are kOther. So the elements of Tag::kA are exactly the HTML ones.
enum class Tag : std::uint16_t {
  kOther,
  // HTML.
  kA,
  kApplet,
  kArea,
  kAudio,
  kB,
  kBase,
  kBasefont,
  kBgsound,
  kBig,
  kBlockquote,
  kBody,
  kBr,
  kButton,
  kCaption,
  kCenter,
  kCode,
  kCol,
  kDd,
  kDel,
  kDiv,
  kDl,
  kDt,
  kEm,
  kEmbed,
  kFont,
  kForm,
  kFrame,
  kFrameset,
  kH1,
  kH2,
  kH3,
  kH4,
  kH5,
  kH6,
  kHead,
  kHr,
  kHtml,
  kI,
  kIframe,
  kImg,
  kInput,
  kIns,
  kLi,
  kLink,
  kListing,
  kMap,
  kMenu,
  kMeta,
  kNobr,
  kNoembed,
  kNoframes,
  kNoscript,
  kObject,
  kOl,
  kOption,
  kP,
  kParam,
  kPicture,
  kPlaintext,
  kPre,
  kQ,
  kRuby,
  kS,
  kScript,
  kSelect,
  kSmall,
  kSource,
  kSpan,
  kStrike,
  kStrong,
  kStyle,
  kSub,
  kSup,
  kTable,
  kTbody,
  kTd,
  kTemplate,
  kTextarea,
  kTfoot,
  kTh,
  kThead,
  kTitle,
  kTr,
  kTrack,
  kTt,
  kU,
  kUl,
  kVar,
  kVideo,
  kWbr,
  kXmp,
  // Foreign.
  kSvg,
  kMath,
  kSvgA,
  kFeImage,
  kImage,  // SVG
  kUse,    // SVG
  kSvgScript,
  kSvgStyle,
  kSvgTitle,
  kSvgDesc,
  kForeignObject,
  kMi,
  kMo,
  kMn,
  kMs,
  kMtext,
  kAnnotationXml,
  kCount
};

inline constexpr std::size_t kTagCount = static_cast<std::size_t>(Tag::kCount);

// The tag of an HTML element's name, in any ASCII case; kOther for a name without one. `svg` and
// `math` count as HTML here: it is there that they begin.
ZVRSIT_API Tag HtmlTagOf(std::string_view name);
// The same inside SVG or MathML.
ZVRSIT_API Tag ForeignTagOf(std::string_view name);

// The name in lower case, "" for kOther.
ZVRSIT_API std::string_view TagName(Tag tag);

}  // namespace zvrsit
