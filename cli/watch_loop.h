// Keeping a site true for as long as the user wants it.
#pragma once

#include <functional>
#include <mutex>

#include "cli/live_site.h"

namespace zvrsit::cli {

struct WatchSteps {
  // Called once, when the database is up to date and everything is watched.
  std::function<void()> begun;
  // Called whenever findings have changed since; no lock of the database is held then.
  std::function<void(const FindingChange& change)> changed;
  // Called whenever files have changed; may be empty.
  std::function<void(const FindingChange& change)> followed = nullptr;
  // Held while the site is used, and the steps are called; null for none.
  std::mutex* inUse = nullptr;
};

// Returns true when a signal has ended it, false when nobody reads stdout any more. Where another
// process uses the site, or a file of it cannot be read or written, it says so once, waits and
// tries again. Throws Failure: kUsage where no folders can be watched, and when the site is taken
// out of the database or gets another name; kDatabase when the database is gone or damaged;
// kFileSystem when the folder of the site is gone for longer than a moment, or no more folders can
// be watched.
bool WatchSite(LiveSite& site, const WatchSteps& steps);

}  // namespace zvrsit::cli
