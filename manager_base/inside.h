// The inside of SiteMgrBase: its state beside the tables, and the operations that are not for the
// application.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "links/link_rules.h"
#include "links/page_types.h"
#include "links/served_files.h"
#include "manager_base/folder_listings.h"
#include "manager_base/kept_places.h"
#include "manager_base/operation_memo.h"
#include "manager_base/page_ids.h"
#include "manager_base/site_locks.h"
#include "manager_base/site_mgr_base.h"
#include "platform/file.h"
#include "storage/records.h"
#include "storage/undo_log.h"
#include "tables/table_files.h"

namespace zvrsit {

class SiteTable;

// The rules by which the links of a site with this profile are read.
inline LinkRules RulesOf(const SiteSiteRec& rec) {
  return (rec.linkRules & SiteSiteRec::kWebRules) != 0 ? LinkRules::Web : LinkRules::Classic;
}

// The logs with which a change that was cut off is undone (UndoLog): of the profiles, beside their
// files, and of a site, in the folder of its tables.
inline std::string ProfileUndoOf(const std::string& siteProfPath) {
  return siteProfPath + ".undo";
}
inline constexpr const char* kTablesUndo = "undo";

// Copies of a manager share it, as they share the tables.
struct SiteMgrBase::Inside {
  bool onlyAsks() const { return locks != nullptr && locks->onlyAsks(); }
  // Whether what is changed can be undone after this process was killed.
  bool canBeUndone() const { return locks != nullptr && !locks->onlyAsks(); }

  // The parts of the open site's profile that are needed for each link. Without a value when no
  // site is open or the profile does not have it. Page types only with
  // RuleFlags::readsOtherPageTypes.
  LinkRules linkRules = LinkRules::Classic;
  std::optional<std::string> siteFolder;
  std::optional<std::string> liveUrl;
  std::optional<PageTypes> pageTypes;
  std::string fallbackExtensions;
  const PageTypes* types() const { return pageTypes ? &*pageTypes : nullptr; }
  void ForgetSite() {
    siteFolder.reset();
    liveUrl.reset();
    pageTypes.reset();
    fallbackExtensions.clear();
    reading.reset();
    cameOrWent.clear();
    if (kept != nullptr) *kept = {};
  }

  std::string siteProfPath;          // of the record file of the site profiles
  std::unique_ptr<SiteLocks> locks;  // null where locking is off
  bool mapsTables = false;           // SetMapsTables
  // With locking: what the profiles were when they were last held; null while nobody may change
  // them.
  std::unique_ptr<UndoLog> undo;
  std::unique_ptr<OperationMemo> operationMemo;  // null outside of an operation

  // For SiteMgr: what is kept of the pages that were read; null when nothing is.
  struct Kept {
    PageIds ids;
    KeptPlaces places;       // of the last operation
    FolderListings folders;  // as the last update has seen them
  };
  std::unique_ptr<Kept> kept;
  // For SiteMgr: what the application wants left out of a site; what the last rebuild could not
  // read, and (native paths) what it left out because of its name.
  bool (*ignoreHook)(const std::string& path, void* context) = nullptr;
  void* ignoreContext = nullptr;
  std::vector<std::string> skippedByRebuild;
  std::vector<std::string> leftOutByRebuild;

  // For SiteMgr: how the tables were read by the last operation, if it was one that reads a whole
  // site.
  struct Reading {
    std::int64_t begin = 0;             // seconds since the epoch
    std::uint32_t traits = 0;           // SiteTraits
    bool isExact = false;               // the tables hold nothing of an earlier state of the site
    std::vector<std::string> passedBy;  // what the walk has left out because of its name, in order
    std::vector<std::string> linkedFolders;  // folders of the site that are links, in order
  };
  std::optional<Reading> reading;
  // For SiteMgr: files that have come or gone with a save or a removal since the tables were read
  // or written.
  std::vector<std::string> cameOrWent;
};

// While an object of this class lives, the manager remembers what it has found out (OperationMemo).
// An operation inside another one uses the memory of the outer one.
class SiteMgrBase::Operation {
 public:
  [[nodiscard]] explicit Operation(SiteMgrBase& manager);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

 private:
  Inside& inside_;
  const bool outermost_;
};

// One use of the site profiles. With locking, they are locked and open while this object lives; if
// they could not be locked, they are closed. A use inside another one is a part of it.
class SiteMgrBase::ProfileUse {
 public:
  [[nodiscard]] explicit ProfileUse(const SiteMgrBase& manager);
  ~ProfileUse();
  ProfileUse(const ProfileUse&) = delete;
  ProfileUse& operator=(const ProfileUse&) = delete;

  bool isHeld() const { return isHeld_; }  // true also without locking

  // The text `ref` of the profiles' store; false when it is unset or cannot be read.
  bool ReadText(std::int32_t ref, std::string& text) const;
  // The profile of the open site, and its site folder; false when it cannot be read.
  bool ReadOpenSite(SiteSiteRec& rec) const;
  bool ReadSiteFolder(std::string& folder) const;

  // Hold begins the same, and LetGo ends it, without an object. Hold: false when the profiles could
  // not be locked.
  [[nodiscard]] static bool Hold(const SiteMgrBase& manager, int openMode);
  static void LetGo(const SiteMgrBase& manager);

 private:
  [[nodiscard]] static bool MakeUndo(const SiteMgrBase& manager);
  static void CloseOrFree(SiteTable& table);

  const SiteMgrBase& manager_;
  const bool isHeld_;
};

// The same for a site other than the open one, to ask it or to change it.
class SiteMgrBase::SiteUse {
 public:
  [[nodiscard]] SiteUse(const SiteMgrBase& manager, int siteId, Locking purpose);
  ~SiteUse();
  SiteUse(const SiteUse&) = delete;
  SiteUse& operator=(const SiteUse&) = delete;

  bool isHeld() const { return isHeld_; }

 private:
  const SiteMgrBase& manager_;
  const int siteId_;
  const bool isHeld_;
};

// Made where it is needed: Work(*this).OpenProfiles(...).
class SiteMgrBase::Work {
 public:
  explicit Work(SiteMgrBase& manager) : base_(manager) {}

  // Set-up and opening (site_mgr_base.cc, locking.cc).
  void OpenProfiles(const std::string& path, int openMode);
  void OpenSharedProfiles(int openMode);
  int OpenSite(int siteId);
  // Keeps those parts of `rec`, the open site's profile, that are needed for each link.
  void KeepSite(const SiteSiteRec& rec);

  // What the open site's profile says about its server.
  static ServedSite ServedSiteOf(const SiteMgrBase& manager);

  // The five tables of the open site in the order in which they are opened; null where absent.
  std::array<SiteTable*, 5> Tables() const;

  // Entries (entries.cc). `seen`: the answer of the disk, if the caller has just asked it; else
  // null.
  int AddPath(const std::string& path, const std::string& siteDir, bool checkCase,
              const platform::FileStat* seen);
  [[nodiscard]] int FillFromDisk(const std::string& path, const std::string& siteDir,
                                 const platform::FileStat* seen, SitePathRec& rec);
  // Puts what the disk says about a regular file into its record: flag, size and times.
  static void StoreFileFacts(const std::string& path, const std::string& siteDir,
                             const platform::FileStat& found, SitePathRec& rec);

 private:
  void OpenTables(const SiteTableNames& names);
  void DropTables();
  [[nodiscard]] int ReadDefaultUrl(const SiteSiteRec& rec);
  [[nodiscard]] int RelateToFolder(const std::string& path, int number);

  SiteMgrBase& base_;
};

}  // namespace zvrsit
