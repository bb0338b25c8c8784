// The low layer of the site manager: the profile tables of all sites, the five tables of the open
// site, and the operations that put single entries into them.
#pragma once

#include <cstdint>
#include <string>

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

// The order of calls is: construct, setDom, setDB, then any number of OpenSite and CloseSite
// pairs, then destroy. One thread uses a manager at a time.
//
// A copy shares every pointer with its original, on purpose: it is a second handle on the same
// tables, not a second owner. Only one of the two may be destroyed; the other has to be let go
// without running its destructor.
class ZVRSIT_API SiteMgrBase {
 public:
  SiteMgrBase();
  SiteMgrBase(const SiteMgrBase&) = default;
  SiteMgrBase& operator=(const SiteMgrBase&) = default;
  // Closes the profile tables and frees everything owned. Tables of a site still open are freed
  // without being closed: what was not flushed is lost, so call CloseSite first.
  virtual ~SiteMgrBase();

  // Set-up, in this order, once each.

  // Takes the document library's object, which stays the caller's and outlives the manager.
  void setDom(DOM* dom);

  // Opens the profile tables at `dir` + `siteProfName` and `dir` + `servProfName`, joined without
  // a separator, so `dir` ends in `\`: else the files lie beside it. A missing `dir` is made.
  // `mode` 1 and 2 also back the profile files up after opening, 3 and 4 also restore a damaged one
  // from its backup. Reports nothing: after a failure GetSiteProf is null or the operations on
  // profiles give -1.
  void setDB(const char* dir, const char* siteProfName, const char* servProfName, int mode);

  // Sharing the database with other processes, all of which switch this on. Off by default: then
  // no lock is taken, and two managers on one database may lose each other's changes.
  //
  // kChange: the open site is this manager's alone, from OpenSite to CloseSite. kAsk: it is shared
  // with others that ask; nothing is ever written, so a database that may only be read can be
  // asked, and what an answer brings up to date, such as the family, stays in memory. Operations
  // on profiles each take a lock of their own and read the profiles anew; the table of
  // GetSiteProf is open only meanwhile. Looking into another site shares it for that long.
  //
  // What is in use is waited for; after that, the operation gives what it gives on failure, and
  // FoundInUse is true. The locks are the system's, on the file `lock` in the database folder:
  // they end with the process.
  enum class Locking { kOff, kAsk, kChange };
  // Before setDB, once. `patience` is how many milliseconds an operation waits.
  void SetLocking(Locking locking, int patience = 3000);
  // Keeps the profiles to this manager for several operations; 0 or -1. Every LockProfiles that
  // gave 0 is followed by an UnlockProfiles. Whoever needs a site too locks that first.
  int LockProfiles();
  void UnlockProfiles();
  // The same for a site that is not open, by its record number; numbers from 2^26 on, which no site
  // has, are for purposes of the application's own. UnlockSite also lets go of the open site of a
  // manager that only asks: it answers on from memory.
  int LockSite(int siteId);
  void UnlockSite(int siteId);
  // Whether the last lock that an operation needed was not had because another manager held it.
  bool FoundInUse() const;
  // The system's error number (errno) of the last call to it that failed in this thread.
  static int LastSystemError();

  // Opening and closing.

  // Opens the site that is record `siteId` of the site-profile table; the second argument is
  // ignored. 0, -1 (bad argument, a site already open, an unreadable profile) or -2 (the site's
  // folder or top file is not on the disk). Tables that cannot be opened are no failure: the
  // result is 0, all five tables are absent, and what needs them gives -1.
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

  // Single entries. Each gives a record number (0 or above), or -1 also when no site is open or
  // its table is absent. Nothing is rolled back after a partial failure.

  // The number of `url`, added when it is new.
  int AddUrl(const std::string& url);
  // Adds a link; an equal link has its occurrence count raised instead. `text` must not be empty.
  int AddLink(const std::string& text, const UrlID& from, const UrlID& to, int type);
  // The number of the file `path`. A new one is registered with what the disk says of it, its
  // folder chain and the relation to its folder; the disk is not asked about a known one.
  // `checkCase` other than 0: the last component must be spelled as on disk to count as existing.
  int AddPath(const std::string& path, const std::string& siteDir, int checkCase);
  // Refreshes a known path whose existence flag is 0 (others are left alone); its number.
  int CheckPath(const std::string& path, const std::string& siteDir);
  // The number of `folder` (which ends in `\`), added when it is new; with `withParents` its
  // missing parents and the relations to them too. A climb that reaches a new drive root gives
  // -1, although all folders on the way are then there.
  int AddFolder(const std::string& folder, int withParents);
  // The number of the relation, added when it is new.
  int AddRel(const UrlID& parent, const UrlID& child);

  // Each deletes one record: the table's result, or -1 for a negative number or an absent table.
  // DelLink lowers the occurrence count and deletes with the last one.
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

  // Tells the style-sheet library the folders of `rec`: 0, or -1 when the site folder is unset.
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
