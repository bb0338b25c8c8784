#include <fmt/core.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fstream>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "cli/exit_code.h"
#include "cli/folder_watch.h"
#include "cli/interrupts.h"

namespace zvrsit::cli {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A burst ends when nothing has come for this long: editors write a file in several steps, one
// right after the other.
constexpr std::chrono::milliseconds kQuiet(20);
// A burst that does not end is looked at nevertheless.
constexpr std::chrono::milliseconds kLongest(300);

// As many links as the system follows for one path.
constexpr int kMostLinks = 40;

constexpr std::uint32_t kEvents = IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_CREATE | IN_DELETE |
                                  IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;

std::string LimitOf(const char* name) {
  std::ifstream file(std::string("/proc/sys/fs/inotify/") + name);
  std::string limit;
  return file >> limit ? ", now " + limit : "";
}

[[noreturn]] void FailToWatch(const char* limit, const std::string& what) {
  throw Failure(kFileSystem, fmt::format("{}: set fs.inotify.{} higher (sysctl){}", what, limit,
                                         LimitOf(limit)));
}

}  // namespace

// What is watched, by the numbers that the system gives.
class FolderWatch::Watched {
 public:
  explicit Watched(int fd) : fd_(fd) {}

  // Begins and ends a listing of what is to be watched. End forgets what was not listed, and gives
  // whether something was that is new.
  void Begin() {
    listed_.clear();
    numbers_.clear();
  }
  bool End() {
    bool isMore = false;
    for (const auto& [number, names] : listed_) {
      const auto before = watched_.find(number);
      isMore |= before == watched_.end() ||
                (!before->second.all &&
                 (names.all || !std::ranges::includes(before->second.some, names.some)));
    }
    for (const auto& [number, names] : watched_) {
      if (!listed_.contains(number)) inotify_rm_watch(fd_, number);
    }
    watched_.swap(listed_);
    return isMore;
  }

  // A folder with all its files and folders. False when it is not there, or cannot be listed.
  bool AddFolder(const fs::path& folder) {
    const int number = Add(folder);
    if (number < 0) return false;
    Names& names = listed_[number];
    names.folder = names.all ? "" : folder.native();  // two paths lead to it
    names.all = true;
    numbers_[folder.native()] = number;
    return true;
  }
  // What lies at this absolute path, or will: each folder and each link on the way, where it leads.
  void AddPath(const fs::path& path) {
    const fs::path rest = path.relative_path();
    std::deque<fs::path> parts(rest.begin(), rest.end());
    fs::path at = path.root_path();
    for (int links = 0; !parts.empty() && links <= kMostLinks;) {
      const fs::path part = std::move(parts.front());
      parts.pop_front();
      if (part == "..") at = at.parent_path();
      if (part.empty() || part == "." || part == "..") continue;
      AddName(at, part);
      std::error_code none;
      const fs::path target = fs::read_symlink(at / part, none);
      if (none) {
        at /= part;
        continue;
      }
      ++links;
      const fs::path lead = target.relative_path();
      parts.insert(parts.begin(), lead.begin(), lead.end());
      if (target.is_absolute()) at = target.root_path();
    }
  }

  // A file that may lie in a folder that is watched.
  void AddFile(const fs::path& file) {
    const auto found = numbers_.find(file.parent_path().native());
    const bool isKnown = found != numbers_.end() && found->second >= 0;
    if (!isKnown || !listed_[found->second].all) AddPath(file);
  }

  // What an event says.
  struct Met {
    bool isChange = false;
    bool foldersMoved = false;
    std::string folder;  // where files have changed; empty when they may have anywhere
  };
  Met Meet(const inotify_event& event) {
    if ((event.mask & IN_Q_OVERFLOW) != 0) return {true, true, {}};
    const auto found = watched_.find(event.wd);
    if (found == watched_.end()) return {};
    const std::string_view name = event.len > 0 ? event.name : "";
    const bool isSelf = name.empty();
    const Names& names = found->second;
    if (!names.all && !isSelf && !names.some.contains(name)) return {};
    const bool foldersMoved = isSelf || (event.mask & IN_ISDIR) != 0 || !names.all;
    Met met{true, foldersMoved, foldersMoved ? std::string() : names.folder};
    if ((event.mask & IN_IGNORED) != 0) watched_.erase(found);
    return met;
  }

 private:
  struct Names {
    bool all = false;
    std::string folder;  // with `all`
    std::set<std::string, std::less<>> some;
  };

  // A name in a folder, which may not be there.
  void AddName(const fs::path& folder, const fs::path& name) {
    const auto [entry, isNew] = numbers_.try_emplace(folder.native(), -1);
    if (isNew) entry->second = Add(folder);
    if (entry->second < 0) return;
    Names& names = listed_[entry->second];
    if (!names.all) names.some.insert(name.native());
  }
  int Add(const fs::path& folder) {
    const int number =
        inotify_add_watch(fd_, folder.c_str(), kEvents | IN_ONLYDIR | IN_EXCL_UNLINK);
    if (number < 0 && errno == ENOSPC) {
      FailToWatch("max_user_watches", folder.native() + ": no more folders can be watched");
    }
    return number;
  }

  const int fd_;
  std::unordered_map<int, Names> watched_;
  std::unordered_map<int, Names> listed_;
  std::unordered_map<std::string, int> numbers_;  // of the listed ones; -1: not there
};

void NeedFolderWatch() {}

FolderWatch::FolderWatch() : fd_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (fd_ < 0) FailToWatch("max_user_instances", "no folders can be watched");
  watched_ = std::make_unique<Watched>(fd_);
}

FolderWatch::~FolderWatch() {
  close(fd_);
}

bool FolderWatch::Watch(const fs::path& root, const LeavesOut& leavesOut,
                        const std::vector<std::string>& files) {
  foldersMoved_ = false;
  watched_->Begin();
  // Without a separator at its end.
  std::vector<fs::path> folders{(root / ".").lexically_normal().parent_path()};
  std::error_code error;
  while (!folders.empty()) {
    const fs::path folder = std::move(folders.back());
    folders.pop_back();
    if (!watched_->AddFolder(folder)) continue;
    for (auto entry = fs::directory_iterator(folder, error);
         !error && entry != fs::directory_iterator(); entry.increment(error)) {
      std::error_code unknown;
      if (entry->is_symlink(unknown)) {
        watched_->AddPath(entry->path());
      } else if (entry->is_directory(unknown) && !leavesOut(entry->path())) {
        folders.push_back(entry->path());
      }
    }
  }
  // Nobody tells a folder that one above it was moved.
  watched_->AddPath(root);
  for (const std::string& file : files) watched_->AddFile(file);
  return watched_->End();
}

namespace {

// While this lives, signals wait; Poll lets them in.
class SignalsWait {
 public:
  SignalsWait() {
    sigset_t all;
    sigemptyset(&all);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&all, signal);
    pthread_sigmask(SIG_BLOCK, &all, &before_);
  }
  ~SignalsWait() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsWait(const SignalsWait&) = delete;
  SignalsWait& operator=(const SignalsWait&) = delete;

  // False when `milliseconds` (-1 for ever) have gone by. Throws as Interrupts::Check.
  bool Poll(std::array<pollfd, 2>& files, std::chrono::milliseconds time) const {
    Interrupts::Check();
    const auto count = time.count();
    const timespec limit{static_cast<time_t>(count / 1000),
                         static_cast<long>(count % 1000) * 1000000};
    const int ready = ppoll(files.data(), files.size(), count < 0 ? nullptr : &limit, &before_);
    if (ready < 0) Interrupts::Check();
    return ready > 0;
  }

 private:
  sigset_t before_;
};

}  // namespace

bool FolderWatch::Note(const inotify_event& event) {
  Watched::Met met = watched_->Meet(event);
  foldersMoved_ |= met.foldersMoved;
  if (met.isChange && met.folder.empty()) isChangeAnywhere_ = true;
  if (met.isChange && !isChangeAnywhere_) changedFolders_.insert(std::move(met.folder));
  return met.isChange;
}

std::optional<std::vector<std::string>> FolderWatch::TakeChangedFolders() {
  std::vector<std::string> folders(changedFolders_.begin(), changedFolders_.end());
  changedFolders_.clear();
  if (std::exchange(isChangeAnywhere_, false)) return std::nullopt;
  return folders;
}

FolderWatch::Met FolderWatch::Wait(int milliseconds) {
  const SignalsWait signals;
  // Of stdout only errors are told.
  std::array<pollfd, 2> files{{{fd_, POLLIN, 0}, {STDOUT_FILENO, 0, 0}}};
  alignas(inotify_event) std::array<char, 64 * 1024> events;
  bool isChange = false;
  Clock::time_point first;
  for (;;) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(first + kLongest - Clock::now());
    const std::chrono::milliseconds patience =
        isChange ? std::clamp(left, std::chrono::milliseconds(0), kQuiet)
                 : std::chrono::milliseconds(milliseconds);
    if (!signals.Poll(files, patience)) return isChange ? Met::kChange : Met::kNothing;
    if ((files[1].revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) return Met::kReaderGone;
    const bool wasChange = isChange;
    const ssize_t count = read(fd_, events.data(), events.size());
    for (ssize_t at = 0; at < count;) {
      const auto* const event = reinterpret_cast<const inotify_event*>(events.data() + at);
      isChange |= Note(*event);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    }
    if (isChange && !wasChange) first = Clock::now();
    if (isChange && Clock::now() >= first + kLongest) return Met::kChange;
  }
}

}  // namespace zvrsit::cli
