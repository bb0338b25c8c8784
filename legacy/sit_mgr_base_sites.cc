// Site profiles.
#include <cstddef>

#include "legacy/prof_editor.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
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

ProfEditor<SiteRec> SitMgrBase::Inside::Sites() {
  return {siteProf.get(), *history, lastError};
}

int SitMgrBase::SiteProfNum() {
  return inside_->Sites().Num();
}

std::string* SitMgrBase::SiteProfName(int number) {
  return inside_->Sites().Name(number);
}

int SitMgrBase::SiteProfAdd(const std::string& name) {
  const Inside::Group group(*inside_->history);
  if (!IsSiteName(name)) return inside_->Fail(kSitBadArgument);
  return inside_->UnlessWritesFail(
      [&] { return inside_->Sites().Add(name) < 0 ? -1 : inside_->NameSiteFiles(name); });
}

int SitMgrBase::SiteProfDel(const std::string& name) {
  return inside_->UnlessWritesFail([&] { return inside_->Sites().Del(name); }, kSitDeleteFailed);
}

int SitMgrBase::SiteProfCopy(const std::string& from, const std::string& to) {
  const Inside::Group group(*inside_->history);
  if (!IsSiteName(to)) return inside_->Fail(kSitBadArgument);
  return inside_->UnlessWritesFail(
      [&] { return inside_->Sites().Copy(from, to) < 0 ? -1 : inside_->NameSiteFiles(to); });
}

int SitMgrBase::SiteProfMove(const std::string& from, const std::string& to) {
  if (!IsSiteName(to)) {
    inside_->history->NewStep();
    return inside_->Fail(kSitBadArgument);
  }
  return inside_->UnlessWritesFail([&] { return inside_->Sites().Move(from, to); });
}

int SitMgrBase::SiteProfGetID(const std::string& name) {
  return inside_->Sites().GetID(name);
}

// Whether another site keeps its files in this folder, or files of a deleted one lie there.
bool SitMgrBase::Inside::IsFolderTaken(const std::string& folder) {
  const std::string urlFile = folder + "\\Url.db";
  for (int i = 0; i < siteProf->Slots(); ++i) {
    SiteRec record;
    const auto taken = siteProf->Read(i, record) == 0 ? siteProf->GetString(record.urlDB)
                                                      : std::optional<std::string>();
    if (taken && platform::EqualButForCase(*taken, urlFile)) return true;
  }
  platform::FileStat stat;
  return dbDir && platform::Stat(*dbDir + urlFile, stat) >= 0;
}

int SitMgrBase::Inside::NameSiteFiles(const std::string& name) {
  const int number = manager.SiteProfGetID(name);
  if (number < 0) return -1;
  std::string folder = name;
  for (int i = 2; IsFolderTaken(folder); ++i) folder = name + "~" + std::to_string(i);
  const bool named = manager.SetSiteProfUrlDB(number, folder + "\\Url.db") == 0 &&
                     manager.SetSiteProfJunkDB(number, folder + "\\Junk.db") == 0 &&
                     manager.SetSiteProfLinkDB(number, folder + "\\Link.db") == 0 &&
                     manager.SetSiteProfFolderDB(number, folder + "\\Folder.db") == 0 &&
                     manager.SetSiteProfRelDB(number, folder + "\\Rel.db") == 0;
  return named ? 0 : -1;
}

int SitMgrBase::SetSiteProfDir(int number, const std::string& text, int folder) {
  const Inside::Group group(*inside_->history);
  return inside_->Sites().SetText(number, DirWord(folder), text);
}

std::string* SitMgrBase::GetSiteProfDir(int number, int folder) {
  return inside_->Sites().GetText(number, DirWord(folder));
}

int SitMgrBase::SetSiteProfTopFile(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::topFile, text);
}
std::string* SitMgrBase::GetSiteProfTopFile(int number) {
  return inside_->Sites().GetText(number, &SiteRec::topFile);
}

int SitMgrBase::SetSiteProfServProf(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::servProf, text);
}
std::string* SitMgrBase::GetSiteProfServProf(int number) {
  return inside_->Sites().GetText(number, &SiteRec::servProf);
}

int SitMgrBase::SetSiteProfUrlDB(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::urlDB, text);
}
std::string* SitMgrBase::GetSiteProfUrlDB(int number) {
  return inside_->Sites().GetText(number, &SiteRec::urlDB);
}

int SitMgrBase::SetSiteProfJunkDB(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::junkDB, text);
}
std::string* SitMgrBase::GetSiteProfJunkDB(int number) {
  return inside_->Sites().GetText(number, &SiteRec::junkDB);
}

int SitMgrBase::SetSiteProfLinkDB(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::linkDB, text);
}
std::string* SitMgrBase::GetSiteProfLinkDB(int number) {
  return inside_->Sites().GetText(number, &SiteRec::linkDB);
}

int SitMgrBase::SetSiteProfFolderDB(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::folderDB, text);
}
std::string* SitMgrBase::GetSiteProfFolderDB(int number) {
  return inside_->Sites().GetText(number, &SiteRec::folderDB);
}

int SitMgrBase::SetSiteProfRelDB(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::relDB, text);
}
std::string* SitMgrBase::GetSiteProfRelDB(int number) {
  return inside_->Sites().GetText(number, &SiteRec::relDB);
}

int SitMgrBase::SetSiteProfLastUsedDir(int number, const std::string& text) {
  return inside_->Sites().SetText(number, &SiteRec::lastUsedDir, text);
}
std::string* SitMgrBase::GetSiteProfLastUsedDir(int number) {
  return inside_->Sites().GetText(number, &SiteRec::lastUsedDir);
}

int SitMgrBase::SetSiteProfUseDocRoot(int number, int value) {
  return inside_->Sites().SetNumber(number, &SiteRec::useDocRoot, value);
}
int SitMgrBase::GetSiteProfUseDocRoot(int number) {
  return inside_->Sites().GetNumber(number, &SiteRec::useDocRoot);
}

}  // namespace zvrsit
