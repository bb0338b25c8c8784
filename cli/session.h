// One run of the program on one database: the lock, the manager and the open site.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cli/lock_file.h"
#include "dom/dom.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

// What every command takes.
struct Options {
  std::string database;  // native folder; empty for the user's own
  bool json = false;
};

// Whether a command makes a missing database.
enum class Database { kMustExist, kMake };

class Session {
 public:
  // Locks and opens the database. Throws Failure: kDatabase when it is missing, damaged or in
  // use, kFileSystem when its folder cannot be made.
  Session(const Options& options, Database database);
  // Closes the site if one is open; what a failed command did stays done.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  SiteMgr& manager() { return *manager_; }

  // Opens the site `name`. Throws Failure: kUsage when there is none of that name, kFileSystem
  // when its folder or top file is gone, kDatabase when its tables are damaged.
  void Open(const std::string& name);
  // Writes everything to disk and closes the site; throws Failure(kFileSystem) when that fails.
  void Close();

  // The `\` path of the open site's folder, with its final `\`.
  const std::string& siteFolder() const { return siteFolder_; }
  // How a `\` path is shown: the native path, relative to the site folder when it lies below it.
  std::string Shown(const std::string& path) const;
  // The name of an entry, shown: a path as above, a URL as it stands.
  std::string ShownEntry(const UrlID& id);
  // The `\` path that the user means by `native`: a file below the site folder by its real path
  // or, where there is no such file, a path relative to the site folder.
  std::string PathOf(const std::string& native) const;
  // The same for an entry of the path table; throws Failure(kUsage) when there is none.
  UrlID EntryOf(const std::string& native);

 private:
  bool ProfilesAreReadable();

  std::unique_ptr<LockFile> lock_;
  DOM dom_;
  std::unique_ptr<SiteMgr> manager_;
  std::string siteFolder_;
  std::string nativeSiteFolder_;
};

// The `\` path of a native path made absolute, not looked up on disk. Throws Failure(kUsage) for
// a name that cannot be held.
std::string AbsolutePath(const std::string& native);
// The native form of a `\` path.
std::string NativePath(const std::string& path);
// Takes a string that the library returned; empty for null.
std::string Take(std::string* text);

}  // namespace zvrsit::cli
