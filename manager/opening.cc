// Opening and closing a site by its name.
#include "manager/record_access.h"
#include "manager/site_mgr.h"

namespace zvrsit {

int SiteMgr::SiteOpen(const std::string& siteName, int mode) {
  if (siteName.empty() || siteProf == nullptr) return -1;
  const int siteId = FindSiteProf(siteName);
  if (siteId < 0 || LockSite(siteId) < 0) return -1;
  // Before it was locked, another process may have renamed it.
  const int result = FindSiteProf(siteName) == siteId ? OpenSite(siteId, mode) : -1;
  UnlockSite(siteId);
  return result;
}

int SiteMgr::SiteClose() {
  return CloseSite();
}

}  // namespace zvrsit
