// The tables of the open site beside its files on disk.
#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "manager/record_access.h"
#include "manager/recorded_files.h"
#include "manager/site_walk.h"
#include "manager/work.h"
#include "platform/file.h"
#include "platform/native_path.h"

namespace zvrsit {

namespace {

// Whether a page that the walk leaves out belongs to the site all the same.
bool IsKnown(const SitePathDB& paths, const std::string& native) {
  std::string path;
  SitePathRec rec;
  return platform::FromNativePath(native, path) && paths.Get(paths.Find(path), rec) == 0 &&
         rec.exists != 0;
}

// One comparison.
class Comparison {
 public:
  Comparison(const SitePathDB& paths, bool isAsWritten, const PageTypes* types,
             SiteChanges& changes)
      : paths_(paths),
        recorded_(paths, isAsWritten),
        types_(types),
        changes_(changes),
        met_(static_cast<std::size_t>(paths.Count())) {}

  SiteWalk::Steps Steps() {
    SiteWalk::Steps steps;
    steps.file = [this](int, const std::string& path, const platform::FileStat& found) {
      MeetFile(path, found);
      return 0;
    };
    steps.folder = [](int, const std::string&) { return 0; };
    steps.nextFolder = [] { return 0; };
    steps.unlisted = [this](const std::string& name) { changes_.unlisted.push_back(name); };
    steps.leftOut = [this](const std::string& native) {
      if (!IsKnown(paths_, native)) changes_.leftOut.push_back(native);
    };
    return steps;
  }

  // Compares the files that the walk does not meet.
  void MeetOthers() {
    ForEachNumber(paths_, [this](int number) {
      SitePathRec rec;
      std::string path;
      if (met_[static_cast<std::size_t>(number)] || paths_.Get(number, rec) < 0) return;
      if (rec.exists == 0 || paths_.Text(rec.name, path) < 0) return;
      platform::FileStat found;
      if (platform::Stat(path, found) == 0 && found.isRegular()) {
        Compare(path, rec, found);
      } else {
        changes_.gone.push_back(std::move(path));
      }
    });
  }

 private:
  void MeetFile(const std::string& path, const platform::FileStat& found) {
    const int number = paths_.Find(path);
    SitePathRec rec;
    if (number >= 0) met_[static_cast<std::size_t>(number)] = true;
    if (number < 0 || paths_.Get(number, rec) < 0 || rec.exists == 0) {
      changes_.added.push_back(path);
    } else {
      Compare(path, rec, found);
    }
  }

  void Compare(const std::string& path, const SitePathRec& rec, const platform::FileStat& found) {
    if (!HoldsLinks(path, rec, types_)) return;
    if (!recorded_.Has(rec, found)) {
      changes_.changed.push_back(path);
    } else if (rec.unread != SitePathRec::kRead) {
      changes_.unread.push_back(path);
    }
  }

  const SitePathDB& paths_;
  const RecordedFiles recorded_;
  const PageTypes* const types_;  // null for none
  SiteChanges& changes_;
  std::vector<bool> met_;  // by path number
};

}  // namespace

int SiteMgr::CompareWithDisk(SiteChanges& changes) {
  changes = {};
  if (!inside->siteFolder || !HasFiles(pathDB)) return -1;
  Comparison comparison(*pathDB, inside->onlyAsks(), inside->types(), changes);
  SiteWalk(comparison.Steps(), inside->types(), inside->ignoreHook, inside->ignoreContext)
      .Run(*inside->siteFolder, 0);
  comparison.MeetOthers();
  return 0;
}

int SiteMgr::ListUnread(SiteChanges& changes) const {
  changes = {};
  if (!inside->siteFolder || !HasFiles(pathDB)) return -1;
  ForEachNumber(*pathDB, [&](int number) {
    SitePathRec rec;
    if (pathDB->Get(number, rec) < 0 || rec.exists == 0 || rec.unread == SitePathRec::kRead) return;
    std::string path(pathDB->TextView(rec.name));
    if (HoldsLinks(path, rec, inside->types())) changes.unread.push_back(std::move(path));
  });
  std::ranges::copy_if(inside->skippedByRebuild, std::back_inserter(changes.unlisted),
                       [](const std::string& path) { return path.back() == '\\'; });
  std::ranges::copy_if(inside->leftOutByRebuild, std::back_inserter(changes.leftOut),
                       [&](const std::string& native) { return !IsKnown(*pathDB, native); });
  return 0;
}

}  // namespace zvrsit
