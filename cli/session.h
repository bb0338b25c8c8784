// One run of the program on one database: the locks, the manager and the open site.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/site_names.h"
#include "dom/dom.h"
#include "findings/output.h"
#include "manager/site_mgr.h"

namespace zvrsit::cli {

// What every command takes.
struct Options {
  std::string database;  // native folder; empty for the user's own
  bool json = false;
  FindingFormat format = FindingFormat::kText;  // of findings; others know text and JSON only
};

// What a command does with the database: it asks it; it changes it; or it also makes it when it is
// missing. With kAsk the database may lie where nothing can be written, and others can ask it at
// the same time.
// kOwn is kMake for one that this process alone knows: nothing is locked, and nothing of a change
// that was cut off is undone.
enum class Database { kAsk, kMustExist, kMake, kOwn };

// How many milliseconds a command waits for what another process uses.
int Patience();
void SetPatience(int milliseconds);

// The native folder of the database. Throws Failure(kUsage) when no home folder is known.
std::string DatabaseFolder(const Options& options);

// The files of the profiles in the folder of a database.
inline constexpr const char* kSiteProfiles = "sites.R";
inline constexpr const char* kServerProfiles = "servers.R";
// The states of a profile.
inline constexpr int kNeverRebuilt = 0;
inline constexpr int kNotWhole = 1;  // the last rebuild or change did not come to its end
inline constexpr int kRebuilt = 2;

// The number under which the database of the older generation is locked. No site has it.
inline constexpr int kOlderDatabase = 1 << 26;
// Throws the Failure for a lock that was refused. The message names `what` of the database in that
// native folder.
[[noreturn]] void FailToLock(const SiteMgr& manager, const std::string& database,
                             const std::string& what);

class Session {
 public:
  // Opens the database and locks its profiles until a site is opened. Throws Failure: kDatabase
  // when it is missing, damaged or in use, kFileSystem when it cannot be made or written.
  Session(const Options& options, Database database);
  // Closes the site if one is open. What a failed command has done by then stays.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  SiteMgr& manager() { return *manager_; }
  const std::string& database() const { return database_; }  // its native folder

  // Opens the site `name`; no other process can use it then, except with kAsk. Throws Failure:
  // kUsage when no site has that name; kFileSystem when its folder or top file is gone, or a table
  // may not be read and written; kDatabase when its tables are damaged or in use.
  void Open(const std::string& name);
  // The same, but false for damaged tables.
  [[nodiscard]] bool OpenIfSound(const std::string& name);
  // The same for questions: also kDatabase when no rebuild or change of the site came to its end.
  void OpenToAsk(const std::string& name);
  // Gives back every lock before an answer is printed. The open site then answers from memory.
  void LetGo();
  // Takes the locks of the open site again. False when its tables are others by now: then it is to
  // be discarded. Throws as Open.
  [[nodiscard]] bool HoldAgain();
  // Writes everything to disk and closes the site; throws Failure(kFileSystem) when that fails. The
  // tables are then what they were.
  void Close();
  // The same after a rebuild or an update, so that the next update knows the tables. It is not
  // waited until the disk has them (unsynced.h).
  void CloseUpdated();
  // The same, and the site stays open.
  void WriteUpdated();
  // The same after nothing but saves, removals and moves of these files.
  void CloseSaved(const std::vector<std::string>& paths);
  // Lets go of the site and the database, and throws the same failure.
  [[noreturn]] void FailToWrite();
  // Marks the site as one to be rebuilt, and throws the failure of a change that the tables were
  // left in the middle of: `what`, with what the system said.
  [[noreturn]] void FailToChange(const std::string& what);
  // Lets go of the site and the database; what was not written is lost.
  void Discard();

  // Keeps others from the site, without opening it, and from the profiles. If a rebuild had
  // finished when it was killed, its files are put in place; one that had not finished is removed.
  // Throws as Open.
  void HoldSite(const std::string& name);
  // Keeps others from the profiles, or lets them in again.
  void HoldProfiles();
  void LetProfilesGo();
  // What was changed in the profiles stays, whatever happens from now on. Throws
  // Failure(kFileSystem).
  void KeepProfiles();
  // Keeps others from the database of the older generation.
  void HoldOlder();
  // The number of the site that was opened or held.
  int number() const { return number_; }
  // The native folder of the tables of a site.
  std::string FolderOfTables(const std::string& name) const;

  // Of the site that was opened.
  const SiteNames& names() const { return names_; }
  // The name of an entry as it is shown: a path as above, a URL unchanged.
  std::string ShownEntry(const UrlID& id);
  // The file that the user means by `native` (SiteNames::Candidates); throws Failure(kUsage) when
  // the site does not know it.
  UrlID EntryOf(const std::string& native);
  // The same, but external URLs are looked at too.
  UrlID TargetOf(const std::string& nativeOrUrl);

 private:
  void OpenDatabase();
  [[nodiscard]] bool OpenProfiles();
  void NeedProfiles(bool areHeld);
  void LockSite(const std::string& name);
  void SetRebuildState(int state);
  void MakeAnew(const std::string& name) const;
  void WriteWith(const std::function<int()>& flush);
  int FindEntry(const std::string& native);

  std::string database_;  // native
  bool onlyAsks_;
  bool isOwn_;
  bool holdsProfiles_ = false;
  int number_ = -1;  // of the site that is locked
  DOM dom_;
  std::unique_ptr<SiteMgr> manager_;
  std::string site_;   // the name of the site that was opened
  std::string stamp_;  // of its tables (StampOfTables), as they are in memory
  SiteNames names_;
};

// Why a change of the tables failed when SiteMgr::IsFull.
inline constexpr const char* kNoRoom = "a table of the site would become longer than 2 GB";

// The system's message for the last call that failed, such as ": No space left on device". Empty
// for failures that also happen on the way to success.
std::string SystemReason();
// Throws Failure(kFileSystem) with `what` and that reason, if there is one.
void ThrowIfSystemFailed(const std::string& what);
// Throws the Failure for a profile that cannot be written; `whose` stands in the message.
[[noreturn]] void FailToWriteProfile(const std::string& whose);

// Takes a string or a list of strings that the library returned; empty for null.
std::string Take(std::string* text);
std::vector<std::string> TakeList(std::vector<std::string*>* list);

}  // namespace zvrsit::cli
