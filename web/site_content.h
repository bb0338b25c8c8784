// What the view of a site shows, as far as the tables know it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "exports/site_rows.h"
#include "web/excerpts.h"

namespace zvrsit {

class SiteMgr;

enum class ContentKind : std::uint8_t {
  kPage,
  kSheet,
  kImage,
  kScript,
  kMedia,
  kOther,
  kMissing,  // something refers to it, and it is not there
  kOutside,  // something refers to it, and it lies outside of the site, there or not
};
inline constexpr const char* kContentKindNames[] = {"page",  "sheet", "image",   "script",
                                                    "media", "other", "missing", "outside"};

enum class LinkKind : std::uint8_t { kLink, kImage, kScript, kSheet, kFrame, kMedia, kOther };
inline constexpr const char* kLinkKindNames[] = {"link",  "image", "script", "sheet",
                                                 "frame", "media", "other"};

// Texts in the code page.
struct ContentFile {
  std::string path;     // as findings name it
  std::string title;    // of a page
  std::int32_t folder;  // index into SiteContent::folders; -1: outside of the site
  ContentKind kind;
  bool isFamily = false;      // the home page reaches it
  std::int64_t size = -1;     // bytes; -1: not known
  std::int64_t time = 0;      // seconds since 1970; 0: not known
  std::int64_t weight = 0;    // of a page: the bytes of all files that it loads, and its own
  std::int64_t played = 0;    // of these the sounds and films
  std::int32_t requests = 0;  // how many files these are
};
struct ContentFolder {
  std::string name;
  std::int32_t parent;  // -1 for the first one, the site folder
};
// What asking the server of a URL has come to. Both empty: it was not asked.
struct ContentAnswer {
  std::string state;  // "ok", "moved", "broken" or "unsure"
  std::string words;  // "200", or what is wrong
};
struct ContentUrl {
  std::string text;   // without a password
  std::int32_t host;  // index into SiteContent::hosts; -1: none, as in "mailto:"
  ContentAnswer answer;
};
// All links of one file with the same target and kind.
struct ContentLink {
  std::uint32_t target;  // a file; from files.size() on a URL
  LinkKind kind;
  std::uint32_t times;
};

struct ContentWanted {
  const ExportedSite& site;
  std::string top;                                 // the `\` path of the home page; may be empty
  std::unordered_map<int, ContentAnswer> answers;  // by record number of the URL
};

struct SiteContent {
  std::vector<ContentFolder> folders;  // each behind its parent
  // By path: those of the site, then the missing ones, then those outside.
  std::vector<ContentFile> files;
  std::vector<ContentUrl> urls;
  std::vector<std::string> hosts;  // with their ports
  // By file, target and kind; those of file i begin at firstLink[i] and end at firstLink[i + 1].
  std::vector<ContentLink> links;
  std::vector<std::size_t> firstLink;
  std::vector<std::int32_t> unused;  // files that nothing links to
  std::int32_t home = -1;            // a file; -1: none
  ReferenceOffsets offsets;          // of references to files that are not there
};

// Reads it from the open site; 0, or -1 when a table cannot be read. The family is taken as the
// findings take it, as it stands in the tables.
//
// A page loads its style sheets, scripts, images, frames, objects, sounds and films, and what these
// load: sheets all the fonts that they name. Of the images that SRCSET has to choose from none
// counts beside the one of SRC; of fonts, sounds and films that differ in their extensions alone
// only the smallest.
[[nodiscard]] int ReadContent(SiteMgr& manager, const ContentWanted& wanted, SiteContent& content);

}  // namespace zvrsit
