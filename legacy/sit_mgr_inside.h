// What a manager of the older generation holds, and the steps of its operations.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "legacy/sit_mgr_base.h"

namespace zvrsit {

template <class Rec>
class ProfEditor;
struct ServRec;
class SitBlockDB;
class SitHist;
class SitPairDB;
struct SitPairRec;
struct SitPageReader;
class SitServProf;
class SitSiteProf;
struct SiteRec;

// A copy of a manager has the stores of the original, and a last error of its own.
struct SitMgrState {
  std::shared_ptr<SitHist> history;
  std::shared_ptr<SitSiteProf> siteProf;
  std::shared_ptr<SitServProf> servProf;
  std::shared_ptr<SiteRec> site;  // of the open site, or of the one that is peeped into
  int siteId = -1;
  std::shared_ptr<SitBlockDB> urlDB;
  std::shared_ptr<SitBlockDB> junkDB;
  std::shared_ptr<SitBlockDB> folderDB;
  std::shared_ptr<SitPairDB> linkDB;
  std::shared_ptr<SitPairDB> relDB;
  std::optional<std::string> dbDir;
  int lastError = kSitOk;
  int lastErrno = 0;
  bool keepsTextNumbers = false;  // while UndoWithAlternatives works
  std::shared_ptr<SitPageReader> pageReader;
  DOM* dom = nullptr;  // the caller's, or null
};

// Results are told as by the operations of the manager: they set the last error.
class SitMgrBase::Inside : public SitMgrState {
 public:
  // A group of steps from here to the end of the scope.
  class Group {
   public:
    explicit Group(SitHist& steps);
    ~Group();
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

   private:
    SitHist& history_;
  };

  explicit Inside(SitMgrBase& owner);
  Inside(SitMgrBase& owner, const Inside& original) : SitMgrState(original), manager(owner) {}

  SitMgrBase& manager;

  // --- Results -----------------------------------------------------------------------------
  int Fail(int error);
  std::string* FailText(int error);
  int Succeed(int result = 0);
  // How many writes to the stores that are open have failed.
  int FailedWrites() const;
  // `result` with the last error 0; or, when writes have failed since `before`, -1 with `error`.
  int Written(int before, int result = 0, int error = kSitWriteFailed);
  // What `change` gives, or -1 with `error` when a write of it has failed.
  template <class Change>
  int UnlessWritesFail(Change change, int error = kSitWriteFailed) {
    const int before = FailedWrites();
    const int result = change();
    return FailedWrites() == before ? result : Fail(error);
  }

  // --- Taking back -------------------------------------------------------------------------
  void UndoCells(HistProc* step);
  void UndoCell(HistProc* step, HistCell* cell);

  // --- Profiles, and the open site ---------------------------------------------------------
  // The operations on the profile stores.
  ProfEditor<ServRec> Servers();
  ProfEditor<SiteRec> Sites();
  int NameSiteFiles(const std::string& name);
  bool IsFolderTaken(const std::string& folder);
  bool OpenStores(const std::array<std::string, 5>& paths);
  std::array<std::string, 5> StorePaths() const;
  void CloseStores();
  std::optional<std::string> SiteString(int id) const;
  int SetOpenSite(const std::function<int()>& set);
  // The profile of the open site as it is now.
  SiteRec SiteNow() const;
  // Empty while none is open or the slot is not set.
  std::string SiteFolder() const;
  std::string TopFile() const;

  // --- Entries -----------------------------------------------------------------------------
  // The store of a kind of entry, null for another kind; with no site open the last error is 3.
  SitBlockDB* StoreOf(int kind);
  // The same for kinds 2 and 3 only.
  SitBlockDB* UrlStoreOf(const UrlID& id);
  int GetUrlNumber(const UrlID& id, std::int32_t SitUrlRec::*field);
  int SetUrlNumber(const UrlID& id, std::int32_t SitUrlRec::*field, int value);
  std::string* GetUrlText(const UrlID& id, std::string SitUrlRec::*field);
  int SetUrlText(const UrlID& id, std::string SitUrlRec::*field, const std::string& text);

  // --- Links and relations -----------------------------------------------------------------
  // Whether the pair could be the end of a link or of a relation.
  static bool IsLinkEnd(const UrlID& id);
  static bool IsRelEnd(const UrlID& id);
  std::unique_ptr<SitPairRec> ReadLink(int link);
  // For a target that could not be read: 15 stays when it was deleted, else 7.
  int FailTarget();
  // Deletes a link with its strings; no step of its own.
  int DropLink(SitPairRec& record, bool force);
  // Gives a link its texts, each unless it is empty, and its type. 0 or -1.
  int SetLinkFields(int link, int type, const std::string& asIsUrl, const std::string& imgAlt);
  // Deletes all links from an entry, each in a step of its own.
  int DropForeLinks(const UrlID& from);
  std::string* GetLinkText(int link, std::int32_t SitPairRec::*field);
  int SetLinkText(int link, std::int32_t SitPairRec::*field, const std::string& text);
  int NextRelated(const UrlID& from, const UrlID& to, UrlID& other);

  // --- Files and documents -----------------------------------------------------------------
  SitPageReader& Reader();
  // Reads the page of an entry from disk, and gives a document back. A file that cannot be read
  // yields an empty document.
  Document* LoadDocument(const std::string& path);
  void FreeDocument(Document* document);
  // Replaces title, META texts and links of a page by those of its document.
  int SaveDocument(const UrlID& page, const Document& document);
  int SaveTexts(const UrlID& page, bool title, bool metas);
  int SaveRows(const UrlID& page, const Document& document);
  void FillFromDisk(SitUrlRec& record) const;
  // The entry of a file: as it is, or made again from the disk.
  int AddInspected(const std::string& path);
  // The entry of a file, inspected in either case.
  int RegisterFile(const std::string& path);
  // Registers the folders above a file or folder up to the site folder, each with its relation.
  int RegisterParents(const std::string& path, const UrlID& child);
  // Adds the target of the page in hand, and a link to it.
  int RegisterLink(const UrlID& page, int type, std::string_view target,
                   std::string_view alternative, UrlID* to = nullptr);
  int RegisterLinkTo(const UrlID& page, const UrlID& to, int type, std::string_view text,
                     std::string_view alternative);
  int RegisterTarget(std::string_view target, UrlID& id);
  int RegisterAppletFolder(const UrlID& page, const UrlID& applet);

  // --- The steps of a rebuild --------------------------------------------------------------
  int Refill(const std::string& folder, int complete);
  std::unordered_map<std::string, std::int32_t> UserMarks();
  int EmptyStores(int complete);
  int NoteRebuild(int state);
  int ReadPages();
  int DropMissing();
};

}  // namespace zvrsit
