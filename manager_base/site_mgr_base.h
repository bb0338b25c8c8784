// The low layer of the site manager: the profile tables of all sites, the five tables of the open
// site, and the operations that put single entries into them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "links/link_rules.h"
#include "platform/api.h"
#include "util/url_id.h"

namespace zvrsit {

class CCSSControl;
class DOM;
struct OperationMemo;
class SiteFolderDB;
class SiteLinkDB;
class SitePathDB;
class SiteRelDB;
class SiteServProfDB;
class SiteSiteProfDB;
class SiteSiteRec;
class SiteUrlDB;
struct ServedSite;

// The order of calls is: construct, setDom, setDB, then any number of OpenSite and CloseSite
// pairs, then destroy. One thread uses a manager at a time.
//
// A copy shares every pointer with its original, on purpose: it is a second handle on the same
// tables, not a second owner. Only one of the two may be destroyed. The other must be given up
// without running its destructor.
class ZVRSIT_API SiteMgrBase {
 public:
  SiteMgrBase();
  SiteMgrBase(const SiteMgrBase&) = default;
  SiteMgrBase& operator=(const SiteMgrBase&) = default;
  // Closes the profile tables and frees everything that is owned. When a site is still open, its
  // tables are freed without being closed, and what was not flushed is lost. So call CloseSite
  // first.
  virtual ~SiteMgrBase();

  // Set-up, in this order, once each.

  // Takes the document library's object, which stays the caller's and outlives the manager.
  void setDom(DOM* dom);

  // Opens the profile tables at `dir` + `siteProfName` and `dir` + `servProfName`. These are joined
  // without a separator, so `dir` must end in `\`; otherwise the files lie beside the folder. A
  // missing `dir` is made. With `mode` 1 and 2 the profile files are also backed up after opening;
  // with 3 and 4 a damaged one is also restored from its backup. There is no result: after a
  // failure GetSiteProf is null, or the operations on profiles give -1.
  void setDB(const char* dir, const char* siteProfName, const char* servProfName, int mode);

  // For a database that several processes share; each of them must switch this on. It is off by
  // default: then no lock is taken, and two managers on one database may lose each other's changes.
  //
  // kChange: from OpenSite to CloseSite only this manager uses the open site. kAsk: other managers
  // that ask may use it too. Nothing is written then. So a database that can only be read can be
  // asked, and what an answer brings up to date, such as the family, stays in memory. Each
  // operation on profiles takes a lock of its own and reads the profiles again; the table of
  // GetSiteProf is open only during the operation. An operation that looks into another site shares
  // that site for this time.
  //
  // An operation waits for what is in use. When it has waited long enough, it gives its result for
  // failure, and FoundInUse is true. The locks are those of the system, on the file `lock` in the
  // database folder. They end with the process.
  //
  // With kChange a change of the profiles, and FlushSite, are made as a whole: what they replace is
  // noted in a file first, which is removed when all is on the disk. After a crash the next manager
  // undoes what was not finished.
  enum class Locking { kOff, kAsk, kChange };
  // Before setDB, once. `patience` is how many milliseconds an operation waits.
  void SetLocking(Locking locking, int patience = 3000);
  // Reserves the profiles for this manager for several operations; 0 or -1. Each LockProfiles that
  // gave 0 must be followed by an UnlockProfiles. A caller that needs a site too must lock the site
  // first.
  int LockProfiles();
  void UnlockProfiles();
  // The same for a site that is not open, by its record number. Numbers from 2^26 on belong to no
  // site; the application may use them for locks of its own. UnlockSite also lets go of the open
  // site of a manager that only asks: such a manager then answers from memory.
  int LockSite(int siteId);
  void UnlockSite(int siteId);
  // With true, the openings of sites that follow map large tables instead of reading them: an
  // opening that asks little takes half of the time. Only for one who keeps everybody else from
  // changing the site until it is closed, as with kChange: who cuts a mapped file ends the process.
  void SetMapsTables(bool maps);
  // What was changed in the profiles since they were reserved is undone if this process is killed
  // before it lets go of them. After this, what was changed so far stays. 0 or -1.
  int KeepProfiles();
  // Whether a process was killed while it changed the profiles, and nobody has undone this yet. A
  // manager that only asks cannot; one that may change them does when it next locks them.
  bool ProfilesWereCutOff() const;
  // The same for the tables in that folder, whose site is locked. UndoCutOff makes them what they
  // were before the change; 0, also when there was none, or -1.
  static bool WasCutOff(const std::string& folder);
  static int UndoCutOff(const std::string& folder);
  // Waits until these files of the folder, and its list of names, are on the disk; 0 or -1.
  static int SyncFolder(const std::string& folder, const std::vector<std::string>& files);
  // Whether this process waits for the disk at all; it does unless this is called.
  static void SetSyncing(bool syncs);
  // Whether the last lock that an operation needed was refused because another manager held it.
  bool FoundInUse() const;
  // The system's error number (errno) of the last call to it that failed in this thread.
  static int LastSystemError();

  // Opening and closing.

  // Opens the site that is record `siteId` of the site-profile table; the second argument is
  // ignored. 0, -1 (a bad argument, a site that is open already, a profile that cannot be read) or
  // -2 (the site's folder or top file is not on the disk). It is no failure when tables cannot be
  // opened: the result is 0, all five tables are absent, and every operation that needs them gives
  // -1.
  int OpenSite(int siteId, int);
  // Flushes and closes the tables; 0, or -1 when no site is open.
  int CloseSite();

  // What the manager holds, null while absent; all of it stays the manager's.
  SiteSiteProfDB* GetSiteProf() const { return siteProf; }
  SiteServProfDB* GetServProf() const { return servProf; }
  SiteFolderDB* GetFolderDB() const { return folderDB; }
  SiteRelDB* GetRelDB() const { return relDB; }
  SitePathDB* GetPathDB() const { return pathDB; }
  SiteUrlDB* GetUrlDB() const { return urlDB; }
  SiteLinkDB* GetLinkDB() const { return linkDB; }
  CCSSControl* GetCssCtrl() const { return cssCtrl; }
  // The default document name of the open site; null when its profile has none.
  const std::string* GetDefaultUrl() const { return defaultUrl; }
  // The record number of the open site, -1 for none.
  int GetOpenSiteId() const { return openSiteId; }
  // 1 when links between files may have changed since the family was last brought up to date.
  int GetLinksChanged() const { return linksChanged; }
  // The URL under which the folder of the open site is served; null when its profile has none.
  const std::string* GetLiveUrl() const;
  // The link rules of the open site, from its profile.
  LinkRules GetLinkRules() const;

  // What the profile of the open site says about its server; nothing when no site is open.
  ZVRSIT_LOCAL ServedSite DescribeServer() const;

  // Single entries. Each gives a record number (0 or above), or -1 also when no site is open or
  // its table is absent. Nothing is rolled back after a partial failure.

  // The number of `url`, added when it is new.
  int AddUrl(const std::string& url);
  // Adds a link; an equal link has its occurrence count raised instead. `text` must not be empty.
  int AddLink(const std::string& text, const UrlID& from, const UrlID& to, int type);
  // The number of the file `path`. A new file is registered: with what the disk says about it, with
  // the folders above it, and with the relation to its folder. The disk is not asked about a known
  // file. `checkCase` other than 0: the file counts as existing only if its last component is
  // spelled as on disk.
  int AddPath(const std::string& path, const std::string& siteDir, int checkCase);
  // Refreshes a known path whose existence flag is 0 (others are left alone); its number.
  int CheckPath(const std::string& path, const std::string& siteDir);
  // The number of `folder` (which ends in `\`), added when it is new. With `withParents` its
  // missing parents and the relations to them are added too. If this climb comes to a drive root
  // that is new, the result is -1, although all folders on the way have been added.
  int AddFolder(const std::string& folder, int withParents);
  // The number of the relation, added when it is new.
  int AddRel(const UrlID& parent, const UrlID& child);

  // Each deletes one record and gives the table's result, or -1 for a negative number or an absent
  // table. DelLink lowers the occurrence count; the last one deletes the record.
  int DelUrl(int id);
  int DelPath(int id);
  int DelLink(int id);
  int DelFolder(int id);
  int DelRel(int id);

  // Frees a string that the library returned; a null pointer is allowed. 0.
  static int DeleteString(std::string* text);

  // What the running operation remembers; null outside of one.
  OperationMemo* GetOperationMemo() const;

 protected:
  // The insides of the library: manager_base/inside.h.
  struct ZVRSIT_LOCAL Inside;
  class ZVRSIT_LOCAL Operation;
  class ZVRSIT_LOCAL ProfileUse;
  class ZVRSIT_LOCAL SiteUse;
  class ZVRSIT_LOCAL Work;

  // Gives the folders of `rec` to the style-sheet library: 0, or -1 when the site folder is not
  // set.
  ZVRSIT_LOCAL int NotifyCss(SiteSiteRec& rec);

  // In this order.
  SiteSiteProfDB* siteProf = nullptr;
  SiteServProfDB* servProf = nullptr;
  SiteFolderDB* folderDB = nullptr;
  SiteRelDB* relDB = nullptr;
  SitePathDB* pathDB = nullptr;
  SiteUrlDB* urlDB = nullptr;
  SiteLinkDB* linkDB = nullptr;
  std::string* defaultUrl = nullptr;
  std::int32_t openSiteId = -1;
  std::string* dbDir = nullptr;
  DOM* dom = nullptr;
  CCSSControl* cssCtrl = nullptr;
  std::string* docRoot = nullptr;
  std::int32_t linksChanged = 1;
  std::string* servProfPath = nullptr;

  Inside* inside;  // never null
};

}  // namespace zvrsit
