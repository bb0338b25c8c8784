// A site on disk with an older manager over it, in the words of a test.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "legacy/sit_block_db.h"
#include "legacy/sit_mgr.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "support/temp_folder.h"

namespace zvrsit::test {

// A manager that lets a test look at its stores.
class OpenSitMgr : public SitMgr {
 public:
  SitPairDB& links() { return *inside_->linkDB; }
  SitPairDB& relations() { return *inside_->relDB; }
};

// The text of a string that the library gave, which is given back; "(null)" for none.
inline std::string Text(std::string* text) {
  const std::unique_ptr<std::string> owned(text);
  return owned ? *owned : "(null)";
}

// The last error of a call that failed; -1 when it did not fail.
inline int Error(const SitMgr& mgr, int result) {
  return result < 0 ? mgr.GetLastError() : -1;
}
inline int Error(const SitMgr& mgr, std::string* text) {
  return Error(mgr, Text(text) == "(null)" ? -1 : 0);
}

// The folder `site` with the folder `db` beside it and a site "demo", not yet open. Names are
// native and relative to `site`.
class LegacySite {
 public:
  LegacySite() {
    folder_.makeFolder("site");
    MakeDatabase();
  }

  void MakeDatabase() {
    Start();
    SitSiteProperty property;
    property.dir[1] = dir();
    property.topFile = path("index.html");
    mgr->SetSiteProf("demo", property);
  }

  // A new manager over the same files.
  void Start() {
    mgr = std::make_unique<OpenSitMgr>();
    mgr->setDB(folder_.path("db") + "\\", "sites", "servers");
  }
  int Open() { return mgr->SiteOpen("demo"); }
  void Reopen() {
    mgr->SiteClose();
    Open();
  }

  void write(const std::string& name, const std::string& bytes) const {
    folder_.write("site/" + name, bytes);
  }
  std::string path(const std::string& name) const { return folder_.path("site/" + name); }
  std::string dir() const { return folder_.path("site") + "\\"; }
  const TempFolder& folder() const { return folder_; }

  int Status(const std::string& name) const {
    SitUrlRec record;
    return mgr->GetUrlProperty(path(name), record) < 0 ? -1 : record.status;
  }

  // Every link as "from > to type text alt count", entries of the site without its folder.
  std::multiset<std::string> Links() const {
    std::multiset<std::string> rows;
    for (const int id : mgr->links().Matching(kAnyUrlID, kAnyUrlID)) {
      const auto record = mgr->links().Read(id);
      rows.insert(Short(Text(mgr->UrlUrl(record->from))) + " > " +
                  Short(Text(mgr->UrlUrl(record->to))) + " " + std::to_string(record->linkType) +
                  " " + mgr->links().GetString(record->asIsUrlId).value_or("-") + " " +
                  mgr->links().GetString(record->imgAltId).value_or("-") + " " +
                  std::to_string(record->refCount));
    }
    return rows;
  }

  // Every entry of the URL and junk files as its bytes, and every relation.
  std::multiset<std::string> Entries() const {
    std::multiset<std::string> rows;
    for (const int kind : {kKindPath, kKindUrl}) {
      for (int i = 0; i < mgr->UrlNum(kind); ++i) {
        SitUrlRec record;
        if (mgr->GetUrlRec({kind, i}, record) == 0) {
          record.accessTime = 0;  // reading a page changes it
          rows.insert(std::to_string(kind) + "/" + std::to_string(i) + ToHex(EncodeUrlRec(record)));
        }
      }
    }
    for (const int id : mgr->relations().Matching(kAnyUrlID, kAnyUrlID)) {
      const auto record = mgr->relations().Read(id);
      rows.insert(Text(mgr->FolderName(record->from.id)) + " holds " +
                  std::to_string(record->to.kind) + "/" + std::to_string(record->to.id));
    }
    return rows;
  }

  std::unique_ptr<OpenSitMgr> mgr;

 private:
  std::string Short(std::string text) const {
    if (text.starts_with(dir())) text.erase(0, dir().size());
    return text;
  }

  TempFolder folder_;
};

}  // namespace zvrsit::test
