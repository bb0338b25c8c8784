// The profiles of servers.
#include <memory>

#include "manager/cells.h"
#include "manager/site_mgr.h"
#include "tables/site_serv_prof_db.h"

namespace zvrsit {

namespace {

using Word = std::int32_t SiteServRec::*;

// The fields of the record, and where a ServProfile has them.
struct TextField {
  Word word;
  std::string ServProfile::*text;
};
struct NumberField {
  Word word;
  std::int32_t ServProfile::*number;
};
constexpr TextField kTexts[] = {
    {&SiteServRec::host, &ServProfile::host},
    {&SiteServRec::user, &ServProfile::user},
    {&SiteServRec::dir, &ServProfile::dir},
    {&SiteServRec::firewallHost, &ServProfile::firewallHost},
    {&SiteServRec::firewallUser, &ServProfile::firewallUser},
    {&SiteServRec::initRemoteDir, &ServProfile::initRemoteDir},
    {&SiteServRec::mruDirRemote, &ServProfile::mruDirRemote},
    {&SiteServRec::mruDirLocal, &ServProfile::mruDirLocal},
    {&SiteServRec::asciiSuffix, &ServProfile::asciiSuffix},
};
constexpr TextField kPasswords[] = {
    {&SiteServRec::password, &ServProfile::password},
    {&SiteServRec::firewallPassword, &ServProfile::firewallPassword},
};
constexpr NumberField kNumbers[] = {
    {&SiteServRec::firewall, &ServProfile::firewall},
    {&SiteServRec::fxferType, &ServProfile::transferType},
    {&SiteServRec::initDirMode, &ServProfile::initDirMode},
    {&SiteServRec::lockDir, &ServProfile::lockDir},
};

bool IsPassword(Word word) {
  return word == &SiteServRec::password || word == &SiteServRec::firewallPassword;
}

int ReadProfile(const SiteServProfDB& servers, int number, ServProfile& profile) {
  SiteServRec rec;
  if (servers.Get(number, rec) < 0) return -1;
  profile = ServProfile{};
  for (const TextField& field : kTexts) servers.Text(rec.*field.word, profile.*field.text);
  for (const TextField& field : kPasswords) {
    servers.GetPassword(number, field.word, profile.*field.text);
  }
  for (const NumberField& field : kNumbers) profile.*field.number = rec.*field.word;
  return 0;
}

int WriteProfile(SiteServProfDB& servers, int number, const ServProfile& profile) {
  for (const TextField& field : kTexts) {
    if (servers.SetText(number, field.word, profile.*field.text) < 0) return -1;
  }
  for (const TextField& field : kPasswords) {
    if (servers.SetPassword(number, field.word, profile.*field.text) < 0) return -1;
  }
  for (const NumberField& field : kNumbers) {
    if (servers.SetNumber(number, field.word, profile.*field.number) < 0) return -1;
  }
  return 0;
}

}  // namespace

// Opens the table, does use(table) and closes it: the result of `use`, -1 also when what was
// changed could not be written. A table object is opened only once, so a new one is made in the
// place of the one before: copies of the manager point there too.
int SiteMgr::WithServProf(const std::function<int(SiteServProfDB&)>& use) {
  const ProfileUse profiles(*this);
  if (servProf == nullptr || servProfPath == nullptr || !profiles.isHeld()) return -1;
  std::destroy_at(servProf);
  std::construct_at(servProf);
  if (OnlyAsks()) servProf->SetReadOnly();
  if (servProf->Open(*servProfPath, kOpenPlain) < 0) return -1;
  const int result = use(*servProf);
  return servProf->Close() < 0 ? -1 : result;
}

std::vector<std::string*>* SiteMgr::EnumServProf() {
  std::vector<std::string*>* names = nullptr;
  WithServProf([&](SiteServProfDB& servers) {
    names = ListNames(servers);
    return 0;
  });
  return names;
}

int SiteMgr::GetServProf(const std::string& name, ServProfile& profile) {
  return WithServProf(
      [&](SiteServProfDB& servers) { return ReadProfile(servers, servers.Find(name), profile); });
}

int SiteMgr::SetServProf(const std::string& name, const ServProfile& profile) {
  return WithServProf([&](SiteServProfDB& servers) {
    const int known = servers.Find(name);
    return WriteProfile(servers, known >= 0 ? known : servers.Add(name), profile);
  });
}

int SiteMgr::AddServProf(const std::string& name) {
  return WithServProf([&](SiteServProfDB& servers) { return servers.Add(name); });
}

int SiteMgr::CopyServProf(const std::string& from, const std::string& to) {
  return WithServProf(
      [&](SiteServProfDB& servers) { return servers.Copy(servers.Find(from), to); });
}

int SiteMgr::RenameServProf(const std::string& from, const std::string& to) {
  const ProfileUse use(*this);
  const int renamed =
      WithServProf([&](SiteServProfDB& servers) { return servers.Rename(servers.Find(from), to); });
  if (renamed < 0 || !HasFiles(siteProf)) return renamed;
  for (int site = siteProf->NextNumber(0); site >= 0; site = siteProf->NextNumber(site + 1)) {
    std::string server;
    if (siteProf->GetText(site, &SiteSiteRec::servProf, server) < 0 || server != from) continue;
    if (siteProf->SetText(site, &SiteSiteRec::servProf, to) < 0) return -1;
  }
  return 0;
}

int SiteMgr::DeleteServProf(const std::string& name) {
  return WithServProf([&](SiteServProfDB& servers) { return servers.Delete(servers.Find(name)); });
}

std::string* SiteMgr::ServText(const std::string& name, ServField field) {
  auto text = std::make_unique<std::string>();
  const int result = WithServProf([&](SiteServProfDB& servers) {
    const int number = servers.Find(name);
    return IsPassword(field) ? servers.GetPassword(number, field, *text)
                             : servers.GetText(number, field, *text);
  });
  return result < 0 ? nullptr : text.release();
}

int SiteMgr::SetServText(const std::string& name, ServField field, const std::string& text) {
  return WithServProf([&](SiteServProfDB& servers) {
    const int number = servers.Find(name);
    return IsPassword(field) ? servers.SetPassword(number, field, text)
                             : servers.SetText(number, field, text);
  });
}

int SiteMgr::ServNumber(const std::string& name, ServField field) {
  std::int32_t value = -1;
  const int result = WithServProf(
      [&](SiteServProfDB& servers) { return servers.GetNumber(servers.Find(name), field, value); });
  return result < 0 ? -1 : value;
}

int SiteMgr::SetServNumber(const std::string& name, ServField field, int value) {
  return WithServProf(
      [&](SiteServProfDB& servers) { return servers.SetNumber(servers.Find(name), field, value); });
}

std::string* SiteMgr::GetServProfHost(const std::string& name) {
  return ServText(name, &SiteServRec::host);
}
int SiteMgr::SetServProfHost(const std::string& name, const std::string& host) {
  return SetServText(name, &SiteServRec::host, host);
}

std::string* SiteMgr::GetServProfUser(const std::string& name) {
  return ServText(name, &SiteServRec::user);
}
int SiteMgr::SetServProfUser(const std::string& name, const std::string& user) {
  return SetServText(name, &SiteServRec::user, user);
}

std::string* SiteMgr::GetServProfPassword(const std::string& name) {
  return ServText(name, &SiteServRec::password);
}
int SiteMgr::SetServProfPassword(const std::string& name, const std::string& password) {
  return SetServText(name, &SiteServRec::password, password);
}

std::string* SiteMgr::GetServProfDir(const std::string& name) {
  return ServText(name, &SiteServRec::dir);
}
int SiteMgr::SetServProfDir(const std::string& name, const std::string& dir) {
  return SetServText(name, &SiteServRec::dir, dir);
}

int SiteMgr::GetServProfFirewall(const std::string& name) {
  return ServNumber(name, &SiteServRec::firewall);
}
int SiteMgr::SetServProfFirewall(const std::string& name, int firewall) {
  return SetServNumber(name, &SiteServRec::firewall, firewall);
}

std::string* SiteMgr::GetServProfFirewallHost(const std::string& name) {
  return ServText(name, &SiteServRec::firewallHost);
}
int SiteMgr::SetServProfFirewallHost(const std::string& name, const std::string& host) {
  return SetServText(name, &SiteServRec::firewallHost, host);
}

std::string* SiteMgr::GetServProfFirewallUser(const std::string& name) {
  return ServText(name, &SiteServRec::firewallUser);
}
int SiteMgr::SetServProfFirewallUser(const std::string& name, const std::string& user) {
  return SetServText(name, &SiteServRec::firewallUser, user);
}

std::string* SiteMgr::GetServProfFirewallPassword(const std::string& name) {
  return ServText(name, &SiteServRec::firewallPassword);
}
int SiteMgr::SetServProfFirewallPassword(const std::string& name, const std::string& password) {
  return SetServText(name, &SiteServRec::firewallPassword, password);
}

int SiteMgr::GetServProfFxferType(const std::string& name) {
  return ServNumber(name, &SiteServRec::fxferType);
}
int SiteMgr::SetServProfFxferType(const std::string& name, int type) {
  return SetServNumber(name, &SiteServRec::fxferType, type);
}

int SiteMgr::GetServProfInitDirMode(const std::string& name) {
  return ServNumber(name, &SiteServRec::initDirMode);
}
int SiteMgr::SetServProfInitDirMode(const std::string& name, int mode) {
  return SetServNumber(name, &SiteServRec::initDirMode, mode);
}

int SiteMgr::GetServProfLockDir(const std::string& name) {
  return ServNumber(name, &SiteServRec::lockDir);
}
int SiteMgr::SetServProfLockDir(const std::string& name, int lock) {
  return SetServNumber(name, &SiteServRec::lockDir, lock);
}

std::string* SiteMgr::GetServProfInitRemoteDir(const std::string& name) {
  return ServText(name, &SiteServRec::initRemoteDir);
}
int SiteMgr::SetServProfInitRemoteDir(const std::string& name, const std::string& dir) {
  return SetServText(name, &SiteServRec::initRemoteDir, dir);
}

std::string* SiteMgr::GetServProfMRUDirRemote(const std::string& name) {
  return ServText(name, &SiteServRec::mruDirRemote);
}
int SiteMgr::SetServProfMRUDirRemote(const std::string& name, const std::string& dirs) {
  return SetServText(name, &SiteServRec::mruDirRemote, dirs);
}

std::string* SiteMgr::GetServProfMRUDirLocal(const std::string& name) {
  return ServText(name, &SiteServRec::mruDirLocal);
}
int SiteMgr::SetServProfMRUDirLocal(const std::string& name, const std::string& dirs) {
  return SetServText(name, &SiteServRec::mruDirLocal, dirs);
}

std::string* SiteMgr::GetServProfAsciiSuffix(const std::string& name) {
  return ServText(name, &SiteServRec::asciiSuffix);
}
int SiteMgr::SetServProfAsciiSuffix(const std::string& name, const std::string& suffixes) {
  return SetServText(name, &SiteServRec::asciiSuffix, suffixes);
}

}  // namespace zvrsit
