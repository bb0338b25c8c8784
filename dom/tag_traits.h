// What the names of elements mean to the tokenizer and to the document.
#pragma once

#include <initializer_list>

#include "dom/name_table.h"
#include "dom/tag.h"

namespace zvrsit {

using HtmlNameTable = NameTable<Tag, 256>;
extern const HtmlNameTable kHtmlNameTable;

Tag HtmlTagOf(const NameKey& key);
Tag ForeignTagOf(const NameKey& key);
// The tag of a name in a text with at least eight readable bytes from there on.
inline Tag HtmlTagOfPadded(const char* name, std::size_t length) {
  return kHtmlNameTable.FindPadded(name, length, Tag::kOther);
}

// How the text after a start tag is to be read.
enum class ContentModel : std::uint8_t {
  kData,
  kRcdata,
  kRawText,
  kScriptData,
  kPlainText,
  kCdata,
};

class TagSet {
 public:
  constexpr TagSet(std::initializer_list<Tag> tags) {
    for (const Tag tag : tags) has_[static_cast<std::size_t>(tag)] = true;
  }
  constexpr bool contains(Tag tag) const { return has_[static_cast<std::size_t>(tag)]; }

 private:
  std::array<bool, kTagCount> has_{};
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

// The content models of HTML elements, with scripting off: NOSCRIPT is ordinary content.
inline constexpr std::array<ContentModel, kTagCount> kContentModels = [] {
  std::array<ContentModel, kTagCount> models{};
  const auto set = [&](ContentModel model, std::initializer_list<Tag> tags) {
    for (const Tag tag : tags) models[static_cast<std::size_t>(tag)] = model;
  };
  set(ContentModel::kRcdata, {Tag::kTitle, Tag::kTextarea});
  set(ContentModel::kRawText,
      {Tag::kStyle, Tag::kXmp, Tag::kIframe, Tag::kNoembed, Tag::kNoframes});
  set(ContentModel::kScriptData, {Tag::kScript});
  set(ContentModel::kPlainText, {Tag::kPlaintext});
  return models;
}();

constexpr ContentModel ContentModelOf(Tag tag) {
  return kContentModels[static_cast<std::size_t>(tag)];
}

}  // namespace zvrsit
