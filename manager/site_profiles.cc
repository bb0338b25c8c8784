// The profiles of sites.
#include <memory>

#include "manager/record_access.h"
#include "manager/site_mgr.h"
#include "platform/file.h"

namespace zvrsit {

namespace {

std::string TextOf(const SiteSiteProfDB& table, int reference) {
  std::string text;
  table.Text(reference, text);
  return text;
}

}  // namespace

std::vector<std::string*>* SiteMgr::EnumSiteProf() {
  if (!HasFiles(siteProf)) return nullptr;
  auto names = std::make_unique<std::vector<std::string*>>();
  for (int n = siteProf->NextNumber(0); n >= 0; n = siteProf->NextNumber(n + 1)) {
    std::string name;
    if (siteProf->Name(n, name) == 0) names->push_back(new std::string(name));
  }
  return names.release();
}

int SiteMgr::GetSiteProf(const std::string& name, SiteProfile& profile) {
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(siteProf->Find(name), rec) < 0) return -1;
  for (int slot = 0; slot < kSiteFolderSlots; ++slot) {
    const auto at = static_cast<std::size_t>(slot);
    profile.folders[at] = TextOf(*siteProf, rec.folders[at]);
  }
  profile.topFile = TextOf(*siteProf, rec.topFile);
  profile.defaultUrl = TextOf(*siteProf, rec.defaultUrl);
  profile.server = TextOf(*siteProf, rec.servProf);
  profile.useDocumentRoot = rec.useDocRoot != 0;
  profile.linkRules = rec.linkRules == 1 ? LinkRules::Web : LinkRules::Classic;
  profile.rebuildState = rec.rebuildState;
  return 0;
}

int SiteMgr::SetSiteProf(const std::string& name, const SiteProfile& profile) {
  if (!HasFiles(siteProf) || dbDir == nullptr) return -1;
  int number = siteProf->Find(name);
  if (number < 0) {
    number = siteProf->Add(name);
    if (number < 0 || platform::MakeFolderOfPath(*dbDir + name + "\\UR") < 0) return -1;
  }
  for (int slot = 0; slot < kSiteFolderSlots; ++slot) {
    const std::string& folder = profile.folders[static_cast<std::size_t>(slot)];
    if (siteProf->SetFolder(number, slot, folder) < 0) return -1;
  }
  if (siteProf->SetText(number, &SiteSiteRec::topFile, profile.topFile) < 0 ||
      siteProf->SetText(number, &SiteSiteRec::defaultUrl, profile.defaultUrl) < 0 ||
      siteProf->SetText(number, &SiteSiteRec::servProf, profile.server) < 0 ||
      siteProf->SetNumber(number, &SiteSiteRec::useDocRoot, profile.useDocumentRoot ? 1 : 0) < 0 ||
      siteProf->SetNumber(number, &SiteSiteRec::linkRules,
                          profile.linkRules == LinkRules::Web ? 1 : 0) < 0) {
    return -1;
  }
  return siteProf->SetNumber(number, &SiteSiteRec::rebuildState, profile.rebuildState);
}

std::string* SiteMgr::GetSiteProfTopFile(int siteId) {
  const int number = siteId < 0 ? openSiteId : siteId;
  auto text = std::make_unique<std::string>();
  if (!HasFiles(siteProf) || siteProf->GetText(number, &SiteSiteRec::topFile, *text) < 0) {
    return nullptr;
  }
  return text.release();
}

}  // namespace zvrsit
