#include "tables/site_site_prof_db.h"

#include "storage/guarded.h"
#include "tables/table_files.h"
#include "util/site_name.h"

namespace zvrsit {

bool SiteSiteProfDB::IsFree(std::string_view name, int except) {
  return isOpen() && IsSiteName(name) && !IsTaken(name, except);
}

int SiteSiteProfDB::StoreFileNames(std::string_view name, SiteSiteRec& record) {
  for (const SiteTableFile& file : kSiteTableFiles) {
    const int added = strings_->AddString(std::string(name).append(file.suffix));
    if (added < 0) return -1;
    record.*file.word = added;
  }
  return 0;
}

int SiteSiteProfDB::Add(std::string_view name) {
  return Guarded([&] {
    SiteSiteRec record;
    if (!IsFree(name, -1) || StoreFileNames(name, record) < 0) return -1;
    return AddProfile(name, record);
  });
}

int SiteSiteProfDB::Rename(int number, std::string_view name) {
  return Guarded([&] { return RenameFree(number, name); });
}

int SiteSiteProfDB::RenameFree(int number, std::string_view name) {
  SiteSiteRec old;
  if (!IsFree(name, number) || Get(number, old) < 0) return -1;
  SiteSiteRec renamed = old;
  if (StoreFileNames(name, renamed) < 0 || StoreRenamed(renamed, name) < 0) return -1;
  int result = 0;
  for (const SiteTableFile& file : kSiteTableFiles) {
    if (ReleaseText(old.*file.word) < 0) result = -1;
  }
  return result;
}

int SiteSiteProfDB::Copy(int number, std::string_view name) {
  return Guarded([&] {
    SiteSiteRec record;
    if (!IsFree(name, -1) || Get(number, record) < 0) return -1;
    for (const SiteTableFile& file : kSiteTableFiles) record.*file.word = -1;
    record.rebuildState = 0;
    ShareTexts(record);
    return StoreFileNames(name, record) < 0 ? -1 : AddProfile(name, record);
  });
}

int SiteSiteProfDB::ReadTableNames(int number, SiteTableNames& names) const {
  SiteSiteRec record;
  if (Get(number, record) < 0) return -1;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (Text(record.*kSiteTableFiles[i].word, names[i]) < 0) return -1;
  }
  return 0;
}

int SiteSiteProfDB::SetFolder(int number, int slot, std::string_view folder) {
  if (slot < 0 || slot >= kSiteFolderSlots) return -1;
  return SetTextAt(number, folder, [slot](SiteSiteRec& record) -> std::int32_t& {
    return record.folders[static_cast<std::size_t>(slot)];
  });
}

int SiteSiteProfDB::GetFolder(int number, int slot, std::string& folder) const {
  SiteSiteRec record;
  if (slot < 0 || slot >= kSiteFolderSlots || Get(number, record) < 0) return -1;
  return Text(record.folders[static_cast<std::size_t>(slot)], folder);
}

}  // namespace zvrsit
