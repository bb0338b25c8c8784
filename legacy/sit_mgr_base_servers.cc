// Server profiles.
#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_base.h"
#include "legacy/sit_prof.h"

namespace zvrsit {

SitMgrBase::ServEditor SitMgrBase::Servers() {
  return {servProf_.get(), *history_, lastError_};
}

int SitMgrBase::ServProfNum() {
  return Servers().Num();
}

std::string* SitMgrBase::ServProfName(int number) {
  return Servers().Name(number);
}

int SitMgrBase::ServProfAdd(const std::string& name) {
  return UnlessWritesFail([&] { return Servers().Add(name); });
}

int SitMgrBase::ServProfDel(const std::string& name) {
  return UnlessWritesFail([&] { return Servers().Del(name); }, kSitDeleteFailed);
}

int SitMgrBase::ServProfCopy(const std::string& from, const std::string& to) {
  const Group group(*history_);
  return UnlessWritesFail([&] { return Servers().Copy(from, to); });
}

int SitMgrBase::ServProfMove(const std::string& from, const std::string& to) {
  return UnlessWritesFail([&] { return Servers().Move(from, to); });
}

int SitMgrBase::ServProfGetID(const std::string& name) {
  return Servers().GetID(name);
}

int SitMgrBase::SetServProfHost(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::host, text);
}
std::string* SitMgrBase::GetServProfHost(int number) {
  return Servers().GetText(number, &ServRec::host);
}

int SitMgrBase::SetServProfUser(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::user, text);
}
std::string* SitMgrBase::GetServProfUser(int number) {
  return Servers().GetText(number, &ServRec::user);
}

int SitMgrBase::SetServProfPassword(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::password, text, ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfPassword(int number) {
  return Servers().GetText(number, &ServRec::password, ProfText::kScrambled);
}

int SitMgrBase::SetServProfDir(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::dir, text);
}
std::string* SitMgrBase::GetServProfDir(int number) {
  return Servers().GetText(number, &ServRec::dir);
}

int SitMgrBase::SetServProfFirewallHost(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::firewallHost, text);
}
std::string* SitMgrBase::GetServProfFirewallHost(int number) {
  return Servers().GetText(number, &ServRec::firewallHost);
}

int SitMgrBase::SetServProfFirewallUser(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::firewallUser, text);
}
std::string* SitMgrBase::GetServProfFirewallUser(int number) {
  return Servers().GetText(number, &ServRec::firewallUser);
}

int SitMgrBase::SetServProfFirewallPassword(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::firewallPassword, text, ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfFirewallPassword(int number) {
  return Servers().GetText(number, &ServRec::firewallPassword, ProfText::kScrambled);
}

int SitMgrBase::SetServProfInitRemoteDir(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::initRemoteDir, text);
}
std::string* SitMgrBase::GetServProfInitRemoteDir(int number) {
  return Servers().GetText(number, &ServRec::initRemoteDir);
}

int SitMgrBase::SetServProfMRUDirRemote(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::mruDirRemote, text);
}
std::string* SitMgrBase::GetServProfMRUDirRemote(int number) {
  return Servers().GetText(number, &ServRec::mruDirRemote);
}

int SitMgrBase::SetServProfMRUDirLocal(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::mruDirLocal, text);
}
std::string* SitMgrBase::GetServProfMRUDirLocal(int number) {
  return Servers().GetText(number, &ServRec::mruDirLocal);
}

int SitMgrBase::SetServProfAsciiSuffix(int number, const std::string& text) {
  return Servers().SetText(number, &ServRec::asciiSuffix, text);
}
std::string* SitMgrBase::GetServProfAsciiSuffix(int number) {
  return Servers().GetText(number, &ServRec::asciiSuffix);
}

int SitMgrBase::SetServProfFirewall(int number, int value) {
  return Servers().SetNumber(number, &ServRec::firewall, value);
}
int SitMgrBase::GetServProfFirewall(int number) {
  return Servers().GetNumber(number, &ServRec::firewall);
}

int SitMgrBase::SetServProfFxferType(int number, int value) {
  return Servers().SetNumber(number, &ServRec::fxferType, value);
}
int SitMgrBase::GetServProfFxferType(int number) {
  return Servers().GetNumber(number, &ServRec::fxferType);
}

int SitMgrBase::SetServProfInitDirMode(int number, int value) {
  return Servers().SetNumber(number, &ServRec::initDirMode, value);
}
int SitMgrBase::GetServProfInitDirMode(int number) {
  return Servers().GetNumber(number, &ServRec::initDirMode);
}

int SitMgrBase::SetServProfLockDir(int number, int value) {
  return Servers().SetNumber(number, &ServRec::lockDir, value);
}
int SitMgrBase::GetServProfLockDir(int number) {
  return Servers().GetNumber(number, &ServRec::lockDir);
}

}  // namespace zvrsit
