// What one operation (a save, a rebuild) has learned and need not find out again.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_set>
#include <vector>

#include "links/page_file.h"
#include "util/url_id.h"

namespace zvrsit {

class KeptPlaces;
class ServedFiles;  // links/served_files.h
struct LinkMemo;    // registration/link_memo.h

// What makes the links of a file depend on more than the file and on whether its targets are there.
// Bits of OperationMemo::traits.
enum SiteTraits : std::uint32_t {
  kListsFolders = 1,  // an applet, which links to all files of a folder
  kMindsFolders = 2,  // a reference that counts only while there is no folder of its name
  // A style sheet with another extension, outside of the site, or that a rule of `_redirects`
  // replaces.
  kReadsOddSheets = 4,
  kSharesEncodings = 8,  // a style sheet with references that takes its encoding from others
};

// It is right as long as only the operation itself changes the site. SiteMgrBase has one while an
// Operation lives; outside of an operation there is none.
struct OperationMemo {
  // Numbers of paths that are no regular file on disk; the disk is not asked about them again.
  std::unordered_set<std::int32_t> missingPaths;

  // Numbers of the files that were found to be there because something links to them.
  std::vector<std::int32_t> foundFiles;

  // What the server of the site answers with; null without RuleFlags::findsFolderDocuments.
  std::shared_ptr<ServedFiles> served;

  // What the link extraction has resolved and registered. It makes this when it first needs it.
  std::shared_ptr<LinkMemo> links;

  // Takes the places of broken links; null when nobody wants them.
  KeptPlaces* places = nullptr;

  // What was met by now (SiteTraits).
  std::uint32_t traits = 0;

  // Whether a link to a file was written from a sheet below the page or sheet that was collected.
  bool linkedFromBelow = false;

  // Path numbers of the sheets whose style links stand in the link table.
  std::unordered_set<std::int32_t> registeredSheets;
  // In a rebuild: whether sheets that take their encoding from a page wait until such a page comes;
  // and the path numbers of those that wait.
  bool sheetsWait = false;
  std::vector<std::int32_t> waitingSheets;

  // The page being read, kept from page to page for its memory.
  PageFile page;
};

}  // namespace zvrsit
