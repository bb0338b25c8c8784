// Which command of the program mends what was found.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "findings/finding.h"
#include "web/site_content.h"

namespace zvrsit {

class SiteMgr;

struct Mending {
  std::string program;  // with its options, as a shell takes it: "zvrsit"
  std::string site;     // empty for a folder that is no site: nothing is mended there
  std::string folder;   // of the site, native and with a separator at its end; files are named
                        // with it, so that a command means the same wherever it is run
  // Of the files and fragments ("a.htm#top") that findings suggest, those that nothing links to
  // and that one finding alone suggests.
  std::set<std::string> unlinked;

  // A command line for a shell, ready to be copied. Empty where it is not certain that it does what
  // is meant, and for names that a shell line cannot hold.
  std::string CommandFor(const Finding& finding) const;
};

// Mending::unlinked, from the open site.
std::set<std::string> FindUnlinked(SiteMgr& manager, const FindingReport& report,
                                   const SiteContent& content);

// A word of a command line: for POSIX shells, on Windows for its own. Empty when the text cannot be
// one: it is no UTF-8, or holds control characters.
std::string ShellWord(std::string_view text);

}  // namespace zvrsit
