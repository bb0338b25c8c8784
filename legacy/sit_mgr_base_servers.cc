// Server profiles.
#include <cstddef>

#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_base.h"
#include "legacy/sit_prof.h"

namespace zvrsit {

class SitMgrBase::ServEditor : public ProfEditor<ServRec> {
 public:
  using ProfEditor::ProfEditor;
};

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
  return Servers().SetText(number, WordAt(offsetof(ServRec, host)), text);
}
std::string* SitMgrBase::GetServProfHost(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, host)));
}

int SitMgrBase::SetServProfUser(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, user)), text);
}
std::string* SitMgrBase::GetServProfUser(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, user)));
}

int SitMgrBase::SetServProfPassword(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, password)), text, ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfPassword(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, password)), ProfText::kScrambled);
}

int SitMgrBase::SetServProfDir(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, dir)), text);
}
std::string* SitMgrBase::GetServProfDir(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, dir)));
}

int SitMgrBase::SetServProfFirewallHost(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, firewallHost)), text);
}
std::string* SitMgrBase::GetServProfFirewallHost(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, firewallHost)));
}

int SitMgrBase::SetServProfFirewallUser(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, firewallUser)), text);
}
std::string* SitMgrBase::GetServProfFirewallUser(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, firewallUser)));
}

int SitMgrBase::SetServProfFirewallPassword(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, firewallPassword)), text,
                           ProfText::kScrambled);
}
std::string* SitMgrBase::GetServProfFirewallPassword(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, firewallPassword)),
                           ProfText::kScrambled);
}

int SitMgrBase::SetServProfInitRemoteDir(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, initRemoteDir)), text);
}
std::string* SitMgrBase::GetServProfInitRemoteDir(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, initRemoteDir)));
}

int SitMgrBase::SetServProfMRUDirRemote(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, mruDirRemote)), text);
}
std::string* SitMgrBase::GetServProfMRUDirRemote(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, mruDirRemote)));
}

int SitMgrBase::SetServProfMRUDirLocal(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, mruDirLocal)), text);
}
std::string* SitMgrBase::GetServProfMRUDirLocal(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, mruDirLocal)));
}

int SitMgrBase::SetServProfAsciiSuffix(int number, const std::string& text) {
  return Servers().SetText(number, WordAt(offsetof(ServRec, asciiSuffix)), text);
}
std::string* SitMgrBase::GetServProfAsciiSuffix(int number) {
  return Servers().GetText(number, WordAt(offsetof(ServRec, asciiSuffix)));
}

int SitMgrBase::SetServProfFirewall(int number, int value) {
  return Servers().SetNumber(number, WordAt(offsetof(ServRec, firewall)), value);
}
int SitMgrBase::GetServProfFirewall(int number) {
  return Servers().GetNumber(number, WordAt(offsetof(ServRec, firewall)));
}

int SitMgrBase::SetServProfFxferType(int number, int value) {
  return Servers().SetNumber(number, WordAt(offsetof(ServRec, fxferType)), value);
}
int SitMgrBase::GetServProfFxferType(int number) {
  return Servers().GetNumber(number, WordAt(offsetof(ServRec, fxferType)));
}

int SitMgrBase::SetServProfInitDirMode(int number, int value) {
  return Servers().SetNumber(number, WordAt(offsetof(ServRec, initDirMode)), value);
}
int SitMgrBase::GetServProfInitDirMode(int number) {
  return Servers().GetNumber(number, WordAt(offsetof(ServRec, initDirMode)));
}

int SitMgrBase::SetServProfLockDir(int number, int value) {
  return Servers().SetNumber(number, WordAt(offsetof(ServRec, lockDir)), value);
}
int SitMgrBase::GetServProfLockDir(int number) {
  return Servers().GetNumber(number, WordAt(offsetof(ServRec, lockDir)));
}

}  // namespace zvrsit
