// An authoring application in small, from one source for Windows and other systems: it opens a
// site, saves its top page, shows the links of that page, and rebuilds the site with a dialog.
//
//   author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME
//
// Folders are absolute, as the system writes them, and end in its separator.
#include <zvrsit40/zvrsit40.h>

#include <cstdio>
#include <string>

#include "dialog.h"

namespace {

std::string LibraryPath(const char* native) {
  std::string path;
  zvrsit::platform::FromNativePath(native, path);
  return path;
}

void ShowLinks(zvrsit::SiteMgr& manager, const std::string& page) {
  zvrsit::vec<zvrsit::SiteRecCell>* links = manager.GetForeLinks(page);
  if (links == nullptr) return;
  for (const zvrsit::SiteRecCell& link : *links) std::printf("  %s\n", link.GetName().c_str());
  zvrsit::SiteMgr::DeleteVecRecCell(links);
}

bool OpenSite(zvrsit::SiteMgr& manager, const std::string& site, const std::string& page) {
  zvrsit::SiteProfile profile;
  profile.folders[zvrsit::kSlotSiteFolder] = site;
  profile.topFile = page;
  profile.linkRules = zvrsit::LinkRules::Web;
  manager.SetSiteProf("author", profile);
  return manager.SiteOpen("author", 0) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("author SITE_FOLDER DATABASE_FOLDER TOP_FILE_NAME\n", stderr);
    return 2;
  }
  const std::string site = LibraryPath(argv[1]);
  const std::string page = site + argv[3];
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(LibraryPath(argv[2]).c_str(), "sites.R", "servers.R", 0);
  if (!OpenSite(manager, site, page)) {
    std::fputs("the site cannot be opened\n", stderr);
    return 1;
  }
  std::puts("saving the top page; its links:");
  manager.Save(page, nullptr);
  ShowLinks(manager, page);

  std::puts("rebuilding:");
  Dialog dialog;
  manager.SiteRebuildDB(1, dialog.handles());
  const bool rebuilt = manager.GetSiteProfRebuildState() == 2;
  std::printf("%s; the bar stands at %d\n", rebuilt ? "rebuilt" : "the rebuild failed",
              dialog.position());
  manager.SiteClose();
  return rebuilt ? 0 : 1;
}
