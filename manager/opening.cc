// Opening and closing a site by its name.
#include "manager/record_access.h"
#include "manager/site_mgr.h"

namespace zvrsit {

int SiteMgr::SiteOpen(const std::string& siteName, int mode) {
  if (siteName.empty() || siteProf == nullptr) return -1;
  const int siteId = siteProf->Find(siteName);
  return siteId < 0 || !HasRecords(siteProf) ? -1 : OpenSite(siteId, mode);
}

int SiteMgr::SiteClose() {
  return CloseSite();
}

}  // namespace zvrsit
