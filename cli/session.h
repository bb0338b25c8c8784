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

// The native folder of the database. Throws Failure(kUsage) when no home folder is known.
std::string DatabaseFolder(const Options& options);

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
  const std::string& database() const { return database_; }  // its native folder

  // Opens the site `name`. Throws Failure: kUsage when there is none of that name, kFileSystem
  // when its folder or top file is gone or a table may not be read and written, kDatabase when its
  // tables are damaged.
  void Open(const std::string& name);
  // The same for a rebuild: damaged tables are made anew, and stderr says so.
  void OpenToRebuild(const std::string& name);
  // The same for questions: says on stderr when the site was not rebuilt.
  void OpenToAsk(const std::string& name);
  // Writes everything to disk and closes the site; throws Failure(kFileSystem) when that fails,
  // and the site is one to be rebuilt.
  void Close();
  // The same failure, for tables that could not be written otherwise.
  [[noreturn]] void FailToWrite();
  // Lets go of the site and the database; what was not written is lost.
  void Discard() { manager_.reset(); }

  // How a `\` path is shown: the native path, relative to the site folder when it lies below it.
  std::string Shown(const std::string& path) const;
  // The name of an entry, shown: a path as above, a URL as it stands.
  std::string ShownEntry(const UrlID& id);
  // Whether a `\` path lies below the folder of the open site.
  bool IsInSite(const std::string& path) const { return path.starts_with(siteFolder_); }

  // What the user means by `native`, which is relative to the working folder or to the site folder,
  // or leads to a file of the site through links of the file system.
  //
  // The `\` path of a file of the site that is there; throws Failure: kFileSystem when it is not,
  // kUsage when it lies elsewhere.
  std::string FileOf(const std::string& native) const;
  // An entry of the path table; throws Failure(kUsage) when there is none.
  UrlID EntryOf(const std::string& native);
  // The same, but external URLs are looked at too.
  UrlID TargetOf(const std::string& nativeOrUrl);

 private:
  bool OpenTables(const std::string& name);
  std::string FolderOfTables() const;
  std::vector<std::string> Candidates(const std::string& native) const;
  int FindEntry(const std::string& native);

  std::string database_;  // native
  std::unique_ptr<LockFile> lock_;
  DOM dom_;
  std::unique_ptr<SiteMgr> manager_;
  std::string site_;  // the name of the site that was opened
  std::string siteFolder_;
  std::string nativeSiteFolder_;
};

// The `\` path of a native path made absolute; on Windows in the letter case of the disk, otherwise
// not looked up there. Throws Failure(kUsage) for a name that cannot be held.
std::string AbsolutePath(const std::string& native);
// The same of a folder: it ends in `\`.
std::string FolderPath(const std::string& native);
// The `\` path, below the `\` path `folder`, of a native name that leads into it, also through
// links of the file system; empty when it leads elsewhere.
std::string PathBelow(const std::string& folder, const std::string& native);
// The native form of a `\` path.
std::string NativePath(const std::string& path);
// Takes a string or a list of strings that the library returned; empty for null.
std::string Take(std::string* text);
std::vector<std::string> TakeList(std::vector<std::string*>* list);

}  // namespace zvrsit::cli
