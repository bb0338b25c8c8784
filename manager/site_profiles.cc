// The profiles of sites, and the files of their tables.
#include <algorithm>
#include <cerrno>
#include <memory>

#include "manager/cells.h"
#include "manager/update_note.h"
#include "manager/work.h"
#include "platform/file.h"
#include "platform/single_byte.h"
#include "util/mb_string.h"
#include "util/site_name.h"

namespace zvrsit {

namespace {

// A text field of the record, and where a SiteProfile has it.
struct ProfileText {
  std::int32_t SiteSiteRec::*word;
  std::string SiteProfile::*text;
};
constexpr ProfileText kSiteTexts[] = {{&SiteSiteRec::topFile, &SiteProfile::topFile},
                                      {&SiteSiteRec::defaultUrl, &SiteProfile::defaultUrl},
                                      {&SiteSiteRec::servProf, &SiteProfile::server}};

// Whether a stored file name leads into a folder of the database folder, and to no other place.
bool IsTableName(std::string_view name) {
  const auto backslash = FindLastBackslashMB(name);
  return backslash != std::string_view::npos && IsSiteName(name.substr(0, backslash)) &&
         IsSiteName(name.substr(backslash + 1));
}

// Reads the file names of a profile's tables; 0, or -1 when not all can be read. A name that leads
// elsewhere is left empty, so that no other file is moved or deleted because of a damaged profile.
int ReadTableNames(const SiteSiteProfDB& profiles, int number, SiteTableNames& names) {
  const int result = profiles.ReadTableNames(number, names);
  for (std::string& name : names) {
    if (!IsTableName(name)) name.clear();
  }
  return result;
}

// Whether all these names lie in that folder of the database folder.
bool LieIn(const SiteTableNames& names, const std::string& folder) {
  return std::ranges::all_of(
      names, [&](const std::string& name) { return FolderOf(name) == folder + '\\'; });
}

void RemoveTables(const std::string& dbDir, const SiteTableNames& names) {
  for (const std::string& name : names) {
    if (name.empty()) continue;
    ForEachFileOfTable(dbDir + name, [](const std::string& path) { platform::Unlink(path); });
    platform::Unlink(NoteBeside(dbDir + name));
    platform::RemoveFolder(std::string(FolderOf(dbDir + name)));
  }
}

// Moves the files of a table that are there; 0, or -1 when one of them could not be moved.
int MoveTable(const std::string& from, const std::string& to) {
  std::vector<std::string> targets;
  ForEachFileOfTable(to, [&](const std::string& path) { targets.push_back(path); });
  auto target = targets.begin();
  int result = 0;
  ForEachFileOfTable(from, [&](const std::string& path) {
    const std::string& place = *target++;
    if (platform::Rename(path, place) < 0 && platform::LastError() != ENOENT) result = -1;
  });
  return result;
}

// Moves the tables to other names; 0, or -1 when not all of them could be moved.
int MoveTables(const std::string& dbDir, const SiteTableNames& from, const SiteTableNames& to) {
  int result = 0;
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (from[i].empty() || to[i].empty() || from[i] == to[i]) continue;
    if (platform::MakeFolderOfPath(dbDir + to[i]) < 0 ||
        MoveTable(dbDir + from[i], dbDir + to[i]) < 0) {
      result = -1;
    }
    platform::Rename(NoteBeside(dbDir + from[i]), NoteBeside(dbDir + to[i]));
  }
  for (const std::string& name : from) {
    if (!name.empty())
      platform::RemoveFolder(std::string(FolderOf(dbDir + name)));  // when it is now empty
  }
  return result;
}

}  // namespace

std::vector<std::string*>* SiteMgr::EnumSiteProf() {
  const ProfileUse use(*this);
  return HasFiles(siteProf) ? ListNames(*siteProf) : nullptr;
}

int SiteMgr::FindSiteProf(const std::string& name) {
  const ProfileUse use(*this);
  return HasFiles(siteProf) ? siteProf->Find(name) : -1;
}

int SiteMgr::GetSiteProf(const std::string& name, SiteProfile& profile) {
  const ProfileUse use(*this);
  SiteSiteRec rec;
  if (!HasFiles(siteProf) || siteProf->Get(siteProf->Find(name), rec) < 0) return -1;
  profile = SiteProfile{};
  for (std::size_t slot = 0; slot < profile.folders.size(); ++slot) {
    siteProf->Text(rec.folders[slot], profile.folders[slot]);
  }
  for (const ProfileText& field : kSiteTexts) {
    siteProf->Text(rec.*field.word, profile.*field.text);
  }
  profile.useDocumentRoot = rec.useDocRoot != 0;
  profile.linkRules = RulesOf(rec);
  profile.rebuildState = rec.rebuildState;
  return 0;
}

int SiteMgr::SetSiteProf(const std::string& name, const SiteProfile& profile) {
  const ProfileUse use(*this);
  int number = FindSiteProf(name);
  if (number < 0) number = AddSiteProf(name);
  return number < 0 ? -1 : Work(*this).StoreProfile(number, profile);
}

int SiteMgr::Work::StoreProfile(int number, const SiteProfile& profile) {
  for (int slot = 0; slot < kSiteFolderSlots; ++slot) {
    const std::string& folder = profile.folders[static_cast<std::size_t>(slot)];
    if (m_.siteProf->SetFolder(number, slot, folder) < 0) return -1;
  }
  for (const ProfileText& field : kSiteTexts) {
    if (m_.siteProf->SetText(number, field.word, profile.*field.text) < 0) return -1;
  }
  SiteSiteRec rec;
  if (m_.siteProf->Get(number, rec) < 0) return -1;
  rec.useDocRoot = profile.useDocumentRoot ? 1 : 0;
  rec.linkRules &= ~SiteSiteRec::kWebRules;
  if (profile.linkRules == LinkRules::Web) rec.linkRules |= SiteSiteRec::kWebRules;
  rec.rebuildState = profile.rebuildState;
  if (m_.siteProf->Update(rec) < 0) return -1;
  if (number != m_.openSiteId) return 0;
  m_.linksChanged = 1;  // the family may begin elsewhere
  return OpenSiteChanged();
}

int SiteMgr::AddSiteProf(const std::string& name) {
  const ProfileUse use(*this);
  if (!HasFiles(siteProf) || dbDir == nullptr) return -1;
  return Work(*this).MakeTableFolder(siteProf->Add(name));
}

int SiteMgr::CopySiteProf(const std::string& from, const std::string& to) {
  const ProfileUse use(*this);
  if (!HasFiles(siteProf) || dbDir == nullptr) return -1;
  return Work(*this).MakeTableFolder(siteProf->Copy(siteProf->Find(from), to));
}

// Makes the folder for the tables of a new profile, without any tables; gives the profile's number.
// A profile whose folder cannot be made could never be opened, so it is deleted again.
int SiteMgr::Work::MakeTableFolder(int number) {
  if (number < 0) return -1;
  SiteTableNames names;
  if (ReadTableNames(*m_.siteProf, number, names) == 0) {
    RemoveTables(*m_.dbDir, names);
    if (platform::MakeFolderOfPath(*m_.dbDir + names.front()) == 0) return number;
  }
  static_cast<void>(m_.siteProf->Delete(number));
  return -1;
}

int SiteMgr::RenameSiteProf(const std::string& from, const std::string& to) {
  const int number = FindSiteProf(from);
  if (number < 0 || number == openSiteId || dbDir == nullptr) return -1;
  const SiteUse site(*this, number, Locking::kChange);
  const ProfileUse use(*this);
  if (!site.isHeld() || FindSiteProf(from) != number) return -1;
  if (from == to) return 0;
  SiteTableNames oldNames;
  SiteTableNames newNames;
  if (ReadTableNames(*siteProf, number, oldNames) < 0) return -1;
  const std::string oldFolder = *dbDir + from;
  const std::string newFolder = *dbDir + to;
  if (inside->undo != nullptr) inside->undo->NoteRename(oldFolder, newFolder);
  // It may fail halfway. What the profile says afterwards counts.
  static_cast<void>(siteProf->Rename(number, to));
  if (ReadTableNames(*siteProf, number, newNames) < 0) {
    static_cast<void>(siteProf->Rename(number, from));
    return -1;
  }
  if (newNames == oldNames) return -1;  // the tables follow what stands in the profile
  // If only the letter case differs, the new names may be those of the tables themselves.
  if (!platform::EqualButForCase(from, to)) RemoveTables(*dbDir, newNames);
  // As a whole, the folder can be moved back after a crash.
  if (inside->undo != nullptr && LieIn(oldNames, from) && LieIn(newNames, to) &&
      platform::Rename(oldFolder, newFolder) == 0) {
    return 0;
  }
  if (MoveTables(*dbDir, oldNames, newNames) == 0) return 0;
  MoveTables(*dbDir, newNames, oldNames);
  static_cast<void>(siteProf->Rename(number, from));
  return -1;
}

int SiteMgr::DeleteSiteProf(const std::string& name) {
  const int number = FindSiteProf(name);
  if (number < 0 || number == openSiteId || dbDir == nullptr) return -1;
  const SiteUse site(*this, number, Locking::kChange);
  const ProfileUse use(*this);
  if (!site.isHeld() || FindSiteProf(name) != number) return -1;
  SiteTableNames names;
  static_cast<void>(ReadTableNames(*siteProf, number, names));  // what cannot be read stays empty
  SiteSiteRec left;
  // Texts of a deleted profile that cannot be given back take room and no more.
  if (siteProf->Delete(number) < 0 && siteProf->Get(number, left) == 0) return -1;
  if (KeepProfiles() < 0) return -1;
  RemoveTables(*dbDir, names);
  return 0;
}

}  // namespace zvrsit
