// The folder slots of a site's profile.
#pragma once

namespace zvrsit {

inline constexpr int kSiteFolderSlots = 10;
// Those that mean something to the library; the others are the application's.
inline constexpr int kSlotDocumentRoot = 0;  // ends in `\`
inline constexpr int kSlotSiteFolder = 1;    // ends in `\`
inline constexpr int kSlotMoreParts = 3;     // like kSlotPageParts: a page may have both
// With the web rules: extensions that a link may leave out (links/folder_documents.h).
inline constexpr int kSlotFallbackExtensions = 6;
inline constexpr int kSlotPageParts = 7;  // where the application saves parts of a page
inline constexpr int kSlotPageTypes = 8;  // a list of extensions (links/page_types.h)
inline constexpr int kSlotLiveUrl = 9;    // the URL under which the site is served

}  // namespace zvrsit
