// The profiles of servers.
#include <memory>
#include <type_traits>

#include "manager/cells.h"
#include "manager/work.h"
#include "tables/site_serv_prof_db.h"
#include "util/server_fields.h"

namespace zvrsit {

namespace {

using Word = std::int32_t SiteServRec::*;

bool IsPassword(Word wanted) {
  bool isPassword = false;
  ForEachServerField<SiteServRec>([&](ServerField kind, Word word) {
    if (word == wanted) isPassword = kind == ServerField::kPassword;
  });
  return isPassword;
}

int ReadText(const SiteServProfDB& servers, int number, Word word, std::string& text) {
  return IsPassword(word) ? servers.GetPassword(number, word, text)
                          : servers.GetText(number, word, text);
}

int WriteText(SiteServProfDB& servers, int number, Word word, const std::string& text) {
  return IsPassword(word) ? servers.SetPassword(number, word, text)
                          : servers.SetText(number, word, text);
}

int ReadProfile(const SiteServProfDB& servers, int number, ServProfile& profile) {
  SiteServRec rec;
  if (servers.Get(number, rec) < 0) return -1;
  profile = ServProfile{};
  ForEachServerField<SiteServRec, ServProfile>([&](ServerField, Word word, auto field) {
    if constexpr (std::is_same_v<decltype(field), std::string ServProfile::*>) {
      ReadText(servers, number, word, profile.*field);
    } else {
      profile.*field = rec.*word;
    }
  });
  return 0;
}

// Texts come first, then passwords, then numbers: so the texts lie in the file in the order that
// they always had.
int WriteProfile(SiteServProfDB& servers, int number, const ServProfile& profile) {
  int result = 0;
  for (const ServerField turn :
       {ServerField::kText, ServerField::kPassword, ServerField::kNumber}) {
    ForEachServerField<SiteServRec, ServProfile>([&](ServerField kind, Word word, auto field) {
      if (kind != turn || result < 0) return;
      if constexpr (std::is_same_v<decltype(field), std::string ServProfile::*>) {
        result = WriteText(servers, number, word, profile.*field);
      } else {
        result = servers.SetNumber(number, word, profile.*field);
      }
    });
  }
  return result < 0 ? -1 : 0;
}

}  // namespace

// Opens the table, calls use(table) and closes it. The result is that of `use`, or -1 when changes
// could not be written. A table object can be opened only once. So a new object is made at the
// place of the old one, because copies of the manager point there too.
int SiteMgr::Work::WithServProf(const std::function<int(SiteServProfDB&)>& use) {
  const ProfileUse profiles(m_);
  if (m_.servProf == nullptr || m_.servProfPath == nullptr || !profiles.isHeld()) return -1;
  std::destroy_at(m_.servProf);
  std::construct_at(m_.servProf);
  if (m_.inside->onlyAsks()) m_.servProf->SetReadOnly();
  m_.servProf->SetUndo(m_.inside->undo.get());
  if (m_.servProf->Open(*m_.servProfPath, kOpenPlain) < 0) return -1;
  const int result = use(*m_.servProf);
  return m_.servProf->Close() < 0 ? -1 : result;
}

std::vector<std::string*>* SiteMgr::EnumServProf() {
  std::vector<std::string*>* names = nullptr;
  Work(*this).WithServProf([&](SiteServProfDB& servers) {
    names = ListNames(servers);
    return 0;
  });
  return names;
}

int SiteMgr::GetServProf(const std::string& name, ServProfile& profile) {
  return Work(*this).WithServProf(
      [&](SiteServProfDB& servers) { return ReadProfile(servers, servers.Find(name), profile); });
}

int SiteMgr::SetServProf(const std::string& name, const ServProfile& profile) {
  return Work(*this).WithServProf([&](SiteServProfDB& servers) {
    const int known = servers.Find(name);
    return WriteProfile(servers, known >= 0 ? known : servers.Add(name), profile);
  });
}

int SiteMgr::AddServProf(const std::string& name) {
  return Work(*this).WithServProf([&](SiteServProfDB& servers) { return servers.Add(name); });
}

int SiteMgr::CopyServProf(const std::string& from, const std::string& to) {
  return Work(*this).WithServProf(
      [&](SiteServProfDB& servers) { return servers.Copy(servers.Find(from), to); });
}

int SiteMgr::RenameServProf(const std::string& from, const std::string& to) {
  const ProfileUse use(*this);
  const int renamed = Work(*this).WithServProf(
      [&](SiteServProfDB& servers) { return servers.Rename(servers.Find(from), to); });
  if (renamed < 0 || !HasFiles(siteProf)) return renamed;
  int result = 0;
  ForEachNumber(*siteProf, [&](int site) {
    std::string server;
    if (result < 0 || siteProf->GetText(site, &SiteSiteRec::servProf, server) < 0) return;
    if (server == from) result = siteProf->SetText(site, &SiteSiteRec::servProf, to);
  });
  return result < 0 ? -1 : 0;
}

int SiteMgr::DeleteServProf(const std::string& name) {
  return Work(*this).WithServProf(
      [&](SiteServProfDB& servers) { return servers.Delete(servers.Find(name)); });
}

std::string* SiteMgr::Work::ServText(const std::string& name, ServField field) {
  auto text = std::make_unique<std::string>();
  const int result = WithServProf(
      [&](SiteServProfDB& servers) { return ReadText(servers, servers.Find(name), field, *text); });
  return result < 0 ? nullptr : text.release();
}

int SiteMgr::Work::SetServText(const std::string& name, ServField field, const std::string& text) {
  return WithServProf(
      [&](SiteServProfDB& servers) { return WriteText(servers, servers.Find(name), field, text); });
}

int SiteMgr::Work::ServNumber(const std::string& name, ServField field) {
  std::int32_t value = -1;
  const int result = WithServProf(
      [&](SiteServProfDB& servers) { return servers.GetNumber(servers.Find(name), field, value); });
  return result < 0 ? -1 : value;
}

int SiteMgr::Work::SetServNumber(const std::string& name, ServField field, int value) {
  return WithServProf(
      [&](SiteServProfDB& servers) { return servers.SetNumber(servers.Find(name), field, value); });
}

std::string* SiteMgr::GetServProfHost(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::host);
}
int SiteMgr::SetServProfHost(const std::string& name, const std::string& host) {
  return Work(*this).SetServText(name, &SiteServRec::host, host);
}

std::string* SiteMgr::GetServProfUser(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::user);
}
int SiteMgr::SetServProfUser(const std::string& name, const std::string& user) {
  return Work(*this).SetServText(name, &SiteServRec::user, user);
}

std::string* SiteMgr::GetServProfPassword(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::password);
}
int SiteMgr::SetServProfPassword(const std::string& name, const std::string& password) {
  return Work(*this).SetServText(name, &SiteServRec::password, password);
}

std::string* SiteMgr::GetServProfDir(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::dir);
}
int SiteMgr::SetServProfDir(const std::string& name, const std::string& dir) {
  return Work(*this).SetServText(name, &SiteServRec::dir, dir);
}

int SiteMgr::GetServProfFirewall(const std::string& name) {
  return Work(*this).ServNumber(name, &SiteServRec::firewall);
}
int SiteMgr::SetServProfFirewall(const std::string& name, int firewall) {
  return Work(*this).SetServNumber(name, &SiteServRec::firewall, firewall);
}

std::string* SiteMgr::GetServProfFirewallHost(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::firewallHost);
}
int SiteMgr::SetServProfFirewallHost(const std::string& name, const std::string& host) {
  return Work(*this).SetServText(name, &SiteServRec::firewallHost, host);
}

std::string* SiteMgr::GetServProfFirewallUser(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::firewallUser);
}
int SiteMgr::SetServProfFirewallUser(const std::string& name, const std::string& user) {
  return Work(*this).SetServText(name, &SiteServRec::firewallUser, user);
}

std::string* SiteMgr::GetServProfFirewallPassword(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::firewallPassword);
}
int SiteMgr::SetServProfFirewallPassword(const std::string& name, const std::string& password) {
  return Work(*this).SetServText(name, &SiteServRec::firewallPassword, password);
}

int SiteMgr::GetServProfFxferType(const std::string& name) {
  return Work(*this).ServNumber(name, &SiteServRec::fxferType);
}
int SiteMgr::SetServProfFxferType(const std::string& name, int type) {
  return Work(*this).SetServNumber(name, &SiteServRec::fxferType, type);
}

int SiteMgr::GetServProfInitDirMode(const std::string& name) {
  return Work(*this).ServNumber(name, &SiteServRec::initDirMode);
}
int SiteMgr::SetServProfInitDirMode(const std::string& name, int mode) {
  return Work(*this).SetServNumber(name, &SiteServRec::initDirMode, mode);
}

int SiteMgr::GetServProfLockDir(const std::string& name) {
  return Work(*this).ServNumber(name, &SiteServRec::lockDir);
}
int SiteMgr::SetServProfLockDir(const std::string& name, int lock) {
  return Work(*this).SetServNumber(name, &SiteServRec::lockDir, lock);
}

std::string* SiteMgr::GetServProfInitRemoteDir(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::initRemoteDir);
}
int SiteMgr::SetServProfInitRemoteDir(const std::string& name, const std::string& dir) {
  return Work(*this).SetServText(name, &SiteServRec::initRemoteDir, dir);
}

std::string* SiteMgr::GetServProfMRUDirRemote(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::mruDirRemote);
}
int SiteMgr::SetServProfMRUDirRemote(const std::string& name, const std::string& dirs) {
  return Work(*this).SetServText(name, &SiteServRec::mruDirRemote, dirs);
}

std::string* SiteMgr::GetServProfMRUDirLocal(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::mruDirLocal);
}
int SiteMgr::SetServProfMRUDirLocal(const std::string& name, const std::string& dirs) {
  return Work(*this).SetServText(name, &SiteServRec::mruDirLocal, dirs);
}

std::string* SiteMgr::GetServProfAsciiSuffix(const std::string& name) {
  return Work(*this).ServText(name, &SiteServRec::asciiSuffix);
}
int SiteMgr::SetServProfAsciiSuffix(const std::string& name, const std::string& suffixes) {
  return Work(*this).SetServText(name, &SiteServRec::asciiSuffix, suffixes);
}

}  // namespace zvrsit
