// Single fields of a site's profile.
#include <memory>

#include "manager/record_access.h"
#include "manager/work.h"

namespace zvrsit {

int SiteMgr::Work::OpenSiteChanged() {
  const ProfileUse use(m_);
  SiteSiteRec rec;
  if (!use.ReadOpenSite(rec)) return -1;
  KeepSite(rec);
  auto name = std::make_unique<std::string>();
  if (!use.ReadText(rec.defaultUrl, *name)) name.reset();
  delete m_.defaultUrl;
  m_.defaultUrl = name.release();
  return m_.NotifyCss(rec);
}

std::string* SiteMgr::Work::SiteText(SiteField field, int siteId) {
  const ProfileUse use(m_);
  auto text = std::make_unique<std::string>();
  if (!HasFiles(m_.siteProf) || m_.siteProf->GetText(SiteNumber(siteId), field, *text) < 0) {
    return nullptr;
  }
  return text.release();
}

int SiteMgr::Work::SetSiteText(SiteField field, const std::string& text, int siteId) {
  const ProfileUse use(m_);
  if (!HasFiles(m_.siteProf)) return -1;
  return m_.siteProf->SetText(SiteNumber(siteId), field, text);
}

std::string* SiteMgr::GetSiteProfDir(int slot, int siteId) {
  const ProfileUse use(*this);
  auto folder = std::make_unique<std::string>();
  if (!HasFiles(siteProf) ||
      siteProf->GetFolder(Work(*this).SiteNumber(siteId), slot, *folder) < 0) {
    return nullptr;
  }
  return folder.release();
}

int SiteMgr::SetSiteProfDir(int slot, const std::string& folder, int siteId) {
  const ProfileUse use(*this);
  const int number = Work(*this).SiteNumber(siteId);
  if (!HasFiles(siteProf) || siteProf->SetFolder(number, slot, folder) < 0) return -1;
  return number == openSiteId ? Work(*this).OpenSiteChanged() : 0;
}

std::string* SiteMgr::GetSiteProfTopFile(int siteId) {
  return Work(*this).SiteText(&SiteSiteRec::topFile, siteId);
}

int SiteMgr::SetSiteProfTopFile(const std::string& path, int siteId) {
  if (Work(*this).SetSiteText(&SiteSiteRec::topFile, path, siteId) < 0) return -1;
  if (Work(*this).SiteNumber(siteId) == openSiteId)
    linksChanged = 1;  // the family begins elsewhere
  return 0;
}

std::string* SiteMgr::GetSiteProfDefaultUrl(int siteId) {
  return Work(*this).SiteText(&SiteSiteRec::defaultUrl, siteId);
}

int SiteMgr::SetSiteProfDefaultUrl(const std::string& name, int siteId) {
  const ProfileUse use(*this);
  if (Work(*this).SetSiteText(&SiteSiteRec::defaultUrl, name, siteId) < 0) return -1;
  return Work(*this).SiteNumber(siteId) == openSiteId ? Work(*this).OpenSiteChanged() : 0;
}

int SiteMgr::GetSiteProfUseDocRoot(int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(Work(*this).SiteNumber(siteId), rec) < 0) return -1;
  return rec.useDocRoot != 0 ? 1 : 0;
}

int SiteMgr::SetSiteProfUseDocRoot(int use, int siteId) {
  const ProfileUse profiles(*this);
  const int number = Work(*this).SiteNumber(siteId);
  if (!HasFiles(siteProf) ||
      siteProf->SetNumber(number, &SiteSiteRec::useDocRoot, use != 0 ? 1 : 0) < 0) {
    return -1;
  }
  return number == openSiteId ? Work(*this).OpenSiteChanged() : 0;
}

std::string* SiteMgr::GetSiteProfServer(int siteId) {
  return Work(*this).SiteText(&SiteSiteRec::servProf, siteId);
}

int SiteMgr::SetSiteProfServer(const std::string& name, int siteId) {
  return Work(*this).SetSiteText(&SiteSiteRec::servProf, name, siteId);
}

int SiteMgr::GetSiteProfLinkRules(int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(Work(*this).SiteNumber(siteId), rec) < 0) return -1;
  return rec.linkRules & SiteSiteRec::kWebRules;
}

int SiteMgr::SetSiteProfLinkRules(int rules, int siteId) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if ((rules & ~SiteSiteRec::kWebRules) != 0 || !HasFiles(siteProf) ||
      siteProf->Get(Work(*this).SiteNumber(siteId), rec) < 0) {
    return -1;
  }
  rec.linkRules = (rec.linkRules & ~SiteSiteRec::kWebRules) | rules;
  return siteProf->Update(rec);
}

}  // namespace zvrsit
