// What is wrong with a site: one model, whatever it is shown as.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "findings/rules.h"
#include "manager/site_totals.h"

namespace zvrsit {

// One place where a finding stands.
struct FindingPlace {
  std::string file;       // native, relative to the site folder
  int line = 0;           // from 1; 0: the file as a whole, or a place that is not known
  int column = 0;         // in characters, from 1
  std::string reference;  // as written there; empty where the finding is not about a reference
};

// One thing that is wrong, with every place where it appears: a missing script is one finding,
// however many pages load it.
struct Finding {
  Rule rule = Rule::kMissingFile;
  Severity severity = Severity::kError;
  std::string target;      // what the reference means: a file as above, a URL, or "#" and an ID
  std::string message;     // what is wrong, in words
  std::string suggestion;  // what is likely meant: a file as above, or "#" and an ID; may be empty
  std::vector<FindingPlace> places;  // not empty, by file, line and column
};

// What was found in one site.
struct FindingReport {
  std::string folder;  // native and absolute, with its separator at the end
  // How the user names its files: "" for that folder itself, else the path to it from the working
  // folder, with a separator at the end.
  std::string prefix;
  SiteTotals totals;
  // Where the report may be incomplete, because the disk differs from what was read: files that
  // have changed, are gone or are new since then, and pages that were not read. Files are named as
  // above; those outside, in full.
  std::vector<std::string> changed;
  std::vector<std::string> gone;
  std::vector<std::string> added;
  std::vector<std::string> unread;
  double seconds = 0;             // that it took
  std::vector<Finding> findings;  // by first place, then by rule and target

  // How many findings are of a severity.
  std::size_t Count(Severity severity) const;
  // How many places all findings have.
  std::size_t CountPlaces() const;
};

}  // namespace zvrsit
