// The locks of a manager that shares its database with other processes: bytes of the file `lock` in
// the database folder. The first byte stands for the profiles, each further one for a site.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "platform/file_lock.h"

namespace zvrsit {

class SiteLocks {
 public:
  static constexpr const char* kFile = "lock";  // in the database folder
  static constexpr std::int64_t kProfiles = 0;
  static constexpr std::int64_t OfSite(int siteId) { return std::int64_t{siteId} + 1; }

  // Shared locks for one that only asks, else exclusive ones; `patience` in milliseconds.
  SiteLocks(bool onlyAsks, int patience) : onlyAsks_(onlyAsks), patience_(patience) {}

  // The `\` path of the database folder, and that of the site profiles.
  void SetPaths(const std::string& folder, const std::string& profiles) {
    path_ = folder + kFile;
    profilesPath_ = profiles;
  }
  const std::string& profilesPath() const { return profilesPath_; }
  bool onlyAsks() const { return onlyAsks_; }

  // Takes a lock; or, when it is held already (of whatever kind), counts one more use of it. Gives
  // how many uses there are then, or -1.
  [[nodiscard]] int Hold(std::int64_t byte, bool toAsk = false);
  // Ends one use; the lock is given back with the last.
  void LetGo(std::int64_t byte);
  int Uses(std::int64_t byte) const;

  // Whether the last lock was refused because others hold it.
  bool foundInUse() const { return foundInUse_; }

 private:
  struct Held {
    platform::FileLock lock;
    int uses = 0;
  };

  const bool onlyAsks_;
  const int patience_;
  std::string path_;
  std::string profilesPath_;
  std::map<std::int64_t, Held> held_;
  bool foundInUse_ = false;
};

}  // namespace zvrsit
