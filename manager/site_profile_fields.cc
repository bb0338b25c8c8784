// Single fields of a site's profile.
#include <memory>

#include "manager/record_access.h"
#include "manager/site_mgr.h"

namespace zvrsit {

// Brings what is kept of the open site's profile up to date: the site folder, the default document
// name and the folders of the style sheets.
int SiteMgr::OpenSiteChanged() {
  SiteSiteRec rec;
  if (!ReadOpenSite(rec)) return -1;
  KeepSiteFolder(rec);
  auto name = std::make_unique<std::string>();
  if (!ReadProfileText(rec.defaultUrl, *name)) name.reset();
  delete defaultUrl;
  defaultUrl = name.release();
  return NotifyCss(rec);
}

std::string* SiteMgr::SiteText(SiteField field, int siteId) {
  const ProfileUse use(*this);
  auto text = std::make_unique<std::string>();
  if (!HasFiles(siteProf) || siteProf->GetText(SiteNumber(siteId), field, *text) < 0) {
    return nullptr;
  }
  return text.release();
}

int SiteMgr::SetSiteText(SiteField field, const std::string& text, int siteId) {
  const ProfileUse use(*this);
  if (!HasFiles(siteProf)) return -1;
  return siteProf->SetText(SiteNumber(siteId), field, text);
}

std::string* SiteMgr::GetSiteProfDir(int slot, int siteId) {
  const ProfileUse use(*this);
  auto folder = std::make_unique<std::string>();
  if (!HasFiles(siteProf) || siteProf->GetFolder(SiteNumber(siteId), slot, *folder) < 0) {
    return nullptr;
  }
  return folder.release();
}

int SiteMgr::SetSiteProfDir(int slot, const std::string& folder, int siteId) {
  const ProfileUse use(*this);
  const int number = SiteNumber(siteId);
  if (!HasFiles(siteProf) || siteProf->SetFolder(number, slot, folder) < 0) return -1;
  return number == openSiteId ? OpenSiteChanged() : 0;
}

std::string* SiteMgr::GetSiteProfTopFile(int siteId) {
  return SiteText(&SiteSiteRec::topFile, siteId);
}

int SiteMgr::SetSiteProfTopFile(const std::string& path, int siteId) {
  if (SetSiteText(&SiteSiteRec::topFile, path, siteId) < 0) return -1;
  if (SiteNumber(siteId) == openSiteId) linksChanged = 1;  // the family begins elsewhere
  return 0;
}

std::string* SiteMgr::GetSiteProfDefaultUrl(int siteId) {
  return SiteText(&SiteSiteRec::defaultUrl, siteId);
}

int SiteMgr::SetSiteProfDefaultUrl(const std::string& name, int siteId) {
  const ProfileUse use(*this);
  if (SetSiteText(&SiteSiteRec::defaultUrl, name, siteId) < 0) return -1;
  return SiteNumber(siteId) == openSiteId ? OpenSiteChanged() : 0;
}

int SiteMgr::GetSiteProfUseDocRoot(int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(SiteNumber(siteId), rec) < 0) return -1;
  return rec.useDocRoot != 0 ? 1 : 0;
}

int SiteMgr::SetSiteProfUseDocRoot(int use, int siteId) {
  const ProfileUse profiles(*this);
  const int number = SiteNumber(siteId);
  if (!HasFiles(siteProf) ||
      siteProf->SetNumber(number, &SiteSiteRec::useDocRoot, use != 0 ? 1 : 0) < 0) {
    return -1;
  }
  return number == openSiteId ? OpenSiteChanged() : 0;
}

std::string* SiteMgr::GetSiteProfServer(int siteId) {
  return SiteText(&SiteSiteRec::servProf, siteId);
}

int SiteMgr::SetSiteProfServer(const std::string& name, int siteId) {
  return SetSiteText(&SiteSiteRec::servProf, name, siteId);
}

int SiteMgr::GetSiteProfLinkRules(int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(SiteNumber(siteId), rec) < 0) return -1;
  return rec.linkRules & kWebRulesBit;
}

int SiteMgr::SetSiteProfLinkRules(int rules, int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if ((rules & ~kWebRulesBit) != 0 || !HasFiles(siteProf) ||
      siteProf->Get(SiteNumber(siteId), rec) < 0) {
    return -1;
  }
  rec.linkRules = (rec.linkRules & ~kWebRulesBit) | rules;
  return siteProf->Update(rec);
}

}  // namespace zvrsit
