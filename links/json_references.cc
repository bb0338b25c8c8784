#include "links/json_references.h"

#include <algorithm>
#include <iterator>

#include "links/asset_name.h"
#include "links/json_strings.h"
#include "links/link_type.h"
#include "links/page_types.h"
#include "links/url_text.h"
#include "util/ascii.h"
#include "util/file_type.h"

namespace zvrsit {
namespace {

constexpr std::string_view kManifestPaths[] = {"start_url",
                                               "scope",
                                               "icons[].src",
                                               "screenshots[].src",
                                               "shortcuts[].url",
                                               "shortcuts[].icons[].src",
                                               "share_target.action",
                                               "serviceworker.src",
                                               "file_handlers[].action",
                                               "related_applications[].url",
                                               "note_taking.new_note_url"};

// Names of linked data whose texts are addresses, if they look like one.
constexpr std::string_view kLinkedDataNames[] = {
    "@id",       "url",          "image",  "logo",       "contentUrl",       "thumbnailUrl",
    "thumbnail", "embedUrl",     "sameAs", "item",       "mainEntityOfPage", "downloadUrl",
    "license",   "installUrl",   "photo",  "screenshot", "relatedLink",      "significantLink",
    "hasMap",    "discussionUrl"};

template <std::size_t kSize>
bool Holds(const std::string_view (&names)[kSize], std::string_view name) {
  return std::ranges::find(names, name) != std::end(names);
}

bool IsAbsolute(std::string_view text) {
  const std::string_view scheme = SchemeOf(text);
  return text.starts_with("//") ||
         (IsHttp(scheme) && text.substr(scheme.size()).starts_with("://"));
}

bool IsPathWithSlash(std::string_view text) {
  return text.starts_with("/") || text.starts_with("./") || text.starts_with("../");
}

// Whether a name of a file can be told from any other text by its extension.
bool LooksLikeFile(std::string_view text) {
  const std::string_view path = WithoutQueryAndFragment(text);
  return ClassifyFileType(path) != FT_OTHER || IsAssetName(path);
}

// The innermost name of a path, without the brackets of a list.
std::string_view LastName(std::string_view path) {
  while (path.ends_with("[]")) path.remove_suffix(2);
  return path.substr(path.rfind('.') + 1);
}

bool IsLinkedAddress(std::string_view path, std::string_view text) {
  const std::string_view name = LastName(path);
  if (!Holds(kLinkedDataNames, name) || path.find("@context") != std::string_view::npos) {
    return false;
  }
  // Braces stand in templates of addresses.
  if (text.find_first_of(" \t\r\n{}<>\"") != std::string_view::npos) return false;
  if (IsAbsolute(text)) return true;
  return name == "@id" ? text.starts_with("/") : IsPathWithSlash(text) || LooksLikeFile(text);
}

bool IsModuleAddress(std::string_view path, std::string_view text) {
  if (!path.starts_with("imports.") && !path.starts_with("scopes.")) return false;
  return IsPathWithSlash(text) || !SchemeOf(text).empty();
}

bool IsReference(JsonKind kind, std::string_view path, std::string_view text) {
  if (text.empty()) return false;
  switch (kind) {
    case JsonKind::kManifest:
      return Holds(kManifestPaths, path);
    case JsonKind::kLinkedData:
      return IsLinkedAddress(path, text);
    case JsonKind::kImportMap:
      return IsModuleAddress(path, text);
    case JsonKind::kSpeculationRules:
      return path == "prefetch[].urls[]" || path == "prerender[].urls[]";
  }
  return false;
}

constexpr DataBlock kDataBlocks[] = {
    {"application/ld+json", JsonKind::kLinkedData, LT_LINKED_DATA},
    {"importmap", JsonKind::kImportMap, LT_IMPORT_MAP},
    {"speculationrules", JsonKind::kSpeculationRules, LT_SPECULATION},
};

}  // namespace

const DataBlock* DataBlockOf(std::string_view type) {
  const auto found = std::ranges::find_if(
      kDataBlocks, [type](const DataBlock& block) { return EqualsLower(type, block.type); });
  return found != std::end(kDataBlocks) ? found : nullptr;
}

std::vector<JsonReference> ReadJsonReferences(JsonKind kind, std::string_view text) {
  std::vector<JsonReference> references;
  bool hasBase = false;
  const auto visit = [&](std::string_view path, const std::string& string, std::size_t offset) {
    hasBase |= kind == JsonKind::kLinkedData && path.ends_with("@base");
    if (!IsReference(kind, path, string)) return;
    const bool isPrefix =
        path == "scope" || (kind == JsonKind::kImportMap && string.ends_with('/'));
    references.push_back({string, offset, isPrefix});
  };
  if (!ReadJsonStrings(text, visit)) return {};
  // What another base makes of relative addresses is not known.
  if (hasBase)
    std::erase_if(references, [](const auto& found) { return !IsAbsolute(found.target); });
  return references;
}

}  // namespace zvrsit
