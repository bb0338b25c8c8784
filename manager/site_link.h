// One link, and where it stands, as plain values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "links/link_place.h"
#include "util/url_id.h"

namespace zvrsit {

struct SiteLink {
  UrlID from;              // the page or sheet
  UrlID to;                // a file (kind 2) or a URL (kind 3)
  std::uint32_t type = 0;  // one of the LT_ codes of links/link_type.h
  int count = 0;           // how often the page has it
  // Where the value of its first occurrence begins in the file of the page, in bytes. -1 when this
  // is not known: without RuleFlags::storesOffsets, or when the file had to be converted into the
  // code page.
  int offset = -1;
  std::string text;         // as written in the page
  std::string alt;          // the alternative text; empty for none
  bool exists = false;      // a URL, or a file of the site that is there
  bool outside = false;     // a file that does not lie below the site folder
  bool unservable = false;  // a file of a name that no server has: it holds %2F, %5C or %00
};

// A link whose fragment names nothing in the page that it leads to.
struct MissingFragment {
  int link = -1;         // number of the link record
  std::string fragment;  // percent-decoded
};

// A name that a fragment can lead to: the ID of an element, or the NAME of an A.
struct PageId {
  std::string text;  // character references decoded
  bool isName = false;
  LinkPlace place;  // where the value begins
};

// An ID that stands in one page more than once.
struct RepeatedId {
  int page = -1;  // number of its path
  std::string id;
  std::vector<LinkPlace> places;  // in the order of the page
};

}  // namespace zvrsit
