// A site whose tables are compared with those of another manager over the same files.
#pragma once

#include <algorithm>
#include <filesystem>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "dom/dom.h"
#include "manager/site_mgr.h"
#include "support/temp_folder.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_url_db.h"

namespace zvrsit::test {

// A site in the folder "site", with its home page.
inline SiteProfile ProfileOf(const TempFolder& folder, LinkRules rules) {
  SiteProfile profile;
  profile.folders[kSlotSiteFolder] = folder.path("site") + "\\";
  profile.topFile = folder.path("site/index.html");
  profile.linkRules = rules;
  return profile;
}

// The tables of the site "demo" in a database folder of their own. What fails throws.
class SiteTables {
 public:
  SiteTables(const TempFolder& folder, const std::string& database, const SiteProfile& profile)
      : folder_(folder.path(database) + "\\"), native_(folder.native(database)) {
    Start();
    Expect(mgr->SetSiteProf("demo", profile) == 0, "the profile");
  }

  void Start() {
    mgr = std::make_unique<SiteMgr>();
    mgr->setDom(&dom_);
    mgr->setDB(folder_.c_str(), "sites.R", "servers.R", 0);
  }
  void Open() { Expect(mgr->SiteOpen("demo", 0) == 0, "opening"); }
  // Into empty tables.
  void Rebuild() {
    mgr = nullptr;
    std::filesystem::remove_all(std::filesystem::path(native_) / "demo");
    std::filesystem::create_directories(std::filesystem::path(native_) / "demo");
    Start();
    Open();
    Expect(mgr->SiteRebuildDB(1, nullptr) == 0, "the rebuild");
    Expect(mgr->FlushUpdated() == 0, "writing");
  }

  // All that the tables hold, by names, in an order that does not depend on numbers.
  std::vector<std::string> Dump() const {
    std::vector<std::string> lines;
    const SitePathDB& paths = *mgr->GetPathDB();
    Each(paths, [&](int number) {
      SitePathRec rec;
      Expect(paths.Get(number, rec) == 0, "a record");
      std::ostringstream line;
      line << "file " << paths.NameView(number) << " " << rec.exists << " " << rec.fileType << " "
           << rec.size << " " << rec.creationTime << " " << rec.modificationTime << " "
           << rec.membership << " " << rec.unread;
      for (const std::int32_t text : {rec.title, rec.lastModified, rec.expires, rec.generator,
                                      rec.keywords, rec.description, rec.contentType})
        line << " '" << paths.TextView(text) << "'";
      std::vector<std::int32_t> anchors;
      Expect(paths.GetList(rec, anchors) == 0, "a record");
      for (const std::int32_t anchor : anchors) line << " #" << paths.TextView(anchor);
      lines.push_back(line.str());
    });
    Each(*mgr->GetFolderDB(), [&](int n) { lines.push_back("folder " + Name({kKindFolder, n})); });
    Each(*mgr->GetUrlDB(), [&](int n) { lines.push_back("url " + Name({kKindUrl, n})); });
    Each(*mgr->GetRelDB(), [&](int number) {
      SiteRelRec rel;
      Expect(mgr->GetRelDB()->Get(number, rel) == 0, "a record");
      lines.push_back("relation " + Name(rel.from) + " > " + Name(rel.to));
    });
    Each(*mgr->GetLinkDB(), [&](int number) {
      SiteLinkRec link;
      Expect(mgr->GetLinkDB()->Get(number, link) == 0, "a record");
      std::ostringstream line;
      line << "link " << Name(link.from) << " > " << Name(link.to) << " '"
           << mgr->GetLinkDB()->TextView(link.text) << "' '"
           << mgr->GetLinkDB()->TextView(link.alternative) << "' " << std::hex << link.type
           << std::dec << " x" << link.count << " @" << link.offset;
      lines.push_back(line.str());
    });
    std::ranges::sort(lines);
    return lines;
  }

  std::unique_ptr<SiteMgr> mgr;

 private:
  static void Expect(bool isWell, const char* what) {
    if (!isWell) throw std::runtime_error(std::string(what) + " failed");
  }
  template <class Visit>
  static void Each(const SiteTable& table, Visit visit) {
    for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) visit(i);
  }
  std::string Name(const UrlID& id) const {
    std::string name = "?";
    if (id.kind == kKindFolder) (void)mgr->GetFolderDB()->Name(id.id, name);
    if (id.kind == kKindPath) (void)mgr->GetPathDB()->Name(id.id, name);
    if (id.kind == kKindUrl) (void)mgr->GetUrlDB()->Name(id.id, name);
    return name;
  }

  const std::string folder_;
  const std::string native_;
  DOM dom_;
};

}  // namespace zvrsit::test
