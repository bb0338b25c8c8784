// Server profiles.
#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_prof.h"

namespace zvrsit {

ProfEditor<ServRec> SitMgrBase::Inside::Servers() {
  return {servProf.get(), *history, lastError};
}

int SitMgrBase::ServProfNum() {
  return inside_->Servers().Num();
}

std::string* SitMgrBase::ServProfName(int number) {
  return inside_->Servers().Name(number);
}

int SitMgrBase::ServProfAdd(const std::string& name) {
  return inside_->UnlessWritesFail([&] { return inside_->Servers().Add(name); });
}

int SitMgrBase::ServProfDel(const std::string& name) {
  return inside_->UnlessWritesFail([&] { return inside_->Servers().Del(name); }, kSitDeleteFailed);
}

int SitMgrBase::ServProfCopy(const std::string& from, const std::string& to) {
  const Inside::Group group(*inside_->history);
  return inside_->UnlessWritesFail([&] { return inside_->Servers().Copy(from, to); });
}

int SitMgrBase::ServProfMove(const std::string& from, const std::string& to) {
  return inside_->UnlessWritesFail([&] { return inside_->Servers().Move(from, to); });
}

int SitMgrBase::ServProfGetID(const std::string& name) {
  return inside_->Servers().GetID(name);
}

int SitMgrBase::SetServProfHost(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::host, text);
}
std::string* SitMgrBase::GetServProfHost(int number) {
  return inside_->Servers().GetText(number, &ServRec::host);
}

int SitMgrBase::SetServProfUser(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::user, text);
}
std::string* SitMgrBase::GetServProfUser(int number) {
  return inside_->Servers().GetText(number, &ServRec::user);
}

int SitMgrBase::SetServProfPassword(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::password, text, ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfPassword(int number) {
  return inside_->Servers().GetText(number, &ServRec::password, ProfText::kScrambled);
}

int SitMgrBase::SetServProfDir(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::dir, text);
}
std::string* SitMgrBase::GetServProfDir(int number) {
  return inside_->Servers().GetText(number, &ServRec::dir);
}

int SitMgrBase::SetServProfFirewallHost(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::firewallHost, text);
}
std::string* SitMgrBase::GetServProfFirewallHost(int number) {
  return inside_->Servers().GetText(number, &ServRec::firewallHost);
}

int SitMgrBase::SetServProfFirewallUser(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::firewallUser, text);
}
std::string* SitMgrBase::GetServProfFirewallUser(int number) {
  return inside_->Servers().GetText(number, &ServRec::firewallUser);
}

int SitMgrBase::SetServProfFirewallPassword(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::firewallPassword, text, ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfFirewallPassword(int number) {
  return inside_->Servers().GetText(number, &ServRec::firewallPassword, ProfText::kScrambled);
}

int SitMgrBase::SetServProfInitRemoteDir(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::initRemoteDir, text);
}
std::string* SitMgrBase::GetServProfInitRemoteDir(int number) {
  return inside_->Servers().GetText(number, &ServRec::initRemoteDir);
}

int SitMgrBase::SetServProfMRUDirRemote(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::mruDirRemote, text);
}
std::string* SitMgrBase::GetServProfMRUDirRemote(int number) {
  return inside_->Servers().GetText(number, &ServRec::mruDirRemote);
}

int SitMgrBase::SetServProfMRUDirLocal(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::mruDirLocal, text);
}
std::string* SitMgrBase::GetServProfMRUDirLocal(int number) {
  return inside_->Servers().GetText(number, &ServRec::mruDirLocal);
}

int SitMgrBase::SetServProfAsciiSuffix(int number, const std::string& text) {
  return inside_->Servers().SetText(number, &ServRec::asciiSuffix, text);
}
std::string* SitMgrBase::GetServProfAsciiSuffix(int number) {
  return inside_->Servers().GetText(number, &ServRec::asciiSuffix);
}

int SitMgrBase::SetServProfFirewall(int number, int value) {
  return inside_->Servers().SetNumber(number, &ServRec::firewall, value);
}
int SitMgrBase::GetServProfFirewall(int number) {
  return inside_->Servers().GetNumber(number, &ServRec::firewall);
}

int SitMgrBase::SetServProfFxferType(int number, int value) {
  return inside_->Servers().SetNumber(number, &ServRec::fxferType, value);
}
int SitMgrBase::GetServProfFxferType(int number) {
  return inside_->Servers().GetNumber(number, &ServRec::fxferType);
}

int SitMgrBase::SetServProfInitDirMode(int number, int value) {
  return inside_->Servers().SetNumber(number, &ServRec::initDirMode, value);
}
int SitMgrBase::GetServProfInitDirMode(int number) {
  return inside_->Servers().GetNumber(number, &ServRec::initDirMode);
}

int SitMgrBase::SetServProfLockDir(int number, int value) {
  return inside_->Servers().SetNumber(number, &ServRec::lockDir, value);
}
int SitMgrBase::GetServProfLockDir(int number) {
  return inside_->Servers().GetNumber(number, &ServRec::lockDir);
}

}  // namespace zvrsit
