// An application in small: a site is registered, read and asked. Arguments: the site folder and the
// database folder.
#include <zvrsit40/zvrsit40.h>

#include <cstdio>
#include <string>

// A folder as the library wants it: with `\` between the names and at the end.
std::string Folder(const char* native) {
  std::string path;
  zvrsit::platform::FromNativePath(native, path);
  return path + "\\";
}

// Registers the site, the first time only: from then on its profile is in the database.
bool MakeSite(zvrsit::SiteMgr& manager, const std::string& folder) {
  if (manager.FindSiteProf("harbour") >= 0) return true;
  zvrsit::SiteProfile profile;
  profile.folders[zvrsit::kSlotSiteFolder] = folder;
  profile.topFile = folder + "index.htm";
  profile.linkRules = zvrsit::LinkRules::Web;
  return manager.SetSiteProf("harbour", profile) == 0;
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string site = Folder(argv[1]);
  zvrsit::DOM dom;  // outlives the manager
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(Folder(argv[2]).c_str(), "sites.R", "servers.R", 0);
  if (!MakeSite(manager, site) || manager.SiteOpen("harbour", 0) != 0) return 1;

  // Reads all pages; its result says only that the state could be stored, and 2 is success.
  if (manager.GetSiteProfRebuildState() != 2) manager.SiteRebuildDB(1, nullptr);
  if (manager.GetSiteProfRebuildState() != 2) return 1;

  zvrsit::vec<zvrsit::SiteRecCell>* links = manager.GetForeLinks(site + "index.htm");
  if (links == nullptr) return 1;
  for (const zvrsit::SiteRecCell& link : *links) {
    const std::string name = link.GetName().substr(site.size());
    const char* type = zvrsit::LinkTypeName(static_cast<unsigned>(link.GetLinkType()));
    std::printf("to %s: %s%s\n", name.c_str(), type, link.GetFlag() == 1 ? "" : ", missing");
  }
  manager.DeleteVecRecCell(links);

  zvrsit::vec<zvrsit::SiteRecCell>* missing = manager.GetBrokenLinks();
  if (missing == nullptr) return 1;
  std::printf("%zu file missing\n", missing->size());
  manager.DeleteVecRecCell(missing);
  return manager.SiteClose() == 0 ? 0 : 1;
}
