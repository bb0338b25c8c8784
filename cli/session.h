// One run of the program on one database: the locks, the manager and the open site.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dom/dom.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

// What every command takes.
struct Options {
  std::string database;  // native folder; empty for the user's own
  bool json = false;
};

// What a command does with the database: asks it, changes it, or also makes it when it is missing.
// Only asked, it may lie where nothing can be written, and others can ask it at the same time.
enum class Database { kAsk, kMustExist, kMake };

// The native folder of the database. Throws Failure(kUsage) when no home folder is known.
std::string DatabaseFolder(const Options& options);

// The number, of no site, under which the database of the older generation is locked.
constexpr int kOlderDatabase = 1 << 26;
// Throws the Failure for a lock that was not had, on `what` of the database in that native folder.
[[noreturn]] void FailToLock(const SiteMgr& manager, const std::string& database,
                             const std::string& what);

class Session {
 public:
  // Opens the database and locks its profiles until a site is opened. Throws Failure: kDatabase
  // when it is missing, damaged or in use, kFileSystem when it cannot be made or written.
  Session(const Options& options, Database database);
  // Closes the site if one is open; what a failed command did stays done.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  SiteMgr& manager() { return *manager_; }
  const std::string& database() const { return database_; }  // its native folder

  // Opens the site `name`, to itself unless the database is only asked. Throws Failure: kUsage when
  // there is none of that name, kFileSystem when its folder or top file is gone or a table may not
  // be read and written, kDatabase when its tables are damaged or in use.
  void Open(const std::string& name);
  // The same, but false for damaged tables.
  bool OpenIfSound(const std::string& name);
  // The same for questions: kDatabase also when no rebuild or change of the site came to its end.
  void OpenToAsk(const std::string& name);
  // Gives back every lock before an answer is printed: an open site answers on from memory.
  void LetGo();
  // Writes everything to disk and closes the site; throws Failure(kFileSystem) when that fails. A
  // site whose tables are not written to the end is one to be rebuilt.
  void Close();
  // The same failure, for tables that could not be written otherwise.
  [[noreturn]] void FailToWrite();
  // Lets go of the site and the database; what was not written is lost.
  void Discard();

  // Keeps others from the site without opening it, and from the profiles; puts in place what a
  // rebuild had finished when it was killed, and removes what it had not. Throws as Open.
  void HoldSite(const std::string& name);
  // Keeps others from the profiles, or lets them in again.
  void HoldProfiles();
  void LetProfilesGo();
  // Keeps others from the database of the older generation.
  void HoldOlder();
  // The number of the site that was opened or held.
  int number() const { return number_; }
  // The native folder of the tables of a site.
  std::string FolderOfTables(const std::string& name) const;

  // How a `\` path is shown: the native path, relative to the site folder when it lies below it.
  std::string Shown(const std::string& path) const;
  // The same of a native path.
  std::string ShownNative(const std::string& native) const;
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
  void OpenDatabase();
  bool OpenProfiles();
  void NeedProfiles(bool areHeld);
  void LockSite(const std::string& name);
  std::vector<std::string> Candidates(const std::string& native) const;
  int FindEntry(const std::string& native);

  std::string database_;  // native
  bool onlyAsks_;
  bool holdsProfiles_ = false;
  int number_ = -1;  // of the site that is locked
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
// Throws Failure(kFileSystem) when what failed last was the system's doing, such as a full disk:
// with `what` and what the system says.
void ThrowIfSystemFailed(const std::string& what);
// Throws the Failure for a profile that cannot be written; `whose` stands in the message.
[[noreturn]] void FailToWriteProfile(const std::string& whose);

// Takes a string or a list of strings that the library returned; empty for null.
std::string Take(std::string* text);
std::vector<std::string> TakeList(std::vector<std::string*>* list);

}  // namespace zvrsit::cli
