#include "cli/watch_loop.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "cli/exit_code.h"
#include "cli/folder_watch.h"
#include "cli/interrupts.h"
#include "cli/native_name.h"
#include "cli/output.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;

// How long it waits until it tries again, in milliseconds: for another process, and for files.
constexpr int kForOthers = 200;
constexpr int kForFiles = 2000;
// How long after a change it looks at everything once more. By then no page is so young that an
// update must read it again, as it does with those that were written within the second before it;
// so the next change finds little to do. And what the system has not told of is found.
constexpr int kForAll = 2200;
// The folder of a site may be replaced by another one. So long it can be missing.
constexpr std::chrono::milliseconds kReplacing(1000);

class WatchLoop {
 public:
  WatchLoop(LiveSite& site, const WatchSteps& steps) : site_(site), steps_(steps) {}

  // Until nobody reads stdout any more.
  void Run() {
    Watch();
    while (!Follow()) {
      if (folders_.Wait(retry_) == FolderWatch::Met::kReaderGone) return;
    }
    steps_.begun();
    while (Wait()) {
      if (folders_.foldersMoved()) {
        NeedFolder();
        Watch();
      }
      Follow();
    }
  }

 private:
  // Gives whether something is watched that was not before.
  bool Watch() {
    return folders_.Watch(
        PathOf(site_.folder()), [this](const fs::path& folder) { return site_.LeavesOut(folder); },
        files_);
  }

  bool Wait() {
    met_ = folders_.Wait(retry_);
    return met_ != FolderWatch::Met::kReaderGone;
  }

  // False when it is to be tried again.
  bool Follow() {
    std::unique_lock<std::mutex> lock;
    if (steps_.inUse != nullptr) lock = std::unique_lock(*steps_.inUse);
    for (;;) {
      FindingChange change;
      if (!TryToFollow(change)) return false;
      if (hasBegun_ && !change.isEmpty()) steps_.changed(change);
      const bool isOther = change.filesChanged || !change.isEmpty();
      if (hasBegun_ && isOther && steps_.followed) steps_.followed(change);
      hasBegun_ = true;
      files_ = site_.ListFiles();
      if (!Watch()) break;
      isTrue_ = false;
    }
    told_.clear();
    return true;
  }

  bool TryToFollow(FindingChange& change) {
    const bool wasQuiet = isTrue_ && met_ == FolderWatch::Met::kNothing;
    auto changed = folders_.TakeChangedFolders();
    if (!isTrue_ || wasQuiet) changed.reset();
    isTrue_ = false;
    try {
      change = site_.Follow(changed);
      isTrue_ = true;
      retry_ = wasQuiet ? -1 : kForAll;
      return true;
    } catch (const InUse& failure) {
      retry_ = kForOthers;
      Tell(std::string(failure.what()) + ": waiting for it");
    } catch (const Failure& failure) {
      if (failure.code() != kFileSystem || !hasBegun_) throw;
      retry_ = kForFiles;
      Tell(failure.what());
    }
    return false;
  }

  void Tell(const std::string& what) {
    if (what != told_) Warn(what);
    told_ = what;
  }

  void NeedFolder() {
    std::error_code error;
    const auto end = std::chrono::steady_clock::now() + kReplacing;
    while (!fs::is_directory(PathOf(site_.folder()), error)) {
      if (std::chrono::steady_clock::now() > end) {
        throw Failure(kFileSystem, site_.folder() + ": the site folder is not there any more");
      }
      folders_.Wait(20);
    }
  }

  LiveSite& site_;
  const WatchSteps& steps_;
  FolderWatch folders_;
  std::vector<std::string> files_;  // that the site knows
  bool hasBegun_ = false;
  bool isTrue_ = false;  // only what has happened since is to be looked at
  FolderWatch::Met met_ = FolderWatch::Met::kChange;  // what it has waited for
  int retry_ = -1;    // milliseconds until it is tried again; -1: when something changes
  std::string told_;  // why it waits
};

}  // namespace

bool WatchSite(LiveSite& site, const WatchSteps& steps) {
  NeedFolderWatch();
  const Interrupts interrupts;
  try {
    WatchLoop(site, steps).Run();
  } catch (const Failure& failure) {
    if (failure.code() < kSignal) throw;
    return true;
  }
  return false;
}

}  // namespace zvrsit::cli
