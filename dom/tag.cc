#include "dom/tag.h"

#include <array>

#include "dom/tag_traits.h"

namespace zvrsit {
namespace {

using ForeignTable = NameTable<Tag, 64>;

constexpr auto kHtmlNames = std::to_array<HtmlNameTable::Entry>({
    {"a", Tag::kA},
    {"applet", Tag::kApplet},
    {"area", Tag::kArea},
    {"audio", Tag::kAudio},
    {"b", Tag::kB},
    {"base", Tag::kBase},
    {"basefont", Tag::kBasefont},
    {"bgsound", Tag::kBgsound},
    {"big", Tag::kBig},
    {"blockquote", Tag::kBlockquote},
    {"body", Tag::kBody},
    {"br", Tag::kBr},
    {"button", Tag::kButton},
    {"caption", Tag::kCaption},
    {"center", Tag::kCenter},
    {"code", Tag::kCode},
    {"col", Tag::kCol},
    {"dd", Tag::kDd},
    {"del", Tag::kDel},
    {"div", Tag::kDiv},
    {"dl", Tag::kDl},
    {"dt", Tag::kDt},
    {"em", Tag::kEm},
    {"embed", Tag::kEmbed},
    {"font", Tag::kFont},
    {"form", Tag::kForm},
    {"frame", Tag::kFrame},
    {"frameset", Tag::kFrameset},
    {"h1", Tag::kH1},
    {"h2", Tag::kH2},
    {"h3", Tag::kH3},
    {"h4", Tag::kH4},
    {"h5", Tag::kH5},
    {"h6", Tag::kH6},
    {"head", Tag::kHead},
    {"hr", Tag::kHr},
    {"html", Tag::kHtml},
    {"i", Tag::kI},
    {"iframe", Tag::kIframe},
    {"img", Tag::kImg},
    {"input", Tag::kInput},
    {"ins", Tag::kIns},
    {"li", Tag::kLi},
    {"link", Tag::kLink},
    {"listing", Tag::kListing},
    {"map", Tag::kMap},
    {"menu", Tag::kMenu},
    {"meta", Tag::kMeta},
    {"nobr", Tag::kNobr},
    {"noembed", Tag::kNoembed},
    {"noframes", Tag::kNoframes},
    {"noscript", Tag::kNoscript},
    {"object", Tag::kObject},
    {"ol", Tag::kOl},
    {"option", Tag::kOption},
    {"p", Tag::kP},
    {"param", Tag::kParam},
    {"picture", Tag::kPicture},
    {"plaintext", Tag::kPlaintext},
    {"pre", Tag::kPre},
    {"q", Tag::kQ},
    {"ruby", Tag::kRuby},
    {"s", Tag::kS},
    {"script", Tag::kScript},
    {"select", Tag::kSelect},
    {"small", Tag::kSmall},
    {"source", Tag::kSource},
    {"span", Tag::kSpan},
    {"strike", Tag::kStrike},
    {"strong", Tag::kStrong},
    {"style", Tag::kStyle},
    {"sub", Tag::kSub},
    {"sup", Tag::kSup},
    {"table", Tag::kTable},
    {"tbody", Tag::kTbody},
    {"td", Tag::kTd},
    {"template", Tag::kTemplate},
    {"textarea", Tag::kTextarea},
    {"tfoot", Tag::kTfoot},
    {"th", Tag::kTh},
    {"thead", Tag::kThead},
    {"title", Tag::kTitle},
    {"tr", Tag::kTr},
    {"track", Tag::kTrack},
    {"tt", Tag::kTt},
    {"u", Tag::kU},
    {"ul", Tag::kUl},
    {"var", Tag::kVar},
    {"video", Tag::kVideo},
    {"wbr", Tag::kWbr},
    {"xmp", Tag::kXmp},
    {"image", Tag::kImg},
    {"svg", Tag::kSvg},
    {"math", Tag::kMath},
});

constexpr auto kForeignNames = std::to_array<ForeignTable::Entry>({
    {"svg", Tag::kSvg},
    {"math", Tag::kMath},
    {"a", Tag::kSvgA},
    {"feimage", Tag::kFeImage},
    {"image", Tag::kImage},
    {"use", Tag::kUse},
    {"script", Tag::kSvgScript},
    {"style", Tag::kSvgStyle},
    {"title", Tag::kSvgTitle},
    {"desc", Tag::kSvgDesc},
    {"foreignobject", Tag::kForeignObject},
    {"mi", Tag::kMi},
    {"mo", Tag::kMo},
    {"mn", Tag::kMn},
    {"ms", Tag::kMs},
    {"mtext", Tag::kMtext},
    {"annotation-xml", Tag::kAnnotationXml},
});

constexpr ForeignTable kForeignTable(kForeignNames);

}  // namespace

constinit const HtmlNameTable kHtmlNameTable(kHtmlNames);

Tag HtmlTagOf(const NameKey& key) {
  return kHtmlNameTable.Find(key, Tag::kOther);
}
Tag ForeignTagOf(const NameKey& key) {
  return kForeignTable.Find(key, Tag::kOther);
}
Tag HtmlTagOf(std::string_view name) {
  return HtmlTagOf(MakeNameKey(name));
}
Tag ForeignTagOf(std::string_view name) {
  return ForeignTagOf(MakeNameKey(name));
}

std::string_view TagName(Tag tag) {
  for (const auto& entry : kHtmlNames) {
    if (entry.value == tag) return entry.name;
  }
  for (const auto& entry : kForeignNames) {
    if (entry.value == tag) return entry.name;
  }
  return {};
}

}  // namespace zvrsit
