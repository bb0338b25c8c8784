// One run of an update of the open site.
//
// What makes it exact: the links of a file depend on the file, on the profile, and on what its
// targets are on the disk. The first is seen from size and time. A change of the profile makes a
// rebuild necessary. Of the last, links to folders and to files without their extensions are
// followed (folder_links.cc); everything else that there is shows in OperationMemo::traits or while
// the disk is walked, and makes a rebuild necessary as soon as it matters:
//   - rules of `_redirects`, when they or any file or folder have come or gone
//   - applets, when any file has come or gone; references that mind folders, when a folder has
//   - sheets with other extensions or outside of the site, and sheets with references that take
//     their encoding from others, when any page or sheet has changed
//   - pages and sheets that links name in other letter case, where the system ignores it;
//   - pages and sheets below folders that are links, and sheets with a "#" in their names: at any
//     change; pages with a "#", when they lose a link
//   - folders that cannot be read: always
//   - with the classic rules, files outside of the site that are there: at any change; with the web
//     rules, when they lie in more than one folder
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "manager/rebuild_progress.h"
#include "manager/site_changes.h"
#include "manager/update_note.h"
#include "manager/work.h"
#include "platform/file.h"

namespace zvrsit {

class SiteMgr::Update {
 public:
  Update(SiteMgr& manager, SiteUpdates& updates, CZvrSiteRebuildProgressDlg* dialog)
      : m_(manager), work_(manager), updates_(updates), progress_(dialog) {}

  // As SiteMgr::SiteUpdate.
  int Run();

  // What a note must say so that the tables of the open site can be trusted.
  static std::vector<std::string> ConditionsOf(const SiteMgr& manager);

 private:
  // A file that is on the disk.
  struct Found {
    int number;  // -1 for one without an entry
    std::string path;
    platform::FileStat stat;
  };
  // To what a page or a sheet had links before it was read again.
  struct Reread {
    int number;
    std::vector<UrlID> targets;
  };

  // update_walk.cc
  [[nodiscard]] int WalkSite();
  void MeetWhatWasNotWalked();
  void MeetFile(const std::string& path, const platform::FileStat& found);
  void MeetSame(int number, const std::string& path, const platform::FileStat& stat,
                const SitePathRec& rec);
  void MeetYoung();
  void MeetOthers();
  void MeetOther(int number, const SitePathRec& rec);
  void NoteUnwatched(const Found& other, bool isFolder);
  void CompareFolders();
  std::unordered_set<std::string> FoldersOfOthers() const;
  // The record of a file that was never seen on the disk.
  static SitePathRec AsMissing(const SitePathRec& rec, std::string_view path);
  // Whether a record has what the disk once said about the file.
  static bool WasThere(const SitePathRec& rec);
  static bool IsSame(const SitePathRec& rec, const platform::FileStat& found);
  void MarkWalked(int number);
  bool IsWalked(int number) const {
    return number >= 0 && static_cast<std::size_t>(number) < walked_.size() &&
           walked_[static_cast<std::size_t>(number)];
  }
  // Whether folders could not be read; until files are read, nothing else was skipped.
  bool HasUnlisted() const { return !m_.inside->skippedByRebuild.empty(); }
  bool IsChange() const;
  bool ListedFoldersChanged() const;
  bool NeedsRebuild() const;
  bool TouchesPages() const;
  // Whether this is a page or a sheet of the site, and so one that is read although the walk has
  // not met it.
  bool IsFoundPage(std::string_view path) const;
  bool HasTroublesomeOthers() const;
  bool RelatesFoldersOutside() const;
  bool RedirectsMatter(bool moved) const;

  // update.cc
  [[nodiscard]] int Apply();
  [[nodiscard]] int TakeOutGone();
  [[nodiscard]] int StoreFacts();
  [[nodiscard]] int AddCome();
  std::vector<int> ListToRead() const;
  [[nodiscard]] int ReadAgain();
  [[nodiscard]] int Forget(int number);
  void CollectOne(int number);
  bool HasMetWhatNeedsRebuild();
  void MeetFound();
  void ListTouched();
  std::vector<UrlID> TargetsOf(int number) const;

  // update_sweep.cc
  [[nodiscard]] int Sweep();
  void CompareTargets();
  bool IsThere(int number) const;
  [[nodiscard]] int DropUnlinked();
  [[nodiscard]] int DropUnlinkedPath(int number);
  [[nodiscard]] int SweepRelations();
  [[nodiscard]] int MarkFamily();

  SiteMgr& m_;
  Work work_;
  SiteUpdates& updates_;
  RebuildProgress progress_;
  std::string siteDir_;
  UpdateNote note_;
  Inside::Reading reading_;

  // What the disk has. Names of folders end in `\`, except in CameOrGone.
  std::vector<bool> walked_;  // by path number
  std::vector<std::string> folders_;
  std::unordered_set<std::string> walkedFolders_;
  std::vector<int> parents_;  // of folders_: the place of the one above; -1 for the site's
  std::vector<Found> come_;
  std::vector<Found> changed_;
  std::vector<Found> touched_;        // only times that do not tell of a change are others
  std::vector<Found> others_;         // with an entry, but the walk does not meet them
  std::vector<Found> changedOthers_;  // those that are new or have changed
  std::vector<int> gone_;
  std::vector<int> toRead_;  // pages and sheets that look as they were, but are unread or young
  Work::CameOrGone moved_;
  Work::CameOrGone unwatched_;  // may have come or gone unseen

  std::vector<Reread> rereads_;
  std::vector<int> gained_;  // files to which a member of the family links now
  std::vector<int> roots_;   // of the family before
  bool lostLink_ = false;    // an entry may have lost its last link
  bool familyMayShrink_ = false;
  bool foundPageMayGo_ = false;  // a page that is read only because something links to it
  int countBefore_ = 0;          // of path numbers, before anything was read
};

}  // namespace zvrsit
