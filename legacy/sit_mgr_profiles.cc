// Whole profiles at once.
#include <memory>

#include "legacy/sit_mgr.h"

#include "legacy/sit_hist.h"

namespace zvrsit {

namespace {

using TextGetter = std::string* (SitMgrBase::*)(int);
using TextSetter = int (SitMgrBase::*)(int, const std::string&);
using NumberGetter = int (SitMgrBase::*)(int);
using NumberSetter = int (SitMgrBase::*)(int, int);

template <class Property>
struct TextField {
  std::string Property::*member;
  TextGetter get;
  TextSetter set;
};

template <class Property>
struct NumberField {
  int Property::*member;
  NumberGetter get;
  NumberSetter set;
};

constexpr TextField<SitSiteProperty> kSiteTexts[] = {
    {&SitSiteProperty::topFile, &SitMgrBase::GetSiteProfTopFile, &SitMgrBase::SetSiteProfTopFile},
    {&SitSiteProperty::servProf, &SitMgrBase::GetSiteProfServProf,
     &SitMgrBase::SetSiteProfServProf},
    {&SitSiteProperty::lastUsedDir, &SitMgrBase::GetSiteProfLastUsedDir,
     &SitMgrBase::SetSiteProfLastUsedDir},
};

constexpr NumberField<SitSiteProperty> kSiteNumbers[] = {
    {&SitSiteProperty::useDocRoot, &SitMgrBase::GetSiteProfUseDocRoot,
     &SitMgrBase::SetSiteProfUseDocRoot},
};

constexpr TextField<SitServProperty> kServTexts[] = {
    {&SitServProperty::host, &SitMgrBase::GetServProfHost, &SitMgrBase::SetServProfHost},
    {&SitServProperty::user, &SitMgrBase::GetServProfUser, &SitMgrBase::SetServProfUser},
    {&SitServProperty::password, &SitMgrBase::GetServProfPassword,
     &SitMgrBase::SetServProfPassword},
    {&SitServProperty::dir, &SitMgrBase::GetServProfDir, &SitMgrBase::SetServProfDir},
    {&SitServProperty::firewallHost, &SitMgrBase::GetServProfFirewallHost,
     &SitMgrBase::SetServProfFirewallHost},
    {&SitServProperty::firewallUser, &SitMgrBase::GetServProfFirewallUser,
     &SitMgrBase::SetServProfFirewallUser},
    {&SitServProperty::firewallPassword, &SitMgrBase::GetServProfFirewallPassword,
     &SitMgrBase::SetServProfFirewallPassword},
    {&SitServProperty::initRemoteDir, &SitMgrBase::GetServProfInitRemoteDir,
     &SitMgrBase::SetServProfInitRemoteDir},
    {&SitServProperty::mruDirRemote, &SitMgrBase::GetServProfMRUDirRemote,
     &SitMgrBase::SetServProfMRUDirRemote},
    {&SitServProperty::mruDirLocal, &SitMgrBase::GetServProfMRUDirLocal,
     &SitMgrBase::SetServProfMRUDirLocal},
    {&SitServProperty::asciiSuffix, &SitMgrBase::GetServProfAsciiSuffix,
     &SitMgrBase::SetServProfAsciiSuffix},
};

constexpr NumberField<SitServProperty> kServNumbers[] = {
    {&SitServProperty::firewall, &SitMgrBase::GetServProfFirewall,
     &SitMgrBase::SetServProfFirewall},
    {&SitServProperty::fxferType, &SitMgrBase::GetServProfFxferType,
     &SitMgrBase::SetServProfFxferType},
    {&SitServProperty::initDirMode, &SitMgrBase::GetServProfInitDirMode,
     &SitMgrBase::SetServProfInitDirMode},
    {&SitServProperty::lockDir, &SitMgrBase::GetServProfLockDir, &SitMgrBase::SetServProfLockDir},
};

std::string Taken(std::string* text) {
  const std::unique_ptr<std::string> owned(text);
  return owned ? *owned : std::string();
}

template <class Property, std::size_t kTexts, std::size_t kNumbers>
void GetFields(SitMgrBase& manager, int number, Property& property,
               const TextField<Property> (&texts)[kTexts],
               const NumberField<Property> (&numbers)[kNumbers]) {
  for (const auto& field : texts) property.*field.member = Taken((manager.*field.get)(number));
  for (const auto& field : numbers) property.*field.member = (manager.*field.get)(number);
}

// Writes the fields that differ; false when a setter has failed.
template <class Property, std::size_t kTexts, std::size_t kNumbers>
bool SetFields(SitMgrBase& manager, int number, const Property& wanted, const Property& present,
               const TextField<Property> (&texts)[kTexts],
               const NumberField<Property> (&numbers)[kNumbers]) {
  for (const auto& field : texts) {
    const std::string& text = wanted.*field.member;
    if (text.empty() || text == present.*field.member) continue;
    if ((manager.*field.set)(number, text) < 0) return false;
  }
  for (const auto& field : numbers) {
    const int value = wanted.*field.member;
    if (value == present.*field.member) continue;
    if ((manager.*field.set)(number, value) < 0) return false;
  }
  return true;
}

}  // namespace

int SitMgr::GetSiteProf(const std::string& name, SitSiteProperty& property) {
  const int number = SiteProfGetID(name);
  if (number < 0) return -1;
  GetFields(*this, number, property, kSiteTexts, kSiteNumbers);
  for (int i = 0; i < 10; ++i) {
    property.dir[static_cast<std::size_t>(i)] = Taken(GetSiteProfDir(number, i));
  }
  return Succeed();
}

int SitMgr::SetSiteProf(const std::string& name, const SitSiteProperty& property) {
  const Group group(*history_);
  const int before = FailedWrites();
  if (SiteProfGetID(name) < 0 && SiteProfAdd(name) < 0) return -1;
  const int number = SiteProfGetID(name);
  SitSiteProperty present;
  if (number < 0 || GetSiteProf(name, present) < 0) return -1;
  if (!SetFields(*this, number, property, present, kSiteTexts, kSiteNumbers)) return -1;
  for (int i = 0; i < 10; ++i) {
    const std::string& folder = property.dir[static_cast<std::size_t>(i)];
    if (folder.empty() || folder == present.dir[static_cast<std::size_t>(i)]) continue;
    if (SetSiteProfDir(number, folder, i) < 0) return -1;
  }
  return Written(before);
}

int SitMgr::GetServProf(const std::string& name, SitServProperty& property) {
  const int number = ServProfGetID(name);
  if (number < 0) return -1;
  GetFields(*this, number, property, kServTexts, kServNumbers);
  return Succeed();
}

int SitMgr::SetServProf(const std::string& name, const SitServProperty& property) {
  const Group group(*history_);
  const int before = FailedWrites();
  if (ServProfGetID(name) < 0 && ServProfAdd(name) < 0) return -1;
  const int number = ServProfGetID(name);
  SitServProperty present;
  if (number < 0 || GetServProf(name, present) < 0) return -1;
  const bool set = SetFields(*this, number, property, present, kServTexts, kServNumbers);
  return set ? Written(before) : -1;
}

}  // namespace zvrsit
