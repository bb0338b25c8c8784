// One run of the program on a database of the older generation, which lies in the folder `legacy`
// of the database and has a lock of its own.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/older_copy.h"
#include "cli/output.h"
#include "cli/session.h"
#include "legacy/sit_mgr.h"
#include "legacy/sit_peeper.h"

namespace zvrsit::cli {

// The folder of the older database in that of the newer one.
inline constexpr const char* kOlderFolder = "legacy";

// One link of an older site, with the names as they are shown.
struct LegacyLink {
  std::string from;
  std::string to;
  int kind = 0;  // of the target: 2 a file, 3 a URL
  int type = 0;  // 1 to 13
  std::string text;
  std::string alt;
  bool exists = false;
};

class LegacySession {
 public:
  // As Session; kMake makes both databases. It works on a copy. What is changed in it is in the
  // database only after Commit: all of it, or nothing.
  LegacySession(const Options& options, Database database);
  // Without a Commit before, all is as it was.
  ~LegacySession();
  LegacySession(const LegacySession&) = delete;
  LegacySession& operator=(const LegacySession&) = delete;

  SitMgr& manager() { return *manager_; }
  // The newer generation of the same database; not with kAsk.
  Session& newer() { return *newer_; }
  // Gives another manager access to the profiles.
  void Share(SitMgrBase& other) const;

  // The profile of a site; throws Failure(kUsage) when there is none of that name.
  SitSiteProperty Profile(const std::string& name);
  // Whether any of a site's files is there: a rebuild makes them.
  bool HasFiles(const std::string& name);
  // Opens a site; throws Failure: kUsage as above, kDatabase when one of its files is missing, is
  // damaged or cannot be opened.
  void Open(const std::string& name);
  // Throws Failure(kDatabase) when the list of a site's files cannot be read, is not whole, or was
  // never made.
  void NeedToPeep(SitPeeper& peeper, const std::string& name);
  // Opens a site for a rebuild. Missing files are made. Damaged files that cannot be opened are
  // made again, and stderr says so.
  void OpenToRebuild(const std::string& name);
  // Throws Failure(kFileSystem) when the folder of the open site is not there.
  void NeedFolder() const;
  // Closes the site, and puts everything that was changed into the database. Throws
  // Failure(kFileSystem) when the files cannot be written.
  void Commit();
  // Throws the same failure, after an operation of the manager that has failed.
  [[noreturn]] void FailToWrite();
  // Ends everything but names(), before an answer is printed. Then others can change the database.
  void LetGo();

  // Of the site that was opened.
  const SiteNames& names() const { return names_; }
  // The path, or the URL, of the entry that the user means by `native` (SiteNames::Candidates);
  // throws Failure(kUsage) when the site does not know it.
  std::string EntryOf(const std::string& native);

  // Calls `each` for every link, or for those from or to an entry; an empty text means any.
  using EachLink = std::function<void(const LegacyLink&)>;
  void ForEachLink(const std::string& from, const std::string& to, const EachLink& each);

 private:
  void HoldNewer(const Options& options, const std::filesystem::path& older);
  std::vector<std::string> FilesOf(const std::string& name);
  std::string Native(const std::string& file) const;
  void Bring(const std::vector<std::string>& files);
  void NeedFiles(const std::string& name);
  void NeedWhole(const std::string& name);
  void KnowFolder(const std::string& name);
  [[nodiscard]] bool ReadLink(int number, LegacyLink& link);

  std::unique_ptr<Session> newer_;
  std::unique_ptr<OlderCopy> copy_;  // with kAsk
  std::string database_;             // `\` path with "\" at the end
  std::string folder_;               // the same of the copy
  std::optional<SitMgr> manager_;
  std::string site_;  // the name of the site that was opened
  SiteNames names_;
};

}  // namespace zvrsit::cli
