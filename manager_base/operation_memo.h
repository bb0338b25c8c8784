// What one operation (a save, a rebuild) has learned and need not find out again.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <unordered_set>
#include <vector>

#include "dom/code_conv.h"
#include "dom/mapped_file.h"
#include "util/recent_texts.h"
#include "util/url_id.h"

namespace zvrsit {

struct LinkMemo;  // registration/link_memo.h

// Holds for as long as nobody but the operation itself changes the site. SiteMgrBase has one while
// an Operation lives; outside of an operation there is none.
struct OperationMemo {
  // Numbers of paths that are no regular file on disk: the disk is not asked about them again.
  std::unordered_set<std::int32_t> missingPaths;

  // Numbers of the files that were found to be there when something was seen to link to them.
  std::vector<std::int32_t> foundFiles;

  // What the link extraction has resolved and registered; made by it when it first needs it.
  std::shared_ptr<LinkMemo> links;

  // Whether a link to a file was written from a sheet below the page or sheet that was collected.
  bool linkedFromBelow = false;

  // Path numbers of the sheets whose style links stand in the link table.
  std::unordered_set<std::int32_t> registeredSheets;
  // In a rebuild: whether sheets that have the encoding of the page that links them wait for such a
  // page, and the path numbers of those that do.
  bool sheetsWait = false;
  std::vector<std::int32_t> waitingSheets;
  // Path numbers of the files that the last style links lead to. No entry is deleted while links
  // are collected.
  RecentTexts<std::int32_t> styleTargets;

  // The buffers of the page being read, kept from page to page.
  MappedFile pageFile;
  CodeConv pageText;
  // Where the text of the page being read begins in its file; -1 when it had to be converted, so
  // that a place in the text is none in the file.
  std::int64_t textStart = 0;

  // Bytes of the page being read stand for server code (links/server_code.h).
  bool holdsServerCode = false;

  // The place in the file for one in the text of the page being read; -1 where it is not known.
  std::int32_t OffsetInFile(std::int64_t offsetInText) const {
    if (textStart < 0 || offsetInText < 0) return -1;
    const std::int64_t offset = textStart + offsetInText;
    return offset > std::numeric_limits<std::int32_t>::max() ? -1
                                                             : static_cast<std::int32_t>(offset);
  }
};

}  // namespace zvrsit
