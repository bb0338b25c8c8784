// SiteSiteProfDB: the profiles of all sites of a user, in direct mode.
#pragma once

#include <string>
#include <string_view>

#include "tables/profile_table.h"
#include "tables/table_files.h"

namespace zvrsit {

class SiteSiteProfDB : public ProfileTable<SiteSiteRec> {
 public:
  SiteSiteProfDB() : ProfileTable(false) {}

  // Adds a profile and stores the names of its five table files: its name followed by the suffixes
  // of kSiteTableFiles. Its number or -1. -1 also for a name that IsSiteName refuses, or that
  // another profile has, ASCII letter case ignored.
  [[nodiscard]] int Add(std::string_view name);
  // Gives a profile and its stored file names another name. The caller moves the files themselves.
  // 0 or -1; refuses what Add refuses.
  [[nodiscard]] int Rename(int number, std::string_view name);
  // Adds a profile with the fields of another one; its number or -1. Its table files and its
  // rebuild state are those of a new profile.
  [[nodiscard]] int Copy(int number, std::string_view name);

  // The stored names of the table files; 0, or -1 when not all can be read.
  [[nodiscard]] int ReadTableNames(int number, SiteTableNames& names) const;

  // A folder slot, 0 to 9; as SetText and GetText.
  [[nodiscard]] int SetFolder(int number, int slot, std::string_view folder);
  [[nodiscard]] int GetFolder(int number, int slot, std::string& folder) const;

 private:
  [[nodiscard]] int RenameFree(int number, std::string_view name);
  [[nodiscard]] int StoreFileNames(std::string_view name, SiteSiteRec& record);
  bool IsFree(std::string_view name, int except);
};

}  // namespace zvrsit
