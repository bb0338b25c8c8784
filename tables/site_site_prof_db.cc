#include "tables/site_site_prof_db.h"

#include "storage/guarded.h"
#include "util/site_name.h"

namespace zvrsit {

namespace {

// The name of each table file: the site's name followed by this.
struct TableFile {
  std::int32_t SiteSiteRec::*word;
  const char* suffix;
};
constexpr TableFile kTableFiles[] = {{&SiteSiteRec::urlFile, "\\UR"},
                                     {&SiteSiteRec::pathFile, "\\PR"},
                                     {&SiteSiteRec::linkFile, "\\LR"},
                                     {&SiteSiteRec::folderFile, "\\FR"},
                                     {&SiteSiteRec::relFile, "\\RR"}};

}  // namespace

bool SiteSiteProfDB::IsFree(std::string_view name, int except) {
  return isOpen() && IsSiteName(name) && !IsTaken(name, except);
}

int SiteSiteProfDB::StoreFileNames(std::string_view name, SiteSiteRec& record) {
  for (const TableFile& file : kTableFiles) {
    const int added = strings_->AddString(std::string(name) + file.suffix);
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
  for (const TableFile& file : kTableFiles) {
    if (ReleaseText(old.*file.word) < 0) result = -1;
  }
  return result;
}

int SiteSiteProfDB::Copy(int number, std::string_view name) {
  return Guarded([&] {
    SiteSiteRec record;
    if (!IsFree(name, -1) || Get(number, record) < 0) return -1;
    for (const TableFile& file : kTableFiles) record.*file.word = -1;
    record.rebuildState = 0;
    ShareTexts(record);
    return StoreFileNames(name, record) < 0 ? -1 : AddProfile(name, record);
  });
}

int SiteSiteProfDB::SetFolder(int number, int slot, std::string_view folder) {
  if (slot < 0 || slot >= SiteSiteRec::kFolders) return -1;
  return SetTextAt(number, folder, [slot](SiteSiteRec& record) -> std::int32_t& {
    return record.folders[static_cast<std::size_t>(slot)];
  });
}

int SiteSiteProfDB::GetFolder(int number, int slot, std::string& folder) const {
  SiteSiteRec record;
  if (slot < 0 || slot >= SiteSiteRec::kFolders || Get(number, record) < 0) return -1;
  return Text(record.folders[static_cast<std::size_t>(slot)], folder);
}

}  // namespace zvrsit
