// The site manager: opens a site, keeps its tables in step with pages that are saved, moved and
// deleted, rebuilds them from the disk, and answers questions about files and links.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "manager/base/site_mgr_base.h"
#include "manager/profiles.h"
#include "manager/site_link.h"
#include "util/site_rec_cell.h"
#include "util/vec.h"

namespace zvrsit {

class Document;
class SitePathRec;
struct CZvrSiteRebuildProgressDlg;

// Paths are `\` paths in the code page; a folder ends in `\`. An `int` result is 0, a count or a
// record number on success and -1 on failure; a pointer result is null on failure and belongs to
// the caller, who gives it back through DeleteVecRecCell, DeleteString or (lists of numbers and of
// strings) delete. Nothing is rolled back after a partial failure.
//
// A copy shares the tables with its original (see SiteMgrBase).
class ZVRSIT_API SiteMgr : public SiteMgrBase {
 public:
  SiteMgr() = default;
  SiteMgr(const SiteMgr&) = default;
  SiteMgr& operator=(const SiteMgr&) = default;
  ~SiteMgr() override = default;

  // ---- Opening and closing ----

  // Opens the site named `siteName`: 0, -1, or -2 when its folder or top file is missing
  // (SiteMgrBase::OpenSite says more). The int is passed on and has no effect.
  int SiteOpen(const std::string& siteName, int);
  int SiteClose();

  // ---- Saved pages (save.cc) ----

  // Registers the file `path` anew with the links of `doc`, or of the file on disk when `doc` is
  // null. For pages and style sheets `doc` is consumed, whatever the outcome; for other types it
  // stays the caller's. Raises the links-changed flag when the page's targets in the site differ.
  int Save(const std::string& path, Document* doc);
  // The same; the int is ignored.
  int Save(const std::string& path, int, Document* doc);
  // Collects and stores the links of one registered file; consumes `doc` when there is a DOM. A
  // file that cannot be opened counts as an empty page.
  int TraverseLinks(const std::string& siteDir, const std::string& path, Document* doc);
  // 1 when the two lists differ as sets, else 0. Overwrites the entries that both hold with -1 in
  // both arrays.
  static int LinkChanged(int* oldIds, int* newIds, int oldCount, int newCount);

  // ---- File operations (file_operations.cc): reported after the fact, the disk is not touched
  // ----

  // Takes a file out of the link structure. An entry that others still link to stays, with
  // existence flag 0. The int is ignored.
  int Remove(const std::string& path, int);
  int Move(const std::string& from, const std::string& to);
  // `fromList` and `toList` are multi-strings: NUL-terminated strings ended by an empty one. `op`
  // 0 deletes, 1 copies, 2 moves, 3 renames; any other gives 0.
  int GeneralOperation(const char* fromList, const char* toList, int op);
  // Checks that the tables are there, and changes nothing.
  int GeneralDelete(const std::vector<std::string>& paths);
  // These change nothing and give 0.
  int GeneralCopy(const std::vector<std::string>& from, const std::vector<std::string>& to);
  int GeneralMove(const std::vector<std::string>& from, const std::vector<std::string>& to);
  int GeneralRename(const std::vector<std::string>& from, const std::vector<std::string>& to);

  // ---- Looking into other sites (peeping.cc) ----

  // One entry for each file of the site, all of them the same string object, which holds the last
  // name: only the count is of use.
  std::vector<std::string*>* EnumPathInSite(const std::string& siteName);
  // One entry for each site that knows `path`. The strings are already freed: only the count is of
  // use.
  std::vector<std::string*>* EnumSiteHasPath(const std::string& path);

  // Always 0.
  int FixSite();
  int FixSiteProf();
  int FixServProf();

  // ---- Rebuild (rebuild.cc, rebuild_walk.cc) ----

  // The rebuild state of a site by name, or of the open site: 0 never rebuilt, 1 the last rebuild
  // failed, 2 it succeeded; -1 when it cannot be read.
  int NeedToRebuild(const std::string& siteName);
  int GetSiteProfRebuildState();
  // Stores `state` for the site record `siteId`, for the open site when it is below 0.
  int SetSiteProfRebuildState(int state, int siteId);

  // Rebuilds the open site and stores how it went as the rebuild state: 0 when that could be
  // stored, so success and failure of the rebuild itself are told by the state. `dlg` may be null.
  int SiteRebuildDB(int complete, CZvrSiteRebuildProgressDlg* dlg);
  // Clears what is derived, walks the site folder and collects all links anew. A page that cannot
  // be read is skipped.
  int SiteRebuildComplete(CZvrSiteRebuildProgressDlg* dlg);
  // The same, and looks every known file up on disk: an entry whose file is gone is dropped unless
  // something links to it or the user marked it.
  int SiteRebuildDiff(CZvrSiteRebuildProgressDlg* dlg);

  // Asked for each file and folder (which ends in `\`) that the walk meets; true leaves it out,
  // a folder with all that is in it.
  using IgnoreHook = bool (*)(const std::string& path, void* context);
  // Null for none. `context` is handed through and stays the caller's.
  void SetIgnoreHook(IgnoreHook hook, void* context);
  // The pages that the last rebuild could not read or collect links from, and the folders (which
  // end in `\`) that it could not list, in the order met.
  const std::vector<std::string>& SkippedByRebuild() const { return skippedByRebuild_; }

  // Whether a table of the open site has a file of which more than a quarter is dead.
  bool IsWorthPacking() const;
  // Removes dead records and texts from the files of the open site; numbers do not change. All
  // tables are tried; -1 when one could not be packed.
  int PackSite();
  // Writes the tables of the open site to disk as they stand; 0 or -1.
  int FlushSite();

  // ---- Families (families.cc) ----

  // Replaces the user marks 4 and 8 of a file by `marks`; other bits in it are set for good.
  int SetFtpFamily(const UrlID& id, unsigned int marks);
  // Marks a file and every file that it reaches.
  int PropagateFamily(int pathNumber);
  // Unmarks a file that no member links to, and what hangs on it alone. Files of a cycle keep each
  // other marked.
  int PropagateUnFamily(int pathNumber);
  // Marks the top file, and only that.
  int TraverseFamily();
  // Recomputes the family when links have changed since the last time.
  int UpdateLinkFamily();
  // Saves every page anew that holds a link whose text ends in "/", after the default document
  // name has changed. `url` is not looked at: the name in force is that of the open site.
  int ReflectDefaultUrl(const std::string& url);

  // ---- Links (queries_links.cc) ----

  // Numbers of the link records from or to an entry, ascending; freed with delete.
  std::vector<int>* GetForeLinks(const UrlID& id);
  std::vector<int>* GetBackLinks(const UrlID& id);
  // The same as cells: the entry at the other end, with the link's type.
  vec<SiteRecCell>* GetForeLinks(const std::string& path);
  vec<SiteRecCell>* GetBackLinks(const std::string& path);
  // Entries of the site that something links to and that are not there.
  vec<SiteRecCell>* GetBrokenLinks();
  // The numbers of all links, ascending; freed with delete.
  std::vector<int>* EnumLink();
  // Reads one link; 0 or -1.
  int GetLink(int number, SiteLink& link);

  // ---- Files, folders and URLs (queries.cc) ----

  // The number of the file `path` in the path table, or -1.
  int FindPath(const std::string& path);
  vec<SiteRecCell>* EnumPath();
  vec<SiteRecCell>* EnumUrl();
  vec<SiteRecCell>* GetSubFolders(const std::string& folder);
  // The files of a folder.
  vec<SiteRecCell>* GetChildren(const std::string& folder);
  // The name of the `index`th file of a folder, from 0.
  std::string* GetChild(const std::string& folder, int index);
  // Members of the publishing family.
  vec<SiteRecCell>* GetFtpMember();
  // The publishing-membership word of a file, -1 when there is none.
  int GetUrlFtpMember(const UrlID& id);
  // Existing files, other than the top file, that no other entry links to.
  vec<SiteRecCell>* GetUnusedFiles();
  // `types`: file-type codes or-ed together.
  vec<SiteRecCell>* GetFilesByType(unsigned int types);
  int GetUrlFileType(const UrlID& id);
  std::string* GetUrlTitle(const UrlID& id);
  int SetUrlTitle(const UrlID& id, const std::string& title);
  // The META texts of a page; each out-string is null where the page has none.
  int GetUrlProperty(const UrlID& id, std::string*& lastModified, std::string*& expires,
                     std::string*& generator, std::string*& keywords, std::string*& description,
                     std::string*& contentType);
  std::string* FolderName(int folderNumber);
  std::string* UrlPath(int pathNumber);
  std::string* UrlUrl(int urlNumber);

  // ---- Site profiles (site_profiles.cc) ----

  // The accessor of the table, beside the operation of the same name.
  using SiteMgrBase::GetSiteProf;

  std::vector<std::string*>* EnumSiteProf();
  int GetSiteProf(const std::string& name, SiteProfile& profile);
  // Stores `profile` under `name`; a new name makes a new profile with the files of its tables.
  int SetSiteProf(const std::string& name, const SiteProfile& profile);
  // These refuse while the site is open.
  int RenameSiteProf(const std::string& from, const std::string& to);
  int DeleteSiteProf(const std::string& name);
  int CopySiteProf(const std::string& from, const std::string& to);

  // Single fields of the site record `siteId`, of the open site when it is below 0. An empty text
  // unsets a field.
  std::string* GetSiteProfDir(int slot, int siteId = -1);
  int SetSiteProfDir(int slot, const std::string& folder, int siteId = -1);
  std::string* GetSiteProfTopFile(int siteId = -1);
  int SetSiteProfTopFile(const std::string& path, int siteId = -1);
  std::string* GetSiteProfDefaultUrl(int siteId = -1);
  int SetSiteProfDefaultUrl(const std::string& name, int siteId = -1);
  int GetSiteProfUseDocRoot(int siteId = -1);
  int SetSiteProfUseDocRoot(int use, int siteId = -1);
  std::string* GetSiteProfServer(int siteId = -1);
  int SetSiteProfServer(const std::string& name, int siteId = -1);
  int GetSiteProfLinkRules(int siteId = -1);
  int SetSiteProfLinkRules(int rules, int siteId = -1);

  // ---- Server profiles (server_profiles.cc) ----

  using SiteMgrBase::GetServProf;

  std::vector<std::string*>* EnumServProf();
  int GetServProf(const std::string& name, ServProfile& profile);
  int SetServProf(const std::string& name, const ServProfile& profile);
  int DeleteServProf(const std::string& name);

  std::string* GetServProfHost(const std::string& name);
  int SetServProfHost(const std::string& name, const std::string& host);
  std::string* GetServProfUser(const std::string& name);
  int SetServProfUser(const std::string& name, const std::string& user);
  std::string* GetServProfPassword(const std::string& name);
  int SetServProfPassword(const std::string& name, const std::string& password);
  std::string* GetServProfDir(const std::string& name);
  int SetServProfDir(const std::string& name, const std::string& dir);

  // ---- Giving results back (results.cc) ----

  // Frees the cells and the vector; 0, also for null.
  static int DeleteVecRecCell(vec<SiteRecCell>* cells);
  // Empties the vector; 0, or -1 for null. Frees neither the strings nor the vector, on purpose:
  // the caller gives each string back before this and deletes the vector after it.
  static int DeleteStrings(std::vector<std::string*>* list);

 private:
  class Rebuild;
  friend class Rebuild;

  // Opens the path table of another site into peepPathDB, and closes it; one within each public
  // operation that peeps.
  int BeginPeep(int siteId);
  int EndPeep(int);

  // queries.cc, queries_links.cc
  bool IsInSite(std::string_view path) const;
  SiteRecCell EntryCell(const UrlID& id) const;
  vec<SiteRecCell>* LinkCells(const std::string& path, bool fromIt);
  vec<SiteRecCell>* ChildCells(const std::string& folder, int kind);
  template <class Keep>
  vec<SiteRecCell>* PathCells(Keep keep);
  bool ReadPath(const UrlID& id, SitePathRec& rec) const;

  // save.cc
  int ReadSiteFolder(std::string& siteDir) const;
  int ListFileTargets(int pathNumber, std::vector<int>& targets);
  int RegisterAnew(int number, const std::string& path, const std::string& siteDir);
  int Traverse(const std::string& siteDir, const std::string& path, Document* doc, bool& unread);
  int CollectPageLinks(const std::string& siteDir, const std::string& path, Document* doc);

  // file_operations.cc
  int DeleteForeLinks(int pathNumber);
  int DeleteEntry(int pathNumber);

  // families.cc
  int MarkMember(int pathNumber, bool member);
  bool IsMember(int pathNumber) const;
  int NextTarget(const std::vector<int>& links, std::size_t& next, bool member) const;
  int EnterFamily(int pathNumber, std::vector<int>& links);
  int LeaveFamily(int pathNumber, std::vector<int>& links);
  int FindTopFile() const;
  std::vector<std::string> ListFolderLinkSources() const;

 protected:
  // The path table of another site, while it is looked into.
  SitePathDB* peepPathDB = nullptr;

 private:
  IgnoreHook ignoreHook_ = nullptr;
  void* ignoreContext_ = nullptr;
  std::vector<std::string> skippedByRebuild_;
};

}  // namespace zvrsit
