// The files of the tables, looked at whether or not they can be opened.
#include "manager/work.h"
#include "tables/site_check.h"
#include "tables/table_dump.h"
#include "util/site_name.h"

namespace zvrsit {

// The files are found by the name of the site, not by what a damaged profile says about them.
template <class Use>
int SiteMgr::Work::WithTablesOf(const std::string& siteName, Use use) {
  const int siteId = m_.FindSiteProf(siteName);
  if (siteId < 0 || m_.dbDir == nullptr || !IsSiteName(siteName)) return -1;
  const SiteUse site(m_, siteId, Locking::kAsk);
  const ProfileUse profiles(m_);
  if (!site.isHeld() || m_.FindSiteProf(siteName) != siteId) return -1;
  SiteTableNames files;
  for (std::size_t i = 0; i < files.size(); ++i) {
    files[i] = (*m_.dbDir + siteName).append(kSiteTableFiles[i].suffix);
  }
  use(files);
  return 0;
}

int SiteMgr::VerifySite(const std::string& siteName, TableFaults& faults) {
  return Work(*this).WithTablesOf(
      siteName, [&](const SiteTableNames& files) { CheckSiteTables(files, faults); });
}

int SiteMgr::VerifyProfiles(TableFaults& faults) {
  const ProfileUse use(*this);
  if (!use.isHeld() || servProfPath == nullptr) return -1;
  CheckProfileTables(inside->siteProfPath, *servProfPath, faults);
  return 0;
}

int SiteMgr::DumpTable(TableKind table, const std::string& siteName, bool dead, DumpHook hook,
                       void* context, std::vector<TableFault>& stopped) {
  if (table != TableKind::kSites && table != TableKind::kServers) {
    return Work(*this).WithTablesOf(siteName, [&](const SiteTableNames& files) {
      DumpRecords(table, files[static_cast<std::size_t>(table)], dead, hook, context, stopped);
    });
  }
  const ProfileUse use(*this);
  if (!use.isHeld() || servProfPath == nullptr) return -1;
  DumpRecords(table, table == TableKind::kSites ? inside->siteProfPath : *servProfPath, dead, hook,
              context, stopped);
  return 0;
}

}  // namespace zvrsit
