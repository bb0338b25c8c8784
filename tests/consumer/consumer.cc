// An application in small: a site is registered, rebuilt and asked. Arguments: the site folder and
// the database folder, both ending in "/".
#include <zvrsit40.h>

#include <cstdio>
#include <string>

namespace {

std::string Backslashed(std::string path) {
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  return path;
}

int Count(zvrsit::vec<zvrsit::SiteRecCell>* cells) {
  const int count = cells == nullptr ? -1 : static_cast<int>(cells->size());
  zvrsit::SiteMgr::DeleteVecRecCell(cells);
  return count;
}

}  // namespace

int main(int, char** argv) {
  const std::string site = Backslashed(argv[1]);
  zvrsit::DOM dom;
  zvrsit::SiteMgr manager;
  manager.setDom(&dom);
  manager.setDB(Backslashed(argv[2]).c_str(), "sites.R", "servers.R", 0);

  zvrsit::SiteProfile profile;
  profile.folders[zvrsit::kSlotSiteFolder] = site;
  profile.topFile = site + "index.htm";
  profile.linkRules = zvrsit::LinkRules::Web;
  if (manager.SetSiteProf("demo", profile) < 0) return 1;
  if (manager.SiteOpen("demo", 0) != 0) return 2;
  if (manager.SiteRebuildDB(1, nullptr) != 0 || manager.GetSiteProfRebuildState() != 2) return 3;

  const int out = Count(manager.GetForeLinks(site + "index.htm"));
  const int in = Count(manager.GetBackLinks(site + "index.htm"));
  const int broken = Count(manager.GetBrokenLinks());
  const int urls = Count(manager.EnumUrl());
  manager.SiteClose();
  std::printf("links from %d, to %d, broken %d, urls %d\n", out, in, broken, urls);
  return out == 2 && in == 1 && broken == 1 && urls == 1 ? 0 : 4;
}
