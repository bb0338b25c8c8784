// The low layer of the older site manager: profiles, one open site with its five stores, single
// entries, links, folders and relations, and the undo history over all of it.
//
// A site's entries are UrlIDs: kind 2 for a file of the site (the URL file), kind 3 for an external
// URL (the junk file), kind 0 for a folder (the folder file); the number is the entry's index. The
// link file joins kinds 2 and 3, the relation file joins a folder to the folders and files in it.
//
// Every operation sets the last error (sit_error.h); 0 means success. Unless said otherwise, an
// operation gives 0, a count or a record number on success and -1 on failure. A `std::string*`
// result is new and belongs to the caller (DeleteString); null means failure. Operations on a site
// set 3 while no site is open; an invalid argument sets 11.
//
// Every changing operation opens a step of the undo history. Paths are `\` paths in the code page;
// a folder ends in "\". One thread at a time uses the managers of a process.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "legacy/sit_error.h"
#include "legacy/sit_link_type.h"
#include "legacy/sit_url_rec.h"
#include "platform/api.h"
#include "util/url_id.h"

namespace zvrsit {

class DOM;
class Document;
struct HistCell;
struct HistProc;

class ZVRSIT_API SitMgrBase {
 public:
  // A manager with no profile files and no database folder.
  SitMgrBase();
  // Opens or creates the profile files. A null path means that there is no such store. `dbDir` is
  // put directly before the file names of a site, so it must end in "\"; null for none.
  SitMgrBase(const char* siteProfPath, const char* servProfPath, const char* dbDir);
  // A copy shares the stores of the original. This is meant: one sees what the other does.
  SitMgrBase(const SitMgrBase& other);
  SitMgrBase& operator=(const SitMgrBase& other);
  virtual ~SitMgrBase();

  // Sets the database folder, makes it if it is missing, and opens both profile files in it.
  // Profile stores that are open already are given up. 0, or -1 with 5.
  int setDB(const std::string& dbDir, const std::string& siteProfName,
            const std::string& servProfName);
  // `dom` makes the documents that Save and the rebuild parse. It stays the caller's. Without one
  // the manager makes a DOM of its own.
  void setDom(DOM* dom);

  // The database folder, null when there is none. The last error stays as it is.
  std::string* DBDir() const;
  int lastError() const;
  // The system's error number of the last failure with 5, 20 or 21.
  int lastErrno() const;
  static int DeleteString(std::string* text);

  // Undoes the newest step or group. Gives 0; what cannot be undone stays. The last error is 21
  // when something could not be written, else 0.
  int Undo();
  // The same, but the texts of links get their old numbers again. These are free when every step
  // was undone in this way. So links get their alternative texts back too. After Undo a link still
  // has the old number of its alternative text, which may belong to no text or to another one.
  int UndoWithAlternatives();

  // --- Server profiles ---------------------------------------------------------------------
  // The list. Num counts slots, deleted ones among them. Name: 15 for a deleted profile, 16 past
  // the last. Add and Copy make a new profile and give 0; a name that is empty or taken gives 11.
  // Del marks a slot as deleted, Move renames. GetID: the number, or 14.
  int ServProfNum();
  std::string* ServProfName(int number);
  int ServProfAdd(const std::string& name);
  int ServProfDel(const std::string& name);
  int ServProfCopy(const std::string& from, const std::string& to);  // a group
  int ServProfMove(const std::string& from, const std::string& to);
  int ServProfGetID(const std::string& name);

  // The fields, by record number. 14 for a number that no profile has, 15 for a record that cannot
  // be read, 17 (getter) for a text that is not set, 11 (setter) for an empty text, 7 without a
  // store. A setter gives 0 when the record could be read. Passwords are scrambled in the file.
  int SetServProfHost(int number, const std::string& text);
  std::string* GetServProfHost(int number);
  int SetServProfUser(int number, const std::string& text);
  std::string* GetServProfUser(int number);
  int SetServProfPassword(int number, const std::string& text);
  std::string* GetServProfPassword(int number);
  int SetServProfDir(int number, const std::string& text);
  std::string* GetServProfDir(int number);
  int SetServProfFirewallHost(int number, const std::string& text);
  std::string* GetServProfFirewallHost(int number);
  int SetServProfFirewallUser(int number, const std::string& text);
  std::string* GetServProfFirewallUser(int number);
  int SetServProfFirewallPassword(int number, const std::string& text);
  std::string* GetServProfFirewallPassword(int number);
  int SetServProfInitRemoteDir(int number, const std::string& text);
  std::string* GetServProfInitRemoteDir(int number);
  int SetServProfMRUDirRemote(int number, const std::string& text);
  std::string* GetServProfMRUDirRemote(int number);
  int SetServProfMRUDirLocal(int number, const std::string& text);
  std::string* GetServProfMRUDirLocal(int number);
  int SetServProfAsciiSuffix(int number, const std::string& text);
  std::string* GetServProfAsciiSuffix(int number);
  int SetServProfFirewall(int number, int value);
  int GetServProfFirewall(int number);
  int SetServProfFxferType(int number, int value);
  int GetServProfFxferType(int number);
  int SetServProfInitDirMode(int number, int value);
  int GetServProfInitDirMode(int number);
  int SetServProfLockDir(int number, int value);
  int GetServProfLockDir(int number);

  // --- Site profiles -----------------------------------------------------------------------
  // The list, as for servers. A site's name must be possible as the name of a folder. A new site
  // gets the names of five files of its own, in a folder named after it below the database folder;
  // they stay when the site is renamed. The files of a deleted site stay on disk, so that Undo
  // finds them.
  int SiteProfNum();
  std::string* SiteProfName(int number);
  int SiteProfAdd(const std::string& name);  // a group
  int SiteProfDel(const std::string& name);
  int SiteProfCopy(const std::string& from, const std::string& to);  // a group
  int SiteProfMove(const std::string& from, const std::string& to);
  int SiteProfGetID(const std::string& name);

  // The fields, as for servers. Folders: 0 document root, 1 site folder, 9 the live URL. A folder
  // index is used as it is, without a limit: it goes on to the other words of the record. Outside
  // of the record the getter gives 17, the setter 11.
  int SetSiteProfTopFile(int number, const std::string& text);
  std::string* GetSiteProfTopFile(int number);
  int SetSiteProfDir(int number, const std::string& text, int folder);  // a group
  std::string* GetSiteProfDir(int number, int folder);
  int SetSiteProfServProf(int number, const std::string& text);
  std::string* GetSiteProfServProf(int number);
  int SetSiteProfUrlDB(int number, const std::string& text);
  std::string* GetSiteProfUrlDB(int number);
  int SetSiteProfJunkDB(int number, const std::string& text);
  std::string* GetSiteProfJunkDB(int number);
  int SetSiteProfLinkDB(int number, const std::string& text);
  std::string* GetSiteProfLinkDB(int number);
  int SetSiteProfFolderDB(int number, const std::string& text);
  std::string* GetSiteProfFolderDB(int number);
  int SetSiteProfRelDB(int number, const std::string& text);
  std::string* GetSiteProfRelDB(int number);
  int SetSiteProfLastUsedDir(int number, const std::string& text);
  std::string* GetSiteProfLastUsedDir(int number);
  int SetSiteProfUseDocRoot(int number, int value);
  int GetSiteProfUseDocRoot(int number);

  // --- The open site -----------------------------------------------------------------------
  // Opens a site by name. 7 without a profile store or database folder, 4 while a site is open, 14
  // for a name that no site has, 17 for a file name that is not set, 5 for a file that cannot be
  // opened.
  int SiteOpen(const std::string& name);
  // Packs and closes the stores. Packing gives links new numbers. What was done can be undone when
  // the site is open again, if its files were not changed in between. -1 with 21 when a store could
  // not be packed or closed. The site is closed then too, and the store's file is as before.
  int SiteClose();
  // Whether the site is whole. Then the stores were read to the end of their files and hold what
  // these count; all links and relations join entries that are there; and the last rebuild came to
  // its end. A complete rebuild makes a site whole.
  bool IsSiteWhole() const;
  // The record number of the open site; -1 for none. The last error stays as it is.
  int OpenSite() const;

  // The same fields of the open site's profile.
  int SetSiteTopFile(const std::string& text);
  int SetSiteDir(const std::string& text, int folder);
  int SetSiteServProf(const std::string& text);
  int SetSiteUrlDB(const std::string& text);
  int SetSiteJunkDB(const std::string& text);
  int SetSiteLinkDB(const std::string& text);
  std::string* GetSiteTopFile();
  std::string* GetSiteDir(int folder);

  // --- URLs: kind 2 files of the site, kind 3 external URLs --------------------------------
  int UrlNum(int kind);  // entries ever added, deleted ones among them
  // The index of a text, added where it is new.
  int UrlAdd(int kind, const std::string& text);
  // Deletes an entry and leaves links to it alone: 15, 16, 20.
  int UrlDel(const UrlID& id);
  // Gives an entry another text; 11 when that is taken.
  int UrlMove(const UrlID& id, const std::string& text);
  // Looks among the files, then among the external URLs; 15 when it is in neither.
  int UrlFind(const std::string& text, UrlID& id);
  // The text of a file, or of either kind: 15 for a deleted entry, 16 past the last one.
  std::string* UrlPath(const UrlID& id);
  std::string* UrlUrl(const UrlID& id);

  // The whole record. SetUrlRec leaves the key alone.
  int GetUrlRec(const UrlID& id, SitUrlRec& record);
  int SetUrlRec(const UrlID& id, const SitUrlRec& record);

  // Single fields (sit_block_db.h). The getter of a text that is not set gives an empty string;
  // setting an empty text gives 11. Getters of numbers give -1 on failure; the last error tells
  // this from a value of -1.
  int SetUrlTitle(const UrlID& id, const std::string& text);
  std::string* GetUrlTitle(const UrlID& id);
  int SetUrlLastModified(const UrlID& id, const std::string& text);
  std::string* GetUrlLastModified(const UrlID& id);
  int SetUrlExpires(const UrlID& id, const std::string& text);
  std::string* GetUrlExpires(const UrlID& id);
  int SetUrlGenerator(const UrlID& id, const std::string& text);
  std::string* GetUrlGenerator(const UrlID& id);
  int SetUrlKeywords(const UrlID& id, const std::string& text);
  std::string* GetUrlKeywords(const UrlID& id);
  int SetUrlDescription(const UrlID& id, const std::string& text);
  std::string* GetUrlDescription(const UrlID& id);
  int SetUrlContentType(const UrlID& id, const std::string& text);
  std::string* GetUrlContentType(const UrlID& id);
  int SetUrlFileType(const UrlID& id, int value);
  int GetUrlFileType(const UrlID& id);
  int SetUrlSize(const UrlID& id, int value);
  int GetUrlSize(const UrlID& id);
  int SetUrlCreationTime(const UrlID& id, int value);
  int GetUrlCreationTime(const UrlID& id);
  int SetUrlModificationTime(const UrlID& id, int value);
  int GetUrlModificationTime(const UrlID& id);
  int SetUrlAccessTime(const UrlID& id, int value);
  int GetUrlAccessTime(const UrlID& id);
  int SetUrlStatus(const UrlID& id, int value);
  int GetUrlStatus(const UrlID& id);
  int SetUrlLastChecked(const UrlID& id, int value);
  int GetUrlLastChecked(const UrlID& id);
  // Publishing membership: Set ORs bits into the word, Unset clears bits.
  int SetUrlFtpMember(const UrlID& id, int marks);
  int UnsetUrlFtpMember(const UrlID& id, int marks);
  int GetUrlFtpMember(const UrlID& id);

  // --- Links -------------------------------------------------------------------------------
  // Links are numbered by record: 15 for a deleted one, 16 past the last.
  int LinkNum();
  // Adds a link or raises the count of the pair's record; its number.
  int LinkAdd(const UrlID& from, const UrlID& to);
  // Takes one from the count, or all with `force`. Gives the count that is left. A count above 0 is
  // not written to the file, so a link with several counts can only be deleted with `force`.
  int LinkDel(int link, int force);
  // Deletes a link with all its counts, and adds one between other ends; the new number. A new link
  // gets the type and the texts; a link that was there keeps its own. The steps form a group; when
  // the move fails, the end of the group is missing.
  int LinkMove(int link, const UrlID& from, const UrlID& to);
  int SetLinkType(int link, int type);  // 1 to 13
  int GetLinkType(int link);
  int SetLinkAsIsUrl(int link, const std::string& text);
  std::string* GetLinkAsIsUrl(int link);  // 17 when there is none
  int SetLinkImgAlt(int link, const std::string& text);
  std::string* GetLinkImgAlt(int link);  // 17 when there is none
  int LinkBothSides(int link, UrlID& from, UrlID& to);
  // The status word of the link's target entry; 15 when that was deleted, 7 when it never was.
  int GetLinkStatus(int link);
  // All links of a pair in file order, where kAnyUrlID matches any end. A crash may have left
  // deleted links; these are skipped. The two below take such a link for the end.
  std::vector<int> LinksBetween(const UrlID& from, const UrlID& to);
  // The next link from or to an entry; 15 at the end, and then the first again. All queries of the
  // process share one position: a question about another entry starts from the beginning.
  int UrlForeLinks(const UrlID& id);
  int UrlBackLinks(const UrlID& id);

  // --- Folders and relations ---------------------------------------------------------------
  int FolderNum();
  // The index of a folder, added where it is new; a missing final "\" is appended.
  int FolderAdd(const std::string& folder);
  int FolderDel(int folder);
  int FolderFind(const std::string& folder);  // 15 for none
  std::string* FolderName(int folder);
  // Joins a parent to a child, once; the number of the relation.
  int RelAdd(const UrlID& parent, const UrlID& child);
  int RelDel(const UrlID& parent, const UrlID& child);  // 15 for none
  // The next child of a parent and the next parent of a child, as UrlForeLinks and UrlBackLinks.
  int RelNextChild(const UrlID& parent, UrlID& child);
  int RelNextParent(const UrlID& child, UrlID& parent);

  // --- Documents ---------------------------------------------------------------------------
  // Asks the disk about the file of an entry of kind 2, and updates type, size, times and status.
  // Gives the status word.
  int InspectUrl(const UrlID& id);
  // These store what a page's document holds: its title, its META texts, and each of its links.
  // Links that the page has already are not taken out. Targets that are new become entries.
  int SaveTitle(const UrlID& page, const Document& document);
  int SaveMeta(const UrlID& page, const Document& document);
  int SaveLinkEach(const UrlID& page, const Document& document);
  // Walks a folder of the open site. Every regular file becomes an entry with what the disk says
  // about it; every folder becomes one with its relations. Names with a "#" and links to folders
  // are left out. A folder is entered only once.
  int RegisterAllFiles(const std::string& folder);
  // Fills all stores of the open site from its folder and empties the history. `complete` gives
  // entries new numbers. Without it the entries of files stay, except files that are missing, that
  // have no mark, and that nothing links to. A damaged store of entries is emptied in both cases.
  // Marks of publishing stay in both cases. 5 when a store cannot be emptied, 20 or 21 when it
  // cannot be written; the stores then hold what the rebuild has done so far.
  int SiteRebuildDB(int complete);

 protected:
  // Handlers of Undo: 0 when done or skipped, -1 for a cell that is not theirs.
  ZVRSIT_LOCAL int UndoLinkDB(HistProc* step, HistCell* cell);
  ZVRSIT_LOCAL int UndoUrlDB(HistProc* step, HistCell* cell);
  ZVRSIT_LOCAL int UndoSiteProf(HistProc* step, HistCell* cell);
  ZVRSIT_LOCAL int UndoServProf(HistProc* step, HistCell* cell);

  // The stores, the history and the rest of what a manager holds; sit_mgr_inside.h.
  class ZVRSIT_LOCAL Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace zvrsit
