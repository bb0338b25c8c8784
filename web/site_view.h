// What the view of a site shows, as JSON. The modules of web/view read it.
//
// Texts are in UTF-8, with bytes that are no UTF-8 as in findings/escapes.h. Lists that belong
// together are columns: the row i of `files` is files.folder[i], files.name[i] and so on. Every
// index counts from 0.
//
// { "version": 1, "program": "0.2.0", "made": "2026-11-22T20:15:00Z", "live": false,
//   "site": {"name": "demo", "folder": "/home/ann/www/", "rules": "web"|"classic", "baseUrl": "",
//            "home": file or -1},       // the name is empty for a folder that is no site
//   "editor": "" or the address that opens a place, with {path}, {line} and {column} in it,
//   "siteAddress": "" or where the program serves the files of the site,
//   "totals": {"files", "pages", "sheets", "links", "urls", "errors", "warnings", "places"},
//   "stale": {"changed": [name...], "gone": [...], "new": [...], "unread": [...]},
//                                       // how the disk differs from what the database knows
//   "fileKinds": ["page", ...], "linkKinds": ["link", ...],
//   "folders": {"name": ["", "news", ...], "parent": [-1, 0, ...]},   // 0 is the site folder
//   "files": {"folder": [...],          // -1 for a file outside of the site
//             "name": [...],            // in its folder; of a file outside the whole path
//             "kind": [index into fileKinds...],
//             "size": [bytes, -1 not known], "time": [seconds since 1970, 0 not known],
//             "family": [1 where the home page reaches it, else 0], "title": [...],
//             "weight": [...], "played": [...], "requests": [...]},   // of pages, see
//                                                                     // web/site_content.h
//             // those of the site, then missing ones, then those outside, each by path
//   "hosts": ["example.org", ...],
//   "urls": {"text": [...], "host": [index into hosts...],
//            "state": ["" not asked, "ok", "moved", "broken" or "unsure"...],
//            "result": ["" not asked, "200", or what is wrong, in words]},
//   "links": {"count": [how many of file 0, 1, ...], "target": [...], "kind": [...],
//             "times": [...]},
//             // for each file its targets, ascending: the first as it is, then differences; a
//             // target is a file, or from files.name.length on a URL. Several links with the same
//             // target and kind are one, and `times` says how many.
//   "findings": [{"id", "rule", "severity", "target", "targetFile": as in links or -1, "message",
//                 "suggestion", "command",
//                 "places": [[file, line, column, "reference", index into excerpts or -1]...]}...],
//             // line and column count from 1; 0 for a file as a whole. A suggestion and a command
//             // may be empty. The id of a finding stays the same from run to run.
//   "excerpts": [["text", offset, length]...],  // a part of a line of a page, and where the
//                                               // reference stands in it, in UTF-16 units
//   "unused": [file...],                        // files that nothing links to
//   "since": null or {"made", "totals", "added": [index into findings...],
//                     "mended": [{"rule", "severity", "target", "message"}...]} }
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "findings/finding.h"
#include "web/earlier_report.h"
#include "web/mending.h"
#include "web/site_content.h"

namespace zvrsit {

// What the tables do not say about a site.
struct ViewedSite {
  std::string name;  // empty for a folder that is no site
  std::string folder;
  std::string baseUrl;
  bool isClassic = false;
  std::string made;                // when, in UTC: 2026-11-22T20:15:00Z
  std::vector<std::string> rules;  // those that it was held against
  // Of a view that the program serves:
  bool isLive = false;
  std::string editor{};
  std::string siteAddress{};
};

struct SiteView {
  ViewedSite site;
  SiteContent content;
  FindingReport report;
  Mending mending;
  std::optional<EarlierReport> earlier;  // for "since"
};

// The JSON above. Reads the pages that have findings, for their lines.
std::string SiteViewJson(const SiteView& view);

// "totals" of it.
std::string TotalsJson(const FindingReport& report);

}  // namespace zvrsit
