#include "dom/attr.h"

#include <array>

#include "dom/attr_table.h"

namespace zvrsit {
namespace {

constexpr auto kAttrNames = std::to_array<AttrNameTable::Entry>({
    {"action", Attr::kAction},
    {"alt", Attr::kAlt},
    {"archive", Attr::kArchive},
    {"as", Attr::kAs},
    {"background", Attr::kBackground},
    {"charset", Attr::kCharset},
    {"class", Attr::kClass},
    {"clip-path", Attr::kClipPath},
    {"code", Attr::kCode},
    {"codebase", Attr::kCodebase},
    {"content", Attr::kContent},
    {"cursor", Attr::kCursor},
    {"data", Attr::kData},
    {"download", Attr::kDownload},
    {"dynsrc", Attr::kDynsrc},
    {"encoding", Attr::kEncoding},
    {"fill", Attr::kFill},
    {"filter", Attr::kFilter},
    {"formaction", Attr::kFormaction},
    {"href", Attr::kHref},
    {"http-equiv", Attr::kHttpEquiv},
    {"id", Attr::kId},
    {"imagesizes", Attr::kImagesizes},
    {"imagesrcset", Attr::kImagesrcset},
    {"ismap", Attr::kIsmap},
    {"lang", Attr::kLang},
    {"language", Attr::kLanguage},
    {"lowsrc", Attr::kLowsrc},
    {"manifest", Attr::kManifest},
    {"mapfile", Attr::kMapfile},
    {"marker-end", Attr::kMarkerEnd},
    {"marker-mid", Attr::kMarkerMid},
    {"marker-start", Attr::kMarkerStart},
    {"mask", Attr::kMask},
    {"media", Attr::kMedia},
    {"method", Attr::kMethod},
    {"name", Attr::kName},
    {"object", Attr::kObject},
    {"ping", Attr::kPing},
    {"poster", Attr::kPoster},
    {"property", Attr::kProperty},
    {"rel", Attr::kRel},
    {"rev", Attr::kRev},
    {"shadowrootmode", Attr::kShadowrootmode},
    {"sizes", Attr::kSizes},
    {"src", Attr::kSrc},
    {"srcdoc", Attr::kSrcdoc},
    {"srcset", Attr::kSrcset},
    {"stroke", Attr::kStroke},
    {"style", Attr::kStyle},
    {"target", Attr::kTarget},
    {"title", Attr::kTitle},
    {"type", Attr::kType},
    {"usemap", Attr::kUsemap},
    {"value", Attr::kValue},
    {"xlink:href", Attr::kXlinkHref},
    {"cite", Attr::kCite},
});

}  // namespace

constinit const AttrNameTable kAttrNameTable(kAttrNames);

Attr AttrOf(std::string_view name) {
  return kAttrNameTable.Find(MakeNameKey(name), Attr::kOther);
}

std::string_view AttrName(Attr attr) {
  for (const auto& entry : kAttrNames) {
    if (entry.value == attr) return entry.name;
  }
  return {};
}

}  // namespace zvrsit
