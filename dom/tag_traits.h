// What the names of elements mean to the tokenizer and to the document.
#pragma once

#include <initializer_list>

#include "dom/name_table.h"
#include "dom/tag.h"

namespace zvrsit {

Tag HtmlTagOf(const NameKey& key);
Tag ForeignTagOf(const NameKey& key);

// How the text after a start tag is to be read.
enum class ContentModel : std::uint8_t {
  kData,
  kRcdata,
  kRawText,
  kScriptData,
  kPlainText,
  kCdata,
};

// A set of tags, as bits.
class TagSet {
 public:
  constexpr TagSet(std::initializer_list<Tag> tags) {
    for (const Tag tag : tags) bits_[Index(tag) / 64] |= std::uint64_t{1} << (Index(tag) % 64);
  }
  constexpr bool contains(Tag tag) const {
    return (bits_[Index(tag) / 64] >> (Index(tag) % 64) & 1) != 0;
  }

 private:
  static constexpr std::size_t Index(Tag tag) { return static_cast<std::size_t>(tag); }
  std::array<std::uint64_t, (kTagCount + 63) / 64> bits_{};
};

// HTML elements that never have content.
inline constexpr TagSet kVoidTags{
    Tag::kArea,  Tag::kBase,  Tag::kBasefont, Tag::kBgsound, Tag::kBr,    Tag::kCol,
    Tag::kEmbed, Tag::kFrame, Tag::kHr,       Tag::kImg,     Tag::kInput, Tag::kLink,
    Tag::kMeta,  Tag::kParam, Tag::kSource,   Tag::kTrack,   Tag::kWbr};

// Start tags that end SVG and MathML around them. FONT does so only with certain attributes.
inline constexpr TagSet kBreakoutTags{
    Tag::kB,       Tag::kBig,  Tag::kBlockquote, Tag::kBody,  Tag::kBr,   Tag::kCenter,
    Tag::kCode,    Tag::kDd,   Tag::kDiv,        Tag::kDl,    Tag::kDt,   Tag::kEm,
    Tag::kEmbed,   Tag::kH1,   Tag::kH2,         Tag::kH3,    Tag::kH4,   Tag::kH5,
    Tag::kH6,      Tag::kHead, Tag::kHr,         Tag::kI,     Tag::kImg,  Tag::kLi,
    Tag::kListing, Tag::kMenu, Tag::kMeta,       Tag::kNobr,  Tag::kOl,   Tag::kP,
    Tag::kPre,     Tag::kRuby, Tag::kS,          Tag::kSmall, Tag::kSpan, Tag::kStrike,
    Tag::kStrong,  Tag::kSub,  Tag::kSup,        Tag::kTable, Tag::kTt,   Tag::kU,
    Tag::kUl,      Tag::kVar};

// The content model of an HTML element, with scripting off: NOSCRIPT is ordinary content.
constexpr ContentModel ContentModelOf(Tag tag) {
  switch (tag) {
    case Tag::kTitle:
    case Tag::kTextarea:
      return ContentModel::kRcdata;
    case Tag::kStyle:
    case Tag::kXmp:
    case Tag::kIframe:
    case Tag::kNoembed:
    case Tag::kNoframes:
      return ContentModel::kRawText;
    case Tag::kScript:
      return ContentModel::kScriptData;
    case Tag::kPlaintext:
      return ContentModel::kPlainText;
    default:
      return ContentModel::kData;
  }
}

}  // namespace zvrsit
