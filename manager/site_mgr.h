// The site manager: opens a site, keeps its tables in step with pages that are saved, moved and
// deleted, rebuilds them from the disk, and answers questions about files and links.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "manager/profiles.h"
#include "manager/site_changes.h"
#include "manager/site_link.h"
#include "manager/site_totals.h"
#include "manager_base/site_mgr_base.h"
#include "tables/table_faults.h"
#include "util/site_rec_cell.h"
#include "util/vec.h"

namespace zvrsit {

class Document;
struct CZvrSiteRebuildProgressDlg;

// Paths are `\` paths in the code page; a folder ends in `\`. An `int` result is 0, a count or a
// record number on success, and -1 on failure. A pointer result is null on failure. It belongs to
// the caller, who gives it back through DeleteVecRecCell or DeleteString, or (lists of numbers and
// of strings) through delete. Nothing is rolled back after a partial failure.
//
// A copy shares the tables with its original (see SiteMgrBase).
class ZVRSIT_API SiteMgr : public SiteMgrBase {
 public:
  SiteMgr() = default;
  SiteMgr(const SiteMgr&) = default;
  SiteMgr& operator=(const SiteMgr&) = default;
  ~SiteMgr() override;

  // ---- Opening and closing ----

  // Opens the site named `siteName`, which SetSiteProf has made with a site folder and a top file.
  // 0, -1, or -2 when its folder or top file is missing (SiteMgrBase::OpenSite says more). The int
  // has no effect.
  int SiteOpen(const std::string& siteName, int);
  // Flushes and closes the tables; 0, or -1 when no site is open.
  int SiteClose();

  // ---- Saved pages (save.cc) ----

  // Registers the file `path` again, with the links of `doc`, or of the file on disk when `doc` is
  // null. For pages (with RuleFlags::readsOtherPageTypes also those of the site's page types) and
  // style sheets `doc` is consumed in every case; for other types it stays the caller's. The
  // links-changed flag is raised in two cases: the page now leads to other files of the site, or a
  // sheet below it is registered that refers to files. Pages whose
  // links lead elsewhere now are read again (RuleFlags::findsFolderDocuments): those that link to
  // the folder of a file that stands for it and has come, or to a folder that has; that mean a file
  // without its extension; and that a rule of `_redirects` leads, when it or such a file has come
  // or changed.
  int Save(const std::string& path, Document* doc);
  // The same; the int is ignored.
  int Save(const std::string& path, int, Document* doc);
  // Collects and stores the links of one registered file; consumes `doc` if there is a DOM. A file
  // that cannot be opened counts as an empty page.
  int TraverseLinks(const std::string& siteDir, const std::string& path, Document* doc);
  // 1 when the two lists differ as sets, else 0. Entries that both lists hold are overwritten with
  // -1 in both arrays.
  static int LinkChanged(int* oldIds, int* newIds, int oldCount, int newCount);

  // ---- File operations (file_operations.cc) ----
  //
  // The application reports here what it has done already: the disk is not changed.

  // Takes a file out of the link structure. If others still link to it, its entry stays, with
  // existence flag 0. Pages whose links lead elsewhere now are read again, as by Save. The int is
  // ignored.
  int Remove(const std::string& path, int);
  // Remove of `from`, then Save of `to`: 0 or -1.
  int Move(const std::string& from, const std::string& to);
  // These change nothing, on purpose: the application reports what matters through Save, Remove
  // and Move (general_operations.cc).

  // `fromList` and `toList` are multi-strings: NUL-terminated strings one after another, ended by
  // an empty one; null counts as empty. `op` 0 is GeneralDelete, 1 copy, 2 move, 3 rename: their
  // result. Any other gives 0.
  int GeneralOperation(const char* fromList, const char* toList, int op);
  // 0, or -1 when the path, folder or relation table is absent.
  int GeneralDelete(const std::vector<std::string>& paths);
  // Always 0.
  int GeneralCopy(const std::vector<std::string>& from, const std::vector<std::string>& to);
  int GeneralMove(const std::vector<std::string>& from, const std::vector<std::string>& to);
  int GeneralRename(const std::vector<std::string>& from, const std::vector<std::string>& to);
  int FixSite();
  int FixSiteProf();
  int FixServProf();

  // ---- Looking into other sites (peeping.cc) ----
  //
  // The answers come from the disk: changes of the open site that were not flushed are not seen.
  // Null for an empty argument, and when the profiles cannot be read. The list is freed with
  // delete.

  // One entry for each file that the site `siteName` knows; null also for a site that is unknown or
  // cannot be read. Only the number of entries is useful: all of them are the same string object,
  // which holds the last path. So only the first entry is given to DeleteString.
  std::vector<std::string*>* EnumPathInSite(const std::string& siteName);
  // One entry for each site that knows `path`. Only the number of entries is useful: the strings
  // are freed already, and must be neither read nor given back.
  std::vector<std::string*>* EnumSiteHasPath(const std::string& path);

  // ---- Rebuild (rebuild.cc, rebuild_walk.cc) ----

  // The rebuild state of a site by name, or of the open site: 0 never rebuilt, 1 the last rebuild
  // failed, 2 it succeeded; -1 when it cannot be read.
  int NeedToRebuild(const std::string& siteName);
  int GetSiteProfRebuildState();
  // Stores `state` for the site record `siteId`, for the open site when it is below 0.
  int SetSiteProfRebuildState(int state, int siteId);

  // Rebuilds the open site and stores in the rebuild state whether this succeeded. The result is 0
  // when the state could be stored: only the state tells whether the rebuild itself succeeded.
  // `dlg` may be null.
  int SiteRebuildDB(int complete, CZvrSiteRebuildProgressDlg* dlg);
  // Clears everything that the files tell, walks the site folder and collects all links again. A
  // page that cannot be read is skipped.
  int SiteRebuildComplete(CZvrSiteRebuildProgressDlg* dlg);
  // The same, and looks for every known file on the disk. An entry whose file is gone is dropped,
  // unless something links to it or the user has marked it.
  int SiteRebuildDiff(CZvrSiteRebuildProgressDlg* dlg);

  // Called for each file and folder (which ends in `\`) that the walk meets. True leaves it out; a
  // folder with everything in it.
  using IgnoreHook = bool (*)(const std::string& path, void* context);
  // Null for no hook. `context` is passed to the hook and stays the caller's.
  void SetIgnoreHook(IgnoreHook hook, void* context);
  // The pages that the last rebuild could not read or collect links from, and the folders (which
  // end in `\`) that it could not list, in the order met.
  const std::vector<std::string>& SkippedByRebuild() const;

  // Compares the tables of the open site with the disk. Files are looked for as in a rebuild, but
  // not read (disk_comparison.cc). 0, or -1 without a site. Two changes are not noticed: a file
  // that was written with its old size and got its old time again; and a file that has its old size
  // and was changed within the second of its old time. The second one is noticed if the manager
  // only asks (SetLocking) and the file is younger than the tables.
  int CompareWithDisk(SiteChanges& changes);
  // What the last rebuild of this object did not read, without asking the disk: the last three
  // lists of `changes`; the others are empty. 0, or -1 without a site.
  int ListUnread(SiteChanges& changes) const;

  // ---- Update (update.cc) ----

  // Brings the tables of the open site up to date with the disk. Files are looked for as in a
  // rebuild. Only those are read that are new, have changed (CompareWithDisk), could not be read
  // before, or have links that lead elsewhere now. Afterwards the tables are by names and contents
  // what a complete rebuild into empty tables would make of the disk, except for record numbers.
  // The user's marks stay, and keep the entries of files that are gone; titles that were set stay
  // until the page is read, and what is known about the state of URLs until nothing links to them.
  // SkippedByRebuild tells what could not be read.
  //
  // 0; kMustRebuild: the tables cannot be brought up to date so, and are to be rebuilt, or closed
  // without being written; -1 when it failed or `dlg` has cancelled it: likewise. It is
  // kMustRebuild when the tables were not written by FlushUpdated or FlushSaved last, when what the
  // profile says about links has changed since, and with the few sites in which the order of the
  // files decides what links mean (update.h).
  static constexpr int kMustRebuild = 1;
  int SiteUpdate(SiteUpdates& updates, CZvrSiteRebuildProgressDlg* dlg);
  // The same for one whom the system tells which folders change. Of the site it looks only into
  // `folders` (`\` paths, with `\` at their ends), into those that SiteUpdate has not looked into
  // since the site was opened, and at files that have several names or are links. Of the rest it
  // takes for true what was seen last, so that all that has happened there since must be told. Only
  // with KeepPageIds, else it is SiteUpdate.
  int SiteUpdateFolders(const std::vector<std::string>& folders, SiteUpdates& updates,
                        CZvrSiteRebuildProgressDlg* dlg);
  // Writes the tables of the open site to disk, and beside them a note, without which SiteUpdate
  // does not trust them. To be called right after SiteUpdate, or after a rebuild; or after PackSite
  // that followed. 0; or -1 when the tables cannot be written, or nothing of this has happened. A
  // note that cannot be written is missing.
  int FlushUpdated();
  // The same after nothing but Save, Remove and Move of these files. If the tables were trusted
  // before, the next update trusts them and looks after what these operations leave open. 0, or -1
  // when the tables cannot be written.
  int FlushSaved(const std::vector<std::string>& paths);

  // Removes dead records and texts from the files of the open site; numbers do not change. With
  // `all` false, a table is packed only if more than a quarter of one of its files is dead. Every
  // table is tried; -1 when one could not be packed.
  int PackSite(bool all = true);
  // Whether a table of the open site has refused something since it was opened or packed, because
  // its file would be longer than 2^31-1 bytes. What it holds stays; a rebuild or an update in
  // which this happens fails. Save may give 0, as it passes over links that it cannot store; then
  // CompareWithDisk has the page among the unread ones. PackSite makes room where anything is dead,
  // as it is after several rebuilds.
  bool IsFull() const;
  // Writes the tables of the open site to disk as they stand; 0 or -1.
  int FlushSite();

  // ---- The files themselves (verify.cc) ----
  //
  // These read the files of the tables as they lie on the disk, also damaged ones that cannot be
  // opened, and change nothing. What was not flushed is not seen. Each needs time and memory in
  // proportion to the size of the files.

  // What is wrong with the tables of the site `siteName`; with the profiles. The faults are added
  // to `faults`. 0; or -1 when there is no such site, or when it or the profiles are in use.
  int VerifySite(const std::string& siteName, TableFaults& faults);
  int VerifyProfiles(TableFaults& faults);
  // Calls hook(record, context) for each record of a table, in the order of the file; with `dead`
  // for deleted ones too. `siteName` is not used for the tables of profiles. A damaged file is read
  // as far as it goes; `stopped` gets where and why each file does not go to its end. Passwords are
  // left out. 0 or -1 as above.
  using DumpHook = void (*)(const DumpedRecord& record, void* context);
  int DumpTable(TableKind table, const std::string& siteName, bool dead, DumpHook hook,
                void* context, std::vector<TableFault>& stopped);

  // ---- Families (families.cc) ----

  // Replaces the user marks 4 and 8 of a file by `marks`. Other bits in `marks` are set and are
  // never cleared.
  int SetFtpFamily(const UrlID& id, unsigned int marks);
  // The record numbers of the files with one of these marks, ascending; empty without a site.
  std::vector<int> ListMarkedByUser() const;
  // Marks a file and every file that it reaches.
  int PropagateFamily(int pathNumber);
  // Unmarks a file that no member links to, and the files that are reached only from it. Files of a
  // cycle keep each other marked.
  int PropagateUnFamily(int pathNumber);
  // Marks the top file, and only that.
  int TraverseFamily();
  // Recomputes the family when links have changed since the last time.
  int UpdateLinkFamily();
  // Saves again the pages that hold a link to a folder, after the default document name has
  // changed. With RuleFlags::findsFolderDocuments these are the pages whose links lead elsewhere
  // now; without it, pages with a link that ends in "/". 0, or -1 when a table is absent, or
  // (without that flag) no name is set. A page that cannot be saved is skipped. `url` is not used:
  // the name is that of the open site. (folder_links.cc)
  int ReflectDefaultUrl(const std::string& url);
  // The paths of the pages that ReflectDefaultUrl would save now, in its order.
  std::vector<std::string> ListFolderLinkSources() const;
  // The names that a document which stands for its folder may have, the most wanted first.
  std::vector<std::string> ListFolderDocuments() const;

  // ---- Links (queries_links.cc) ----
  //
  // A link is one record. If a page has a link several times, with the same target, type and texts,
  // it is one link with an occurrence count.

  // Numbers of the links from or to an entry, ascending; an entry without any has an empty list.
  // Null without a site. Freed with delete.
  std::vector<int>* GetForeLinks(const UrlID& id);
  std::vector<int>* GetBackLinks(const UrlID& id);
  // The numbers of all links, and of those to a file that is not there or lies outside of the site.
  std::vector<int>* EnumLink();
  std::vector<int>* EnumBrokenLink();
  // Reads one link: 0, or -1 when there is none of that number.
  int GetLink(int number, SiteLink& link);
  // All places of these links (record numbers): places[i] are those of links[i], in the order of
  // the file. Their pages and sheets are read again, in any encoding. A link has no places if its
  // file cannot be read, or is no longer the file whose links are registered. (link_places.cc) 0,
  // or -1 without a site.
  int FindLinkPlaces(const std::vector<int>& links, std::vector<std::vector<LinkPlace>>& places);

  // The same for the file `path`. One cell for each link, in the order of the numbers: a cell as
  // EnumPath or EnumUrl gives it for the entry at the other end, with the link's type code (an LT_
  // code). An entry that is linked twice comes twice. Null for a file that the site does not know.
  vec<SiteRecCell>* GetForeLinks(const std::string& path);
  vec<SiteRecCell>* GetBackLinks(const std::string& path);
  // The files that something links to and that are not there or lie outside of the site, as cells
  // of EnumPath by record number. Here the flag is how many links there are to the file.
  vec<SiteRecCell>* GetBrokenLinks();

  // ---- Fragments (fragments.cc) ----
  //
  // A fragment leads to the element with that ID, or to the A with that NAME, as it is written or
  // percent-decoded. Some fragments are never missing: empty ones, "top", text fragments (":~:"),
  // and those that begin with "/" or "!", which are routes of scripts. The IDs of a page that holds
  // server code are not known, and a file that is no page has none: there, too, nothing is missing.

  // True: from now on the IDs of each page that is read for links are kept in memory, eight bytes
  // for each ID, so that the next two operations need not read the page again; and the listings of
  // folders, for SiteUpdateFolders. False: forgets them.
  void KeepPageIds(bool keep);
  // The links to files of the site whose fragment names nothing there, by number. Reads each such
  // file once, unless its IDs are kept. 0, or -1 without a site.
  int FindMissingFragments(std::vector<MissingFragment>& missing);
  // The same among these links (record numbers) alone, in their order.
  int FindMissingFragments(const std::vector<int>& links, std::vector<MissingFragment>& missing);
  // The IDs that one page has more than once, by page and first place. Reads each page of the site,
  // unless its IDs are kept; then only the pages that have such IDs. 0, or -1 without a site.
  int FindRepeatedIds(std::vector<RepeatedId>& repeated);
  // The same for these files (record numbers) alone, in their order.
  int FindRepeatedIds(const std::vector<int>& files, std::vector<RepeatedId>& repeated);
  // The IDs and anchor names of the page `path` as it is now, in the order of the file: 0, or -1
  // when it cannot be read.
  int ListPageIds(const std::string& path, std::vector<PageId>& ids);

  // ---- Files, folders and URLs (queries.cc) ----
  //
  // Cells come in the order of their record numbers, which is that of registration. An answer
  // without a row is an empty list; null means that no site is open or a table is absent.

  // How much the open site holds, without listing it; 0, or -1 without a site.
  int CountSite(SiteTotals& totals) const;

  // The number of the file `path`, compared byte by byte; -1 when the site does not know it.
  int FindPath(const std::string& path) const;

  // Every file that the site knows, also one that is only linked to. In its cell:
  //   id     kind 2 and the record number
  //   name   the path; title that of the page
  //   flag   1: there, below the site folder, and spelled as on disk; else 0
  //   time   of the last modification, size in bytes: as last seen on disk; 0 and 0xFFFFFFFF for a
  //          file that was never seen there
  vec<SiteRecCell>* EnumPath();
  // Every external URL that something has linked to. In its cell:
  vec<SiteRecCell>* EnumUrl();

  // The folders directly in `folder` (which ends in `\`), in the order of the relations. In a cell:
  //   id     kind 0 and the record number
  //   name   the whole path, which ends in `\`
  //   flag   how many files and folders the site knows directly in it
  //   time   0; size 0xFFFFFFFF
  // Null for a folder that the site does not know.
  vec<SiteRecCell>* GetSubFolders(const std::string& folder);
  // The files directly in `folder`, as cells of EnumPath; likewise.
  vec<SiteRecCell>* GetChildren(const std::string& folder);
  // The path of the file at place `index` of GetChildren; null past the end. For DeleteString.
  std::string* GetChild(const std::string& folder, int index);

  // The members of the publishing family, as cells of EnumPath. UpdateLinkFamily brings the family
  // up to date first.
  vec<SiteRecCell>* GetFtpMember();
  // The publishing-membership word of a file (manager/family_marks.h), or -1.
  int GetUrlFtpMember(const UrlID& id);
  // The files that are there and that no other file links to, except for the top file; as cells of
  // EnumPath.
  vec<SiteRecCell>* GetUnusedFiles();
  // The files of any type of an OR-mask of FT_ codes (util/file_type.h), there or not; as cells of
  // EnumPath.
  vec<SiteRecCell>* GetFilesByType(unsigned int types);
  // The FT_ code of a file, or what the end of a URL suggests; -1 for any other entry.
  int GetUrlFileType(const UrlID& id);

  // The title of a page; null when it has none. A title that is set is kept until the page is next
  // read. An empty one unsets it.
  std::string* GetUrlTitle(const UrlID& id);
  int SetUrlTitle(const UrlID& id, const std::string& title);
  // What the page's META elements say. Each text is null if the page does not have it, and all are
  // null after -1. The caller gives each back through DeleteString.
  int GetUrlProperty(const UrlID& id, std::string*& lastModified, std::string*& expires,
                     std::string*& generator, std::string*& keywords, std::string*& description,
                     std::string*& contentType);

  // The text of an entry by its record number: a folder's name, a file's path, a URL. Null when
  // there is none. For DeleteString.
  std::string* FolderName(int folderNumber);
  std::string* UrlPath(int pathNumber);
  std::string* UrlUrl(int urlNumber);

  // ---- Site profiles (site_profiles.cc, site_profile_fields.cc) ----
  //
  // A profile's name is also the name of a folder, on every system. So it is not empty, ".", ".."
  // or a device name; it has no dot or space at its end, no control characters, and none of \ / : *
  // ? " < > |. It differs from every other name in more than ASCII letter case. What is set is on
  // disk at once. The number of a profile stays the same as long as the profile exists.

  // The table itself; another function below has the same name.
  using SiteMgrBase::GetSiteProf;

  // The names in the order of their numbers. Each goes back through DeleteString, then the list
  // through DeleteStrings and delete.
  std::vector<std::string*>* EnumSiteProf();
  // The number of a profile, or -1.
  int FindSiteProf(const std::string& name);
  // Reads a whole profile; 0 or -1.
  int GetSiteProf(const std::string& name, SiteProfile& profile);
  // Stores a whole profile. A new name makes a new profile, as AddSiteProf does. 0 or -1.
  int SetSiteProf(const std::string& name, const SiteProfile& profile);

  // Makes an empty profile and the folder for its tables; its number, or -1 (also when the name is
  // taken). Tables that a lost profile has left there are removed.
  int AddSiteProf(const std::string& name);
  // Makes a new profile `to` with the fields of `from`, but with tables of its own and never
  // rebuilt; its number or -1.
  int CopySiteProf(const std::string& from, const std::string& to);
  // Gives a profile another name and moves its tables; the number stays. 0; or -1, and then name
  // and tables are unchanged. Not possible while that site is open.
  int RenameSiteProf(const std::string& from, const std::string& to);
  // Deletes a profile and its tables; the site itself is not changed. 0 or -1. Not possible while
  // that site is open.
  int DeleteSiteProf(const std::string& name);

  // Single fields of the profile number `siteId`; below 0 it is the open site. A text that is not
  // set is null; other texts are for DeleteString. Setting an empty text unsets the field. Setters
  // give 0 or -1. The rebuild state is further up.
  //
  // One of ten folders. Slot 0 is the document root and slot 1 the site folder; both end in `\`.
  // Slot 9 is the URL under which the site is served: with RuleFlags::resolvesAsBrowser, links to
  // it are links to the site's files. It is an absolute http or https URL without user, query and
  // fragment; any other text means none. Slot 8 holds the page types: with
  // RuleFlags::readsOtherPageTypes, files with these extensions are pages too (links/page_types.h).
  // Slot 6 holds the extensions that links may leave out with RuleFlags::findsFolderDocuments:
  // "html,htm".
  // When a folder of the open site is changed, style sheets use it at once; what was found out
  // about registered files stays.
  std::string* GetSiteProfDir(int slot, int siteId = -1);
  int SetSiteProfDir(int slot, const std::string& folder, int siteId = -1);
  // The full path of the home page, without which a site cannot be opened. After a change in the
  // open site UpdateLinkFamily finds the family again.
  std::string* GetSiteProfTopFile(int siteId = -1);
  int SetSiteProfTopFile(const std::string& path, int siteId = -1);
  // The name of the document that stands for its folder; with RuleFlags::findsFolderDocuments
  // several, with commas between them. If it is changed in the open site, the change counts at
  // once; ReflectDefaultUrl then reads the affected pages again.
  std::string* GetSiteProfDefaultUrl(int siteId = -1);
  int SetSiteProfDefaultUrl(const std::string& name, int siteId = -1);
  // Whether targets that begin with "/" are resolved from the document root: 0, 1 or -1. A change
  // counts as one of a folder does.
  int GetSiteProfUseDocRoot(int siteId = -1);
  int SetSiteProfUseDocRoot(int use, int siteId = -1);
  // The name of the server profile to publish with, whether or not there is one of that name.
  std::string* GetSiteProfServer(int siteId = -1);
  int SetSiteProfServer(const std::string& name, int siteId = -1);
  // 0 classic, 1 web (links/link_rules.h); a change takes effect when the site is next opened.
  int GetSiteProfLinkRules(int siteId = -1);
  int SetSiteProfLinkRules(int rules, int siteId = -1);

  // ---- Server profiles (server_profiles.cc) ----
  //
  // Each operation opens the table and closes it again, so that changes of another manager are
  // seen. All give -1 or null when it cannot be opened. A name is any text that differs from every
  // other name in more than ASCII letter case. Texts as above. Passwords are given and taken in
  // clear, and stored scrambled.

  // The table itself, as the last operation left it: closed.
  using SiteMgrBase::GetServProf;

  // The names in the order of their numbers; freed as by EnumSiteProf.
  std::vector<std::string*>* EnumServProf();
  // Reads or stores a whole profile; a new name makes a new one. 0 or -1.
  int GetServProf(const std::string& name, ServProfile& profile);
  int SetServProf(const std::string& name, const ServProfile& profile);
  // Makes an empty profile, or one with the fields of `from`; its number or -1.
  int AddServProf(const std::string& name);
  int CopyServProf(const std::string& from, const std::string& to);
  // 0 or -1. Site profiles that name the server follow a rename; after a deletion they keep the
  // name.
  int RenameServProf(const std::string& from, const std::string& to);
  int DeleteServProf(const std::string& name);

  std::string* GetServProfHost(const std::string& name);
  int SetServProfHost(const std::string& name, const std::string& host);
  std::string* GetServProfUser(const std::string& name);
  int SetServProfUser(const std::string& name, const std::string& user);
  std::string* GetServProfPassword(const std::string& name);
  int SetServProfPassword(const std::string& name, const std::string& password);
  // The remote folder that the site goes to.
  std::string* GetServProfDir(const std::string& name);
  int SetServProfDir(const std::string& name, const std::string& dir);
  // Whether there is a firewall on the way, and its host. The numbers from here on belong to the
  // program that publishes. They are stored as given, and are 0 in a new profile. -1 also when they
  // cannot be read.
  int GetServProfFirewall(const std::string& name);
  int SetServProfFirewall(const std::string& name, int firewall);
  std::string* GetServProfFirewallHost(const std::string& name);
  int SetServProfFirewallHost(const std::string& name, const std::string& host);
  std::string* GetServProfFirewallUser(const std::string& name);
  int SetServProfFirewallUser(const std::string& name, const std::string& user);
  std::string* GetServProfFirewallPassword(const std::string& name);
  int SetServProfFirewallPassword(const std::string& name, const std::string& password);
  // The transfer type.
  int GetServProfFxferType(const std::string& name);
  int SetServProfFxferType(const std::string& name, int type);
  // Which remote folder a session begins in, whether it is locked in there, and its name.
  int GetServProfInitDirMode(const std::string& name);
  int SetServProfInitDirMode(const std::string& name, int mode);
  int GetServProfLockDir(const std::string& name);
  int SetServProfLockDir(const std::string& name, int lock);
  std::string* GetServProfInitRemoteDir(const std::string& name);
  int SetServProfInitRemoteDir(const std::string& name, const std::string& dir);
  // Folders used recently, as one text each.
  std::string* GetServProfMRUDirRemote(const std::string& name);
  int SetServProfMRUDirRemote(const std::string& name, const std::string& dirs);
  std::string* GetServProfMRUDirLocal(const std::string& name);
  int SetServProfMRUDirLocal(const std::string& name, const std::string& dirs);
  // The extensions of files that are sent as text.
  std::string* GetServProfAsciiSuffix(const std::string& name);
  int SetServProfAsciiSuffix(const std::string& name, const std::string& suffixes);

  // ---- Giving results back (results.cc) ----

  // Frees the cells and the vector; 0, also for null.
  static int DeleteVecRecCell(vec<SiteRecCell>* cells);
  // Empties the vector; 0, or -1 for null. Frees neither the strings nor the vector, on purpose:
  // the caller gives each string back before this and deletes the vector after it.
  static int DeleteStrings(std::vector<std::string*>* list);

 private:
  class ZVRSIT_LOCAL Work;     // manager/work.h
  class ZVRSIT_LOCAL Rebuild;  // manager/rebuild.h
  class ZVRSIT_LOCAL Update;   // manager/update.h

  // peeping.cc. BeginPeep opens the path table of another site as peepPathDB, even when it then
  // gives -1. EndPeep closes it. Each public operation that looks into another site calls both
  // once.
  ZVRSIT_LOCAL int BeginPeep(int siteId);
  ZVRSIT_LOCAL int EndPeep(int);

 protected:
  // The path table of another site, while it is looked into.
  SitePathDB* peepPathDB = nullptr;
};

}  // namespace zvrsit
