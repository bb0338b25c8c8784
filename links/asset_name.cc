#include "links/asset_name.h"

#include <algorithm>
#include <iterator>

#include "links/page_types.h"

namespace zvrsit {

bool IsAssetName(std::string_view path) {
  constexpr std::string_view kExtensions[] = {
      "png",  "jpg", "jpeg",  "gif",  "svg", "webp", "avif", "ico",
      "css",  "js",  "mjs",   "json", "xml", "txt",  "pdf",  "zip",
      "woff", "ttf", "woff2", "mp3",  "mp4", "webm", "ogg",  "webmanifest"};
  return std::ranges::find(kExtensions, ExtensionOf(path)) != std::end(kExtensions);
}

}  // namespace zvrsit
