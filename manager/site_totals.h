// How much a site holds.
#pragma once

namespace zvrsit {

struct SiteTotals {
  int files = 0;   // of the site, on disk
  int pages = 0;   // among them; drawings that are read for links do not count
  int sheets = 0;  // among them
  int links = 0;   // link records
  int urls = 0;    // external URLs
};

}  // namespace zvrsit
