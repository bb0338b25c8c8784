// Looking into the path table of a site other than the open one.
#include <memory>

#include "manager/record_access.h"
#include "manager/work.h"

namespace zvrsit {

namespace {

// All entries are the same string, which ends up with the last path, on purpose: callers count
// them.
std::vector<std::string*>* ListPaths(const SitePathDB* paths) {
  if (!HasFiles(paths)) return nullptr;
  auto list = std::make_unique<std::vector<std::string*>>();
  auto path = std::make_unique<std::string>();
  ForEachNumber(*paths, [&](int number) {
    SitePathRec rec;
    if (paths->Get(number, rec) < 0 || rec.name < 0) return;
    paths->Text(rec.name, *path);
    list->push_back(path.get());
  });
  // Now the caller's, through the entries.
  if (!list->empty()) static_cast<void>(path.release());
  return list.release();
}

// Whether one of the files of a table is `path`; then `text` is its path.
bool Holds(const SitePathDB& paths, const std::string& path, std::string& text) {
  const int number = paths.Find(path);
  return number >= 0 && paths.Name(number, text) == 0;
}

}  // namespace

// The table is still there only when its closing failed.
SiteMgr::~SiteMgr() {
  delete peepPathDB;
}

int SiteMgr::BeginPeep(int siteId) {
  SiteSiteRec site;
  if (!HasFiles(siteProf) || siteProf->Get(siteId, site) < 0 || dbDir == nullptr) return -1;
  std::string name;
  if (siteProf->Text(site.pathFile, name) < 0 || name.empty()) return -1;
  // A table that is still there is not closed first, on purpose: it is there only because its
  // closing failed.
  peepPathDB = new SitePathDB;
  if (inside->onlyAsks()) peepPathDB->SetReadOnly();
  // A folder ends in a separator already, so this is a second one. That is meant.
  return peepPathDB->Open(*dbDir + '\\' + name);
}

int SiteMgr::EndPeep(int) {
  if (peepPathDB == nullptr || peepPathDB->Close() < 0) return -1;
  delete peepPathDB;
  peepPathDB = nullptr;
  return 0;
}

std::vector<std::string*>* SiteMgr::EnumPathInSite(const std::string& siteName) {
  if (siteName.empty() || siteProf == nullptr) return nullptr;
  const int siteId = FindSiteProf(siteName);
  if (siteId < 0) return nullptr;
  const SiteUse site(*this, siteId, Locking::kAsk);
  const ProfileUse use(*this);
  if (!site.isHeld() || FindSiteProf(siteName) != siteId) return nullptr;
  std::vector<std::string*>* list = BeginPeep(siteId) < 0 ? nullptr : ListPaths(peepPathDB);
  if (EndPeep(0) == 0 || list == nullptr) return list;
  if (!list->empty()) DeleteString(list->front());
  delete list;
  return nullptr;
}

std::vector<std::string*>* SiteMgr::EnumSiteHasPath(const std::string& path) {
  std::vector<int> sites;
  if (path.empty() || !Work(*this).ListSites(sites)) return nullptr;
  auto list = std::make_unique<std::vector<std::string*>>();
  for (const int site : sites) {
    const SiteUse held(*this, site, Locking::kAsk);
    const ProfileUse use(*this);
    if (!held.isHeld()) return nullptr;
    const auto text = std::make_unique<std::string>();
    // The entry outlives its string, on purpose: callers count the sites.
    if (BeginPeep(site) == 0 && Holds(*peepPathDB, path, *text)) list->push_back(text.get());
    EndPeep(0);
  }
  return list.release();
}

bool SiteMgr::Work::ListSites(std::vector<int>& sites) const {
  const ProfileUse use(m_);
  if (!HasRecords(m_.siteProf) || m_.siteProf->Count() < 0) return false;
  ForEachNumber(*m_.siteProf, [&](int site) { sites.push_back(site); });
  return true;
}

}  // namespace zvrsit
