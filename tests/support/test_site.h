// A site on disk with a manager over it, in the words of a test.
#pragma once

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "dom/dom.h"
#include "manager/site_mgr.h"
#include "storage/records.h"
#include "support/temp_folder.h"
#include "tables/site_folder_db.h"
#include "tables/site_link_db.h"
#include "tables/site_path_db.h"
#include "tables/site_rel_db.h"
#include "tables/site_site_prof_db.h"
#include "tables/site_url_db.h"

namespace zvrsit::test {

// A manager that lets a test look at what it keeps.
class OpenMgr : public SiteMgr {
 public:
  void SetLinksChanged(int value) { linksChanged = value; }
};

// The folder `site` with `index.html`, the folder `db` beside it, and a profile "demo" over both,
// not yet open. Names are native and relative to `site`.
class TestSite {
 public:
  explicit TestSite(LinkRules rules = LinkRules::Classic) {
    write("index.html", "<html></html>");
    folder_.makeFolder("db/demo");
    Start();
    const int number = mgr->GetSiteProf()->Add("demo");
    EXPECT_GE(mgr->GetSiteProf()->SetFolder(number, kSlotSiteFolder, dir()), 0);
    EXPECT_GE(mgr->GetSiteProf()->SetText(number, &SiteSiteRec::topFile, path("index.html")), 0);
    EXPECT_GE(
        mgr->GetSiteProf()->SetNumber(number, &SiteSiteRec::linkRules, static_cast<int>(rules)), 0);
  }

  // A new manager over the same files; the one before is closed as a program closes it.
  void Start() {
    if (mgr != nullptr) mgr->SiteClose();
    mgr = std::make_unique<OpenMgr>();
    mgr->setDom(&dom);
    mgr->setDB((folder_.path("db") + "\\").c_str(), "sites.R", "servers.R", 0);
  }
  int Open() { return mgr->SiteOpen("demo", 0); }

  void write(const std::string& name, std::string_view bytes) const {
    folder_.write("site/" + name, bytes);
  }
  std::string native(const std::string& name) const { return folder_.native("site/" + name); }
  std::string path(const std::string& name) const { return folder_.path("site/" + name); }
  std::string dir() const { return folder_.path("site") + "\\"; }
  const TempFolder& folder() const { return folder_; }

  int Number(const std::string& name) const { return mgr->GetPathDB()->Find(path(name)); }
  SitePathRec Record(const std::string& name) const {
    SitePathRec rec;
    EXPECT_GE(mgr->GetPathDB()->Get(Number(name), rec), 0);
    return rec;
  }

  // All links of the site: "from -> to text type count", a line each, by record number. Files of
  // the site by their relative `\` path.
  std::string Links() const {
    std::ostringstream out;
    const SiteLinkDB& links = *mgr->GetLinkDB();
    for (int i = links.NextNumber(0); i >= 0; i = links.NextNumber(i + 1)) {
      SiteLinkRec link;
      EXPECT_GE(links.Get(i, link), 0);
      out << Name(link.from) << " -> " << Name(link.to) << " " << links.TextView(link.text) << " "
          << std::hex << link.type << std::dec << " " << link.count << "\n";
    }
    return out.str();
  }

  // The tables by name: files with number, flag, type, size, marks, title and number of anchors,
  // folders, URLs, relations, links.
  std::string Dump() const {
    std::ostringstream out;
    const SitePathDB& paths = *mgr->GetPathDB();
    for (int i = paths.NextNumber(0); i >= 0; i = paths.NextNumber(i + 1)) {
      SitePathRec rec;
      EXPECT_GE(paths.Get(i, rec), 0);
      out << i << " " << Name(UrlID(kKindPath, i)) << " " << rec.exists << " " << rec.fileType
          << " " << rec.size << " " << rec.membership << " '" << paths.TextView(rec.title) << "' "
          << rec.listCount << "\n";
    }
    List(*mgr->GetFolderDB(), kKindFolder, out);
    List(*mgr->GetUrlDB(), kKindUrl, out);
    const SiteRelDB& rels = *mgr->GetRelDB();
    for (int i = rels.NextNumber(0); i >= 0; i = rels.NextNumber(i + 1)) {
      SiteRelRec rel;
      EXPECT_GE(rels.Get(i, rel), 0);
      out << Name(rel.from) << " > " << Name(rel.to) << "\n";
    }
    return out.str() + Links();
  }

  DOM dom;
  std::unique_ptr<OpenMgr> mgr;

 private:
  template <class Table>
  void List(const Table& table, int kind, std::ostringstream& out) const {
    for (int i = table.NextNumber(0); i >= 0; i = table.NextNumber(i + 1)) {
      out << Name(UrlID(kind, i)) << "\n";
    }
  }

  std::string Name(const UrlID& id) const {
    std::string name = "?";
    if (id.kind == kKindFolder) (void)mgr->GetFolderDB()->Name(id.id, name);
    if (id.kind == kKindPath) (void)mgr->GetPathDB()->Name(id.id, name);
    if (id.kind == kKindUrl) (void)mgr->GetUrlDB()->Name(id.id, name);
    return name.starts_with(dir()) ? name.substr(dir().size()) : name;
  }

  TempFolder folder_;
};

}  // namespace zvrsit::test
