// Site profiles.
#include <cstddef>

#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_base.h"
#include "legacy/sit_prof.h"
#include "platform/file.h"
#include "platform/single_byte.h"
#include "util/site_name.h"

namespace zvrsit {

namespace {

// The word of a folder slot; -1 outside of the record. The slots are ten, but an index that leads
// to another word of the record is meant to reach it.
int DirWord(int folder) {
  constexpr int kFirst = static_cast<int>(offsetof(SiteRec, dir) / 4);
  constexpr int kSiteWords = static_cast<int>(sizeof(SiteRec) / 4);
  return folder >= -kFirst && folder < kSiteWords - kFirst ? kFirst + folder : -1;
}

}  // namespace

SitMgrBase::SiteEditor SitMgrBase::Sites() {
  return {siteProf_.get(), *history_, lastError_};
}

int SitMgrBase::SiteProfNum() {
  return Sites().Num();
}

std::string* SitMgrBase::SiteProfName(int number) {
  return Sites().Name(number);
}

int SitMgrBase::SiteProfAdd(const std::string& name) {
  const Group group(*history_);
  if (!IsSiteName(name)) return Fail(kSitBadArgument);
  return UnlessWritesFail([&] { return Sites().Add(name) < 0 ? -1 : NameSiteFiles(name); });
}

int SitMgrBase::SiteProfDel(const std::string& name) {
  return UnlessWritesFail([&] { return Sites().Del(name); }, kSitDeleteFailed);
}

int SitMgrBase::SiteProfCopy(const std::string& from, const std::string& to) {
  const Group group(*history_);
  if (!IsSiteName(to)) return Fail(kSitBadArgument);
  return UnlessWritesFail([&] { return Sites().Copy(from, to) < 0 ? -1 : NameSiteFiles(to); });
}

int SitMgrBase::SiteProfMove(const std::string& from, const std::string& to) {
  if (!IsSiteName(to)) {
    history_->NewStep();
    return Fail(kSitBadArgument);
  }
  return UnlessWritesFail([&] { return Sites().Move(from, to); });
}

int SitMgrBase::SiteProfGetID(const std::string& name) {
  return Sites().GetID(name);
}

// Whether another site keeps its files in this folder, or files of a deleted one lie there.
bool SitMgrBase::IsFolderTaken(const std::string& folder) {
  const std::string urlDB = folder + "\\Url.db";
  for (int i = 0; i < siteProf_->Slots(); ++i) {
    SiteRec record;
    const auto taken = siteProf_->Read(i, record) == 0 ? siteProf_->GetString(record.urlDB)
                                                       : std::optional<std::string>();
    if (taken && platform::EqualButForCase(*taken, urlDB)) return true;
  }
  platform::FileStat stat;
  return dbDir_ && platform::Stat(*dbDir_ + urlDB, stat) >= 0;
}

int SitMgrBase::NameSiteFiles(const std::string& name) {
  const int number = SiteProfGetID(name);
  if (number < 0) return -1;
  std::string folder = name;
  for (int i = 2; IsFolderTaken(folder); ++i) folder = name + "~" + std::to_string(i);
  const bool named = SetSiteProfUrlDB(number, folder + "\\Url.db") == 0 &&
                     SetSiteProfJunkDB(number, folder + "\\Junk.db") == 0 &&
                     SetSiteProfLinkDB(number, folder + "\\Link.db") == 0 &&
                     SetSiteProfFolderDB(number, folder + "\\Folder.db") == 0 &&
                     SetSiteProfRelDB(number, folder + "\\Rel.db") == 0;
  return named ? 0 : -1;
}

int SitMgrBase::SetSiteProfDir(int number, const std::string& text, int folder) {
  const Group group(*history_);
  return Sites().SetText(number, DirWord(folder), text);
}

std::string* SitMgrBase::GetSiteProfDir(int number, int folder) {
  return Sites().GetText(number, DirWord(folder));
}

int SitMgrBase::SetSiteProfTopFile(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::topFile, text);
}
std::string* SitMgrBase::GetSiteProfTopFile(int number) {
  return Sites().GetText(number, &SiteRec::topFile);
}

int SitMgrBase::SetSiteProfServProf(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::servProf, text);
}
std::string* SitMgrBase::GetSiteProfServProf(int number) {
  return Sites().GetText(number, &SiteRec::servProf);
}

int SitMgrBase::SetSiteProfUrlDB(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::urlDB, text);
}
std::string* SitMgrBase::GetSiteProfUrlDB(int number) {
  return Sites().GetText(number, &SiteRec::urlDB);
}

int SitMgrBase::SetSiteProfJunkDB(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::junkDB, text);
}
std::string* SitMgrBase::GetSiteProfJunkDB(int number) {
  return Sites().GetText(number, &SiteRec::junkDB);
}

int SitMgrBase::SetSiteProfLinkDB(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::linkDB, text);
}
std::string* SitMgrBase::GetSiteProfLinkDB(int number) {
  return Sites().GetText(number, &SiteRec::linkDB);
}

int SitMgrBase::SetSiteProfFolderDB(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::folderDB, text);
}
std::string* SitMgrBase::GetSiteProfFolderDB(int number) {
  return Sites().GetText(number, &SiteRec::folderDB);
}

int SitMgrBase::SetSiteProfRelDB(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::relDB, text);
}
std::string* SitMgrBase::GetSiteProfRelDB(int number) {
  return Sites().GetText(number, &SiteRec::relDB);
}

int SitMgrBase::SetSiteProfLastUsedDir(int number, const std::string& text) {
  return Sites().SetText(number, &SiteRec::lastUsedDir, text);
}
std::string* SitMgrBase::GetSiteProfLastUsedDir(int number) {
  return Sites().GetText(number, &SiteRec::lastUsedDir);
}

int SitMgrBase::SetSiteProfUseDocRoot(int number, int value) {
  return Sites().SetNumber(number, &SiteRec::useDocRoot, value);
}
int SitMgrBase::GetSiteProfUseDocRoot(int number) {
  return Sites().GetNumber(number, &SiteRec::useDocRoot);
}

}  // namespace zvrsit
