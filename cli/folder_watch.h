// Tells when the files of a site change.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

struct inotify_event;

namespace zvrsit::cli {

// Throws Failure(kUsage) where the program cannot watch folders.
void NeedFolderWatch();

// Watches folders of Linux, with inotify. It does not say what has changed, only where something
// may have.
class FolderWatch {
 public:
  // Throws Failure(kFileSystem) when the system lets this user watch no more.
  FolderWatch();
  ~FolderWatch();
  FolderWatch(const FolderWatch&) = delete;
  FolderWatch& operator=(const FolderWatch&) = delete;

  using LeavesOut = std::function<bool(const std::filesystem::path& folder)>;
  // From now on watches `root` with all folders below it, except those that are left out and those
  // that are links; the files that links there lead to; these files, which lie elsewhere; and the
  // folders and links on the way to the root and to all of them. What is not there is watched for
  // as well. Gives whether something is watched that was not before: its files may have changed
  // unseen. Throws as above.
  bool Watch(const std::filesystem::path& root, const LeavesOut& leavesOut,
             const std::vector<std::string>& files);
  // Whether folders have come or gone since, so that Watch is to be called again.
  bool foldersMoved() const { return foldersMoved_; }
  // The native paths of the folders in which files have changed since this was asked last, and
  // since then nothing has elsewhere. No value when something may have changed anywhere.
  std::optional<std::vector<std::string>> TakeChangedFolders();

  enum class Met { kChange, kNothing, kReaderGone };
  // Waits until something changes, and then until nothing has changed for a moment, but for less
  // than half a second. kNothing after `milliseconds` (-1 for ever) in which nothing changed;
  // kReaderGone when nobody can read what is printed on stdout any more. An interrupt: Failure, as
  // Interrupts::Check; there must be an object of that class.
  Met Wait(int milliseconds);

 private:
  class Watched;

  bool Note(const inotify_event& event);

  int fd_ = -1;
  bool foldersMoved_ = false;
  bool isChangeAnywhere_ = true;
  std::set<std::string> changedFolders_;
  std::unique_ptr<Watched> watched_;
};

}  // namespace zvrsit::cli
