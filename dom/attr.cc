#include "dom/attr.h"

#include <array>

#include "dom/attr_table.h"

namespace zvrsit {
namespace {

constexpr auto kNames = std::to_array<AttrNameTable::Entry>({
    {"action", Attr::kAction},
    {"alt", Attr::kAlt},
    {"archive", Attr::kArchive},
    {"as", Attr::kAs},
    {"background", Attr::kBackground},
    {"charset", Attr::kCharset},
    {"cite", Attr::kCite},
    {"class", Attr::kClass},
    {"classid", Attr::kClassid},
    {"code", Attr::kCode},
    {"codebase", Attr::kCodebase},
    {"content", Attr::kContent},
    {"data", Attr::kData},
    {"download", Attr::kDownload},
    {"dynsrc", Attr::kDynsrc},
    {"encoding", Attr::kEncoding},
    {"formaction", Attr::kFormaction},
    {"href", Attr::kHref},
    {"hreflang", Attr::kHreflang},
    {"http-equiv", Attr::kHttpEquiv},
    {"icon", Attr::kIcon},
    {"id", Attr::kId},
    {"imagesizes", Attr::kImagesizes},
    {"imagesrcset", Attr::kImagesrcset},
    {"ismap", Attr::kIsmap},
    {"itemid", Attr::kItemid},
    {"itemtype", Attr::kItemtype},
    {"lang", Attr::kLang},
    {"language", Attr::kLanguage},
    {"longdesc", Attr::kLongdesc},
    {"lowsrc", Attr::kLowsrc},
    {"manifest", Attr::kManifest},
    {"mapfile", Attr::kMapfile},
    {"media", Attr::kMedia},
    {"method", Attr::kMethod},
    {"name", Attr::kName},
    {"object", Attr::kObject},
    {"ping", Attr::kPing},
    {"pluginspage", Attr::kPluginspage},
    {"poster", Attr::kPoster},
    {"profile", Attr::kProfile},
    {"property", Attr::kProperty},
    {"rel", Attr::kRel},
    {"rev", Attr::kRev},
    {"shadowrootmode", Attr::kShadowrootmode},
    {"sizes", Attr::kSizes},
    {"src", Attr::kSrc},
    {"srcdoc", Attr::kSrcdoc},
    {"srcset", Attr::kSrcset},
    {"style", Attr::kStyle},
    {"target", Attr::kTarget},
    {"title", Attr::kTitle},
    {"type", Attr::kType},
    {"usemap", Attr::kUsemap},
    {"value", Attr::kValue},
    {"xlink:href", Attr::kXlinkHref},
    {"xml:base", Attr::kXmlBase},
});

}  // namespace

constinit const AttrNameTable kAttrNameTable(kNames);

Attr AttrOf(std::string_view name) {
  return kAttrNameTable.Find(MakeNameKey(name), Attr::kOther);
}

std::string_view AttrName(Attr attr) {
  for (const auto& entry : kNames) {
    if (entry.value == attr) return entry.name;
  }
  return {};
}

}  // namespace zvrsit
