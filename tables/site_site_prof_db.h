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

  // Adds a profile of that name and stores the names of its five table files: the name followed by
  // the suffixes of kSiteTableFiles. Its number; -1 also for a name that IsSiteName refuses, or
  // that another profile has but for the case of ASCII letters.
  int Add(std::string_view name);
  // Gives a profile another name, and its table files with it; the files themselves are the
  // caller's to move. 0 or -1, refused as by Add.
  int Rename(int number, std::string_view name);
  // Adds a profile with all fields of another but its table files and rebuild state, which are
  // those of a new one; its number or -1.
  int Copy(int number, std::string_view name);

  // The stored names of the table files; false when not all can be read.
  bool ReadTableNames(int number, SiteTableNames& names) const;

  // A folder slot, 0 to 9; as SetText and GetText.
  int SetFolder(int number, int slot, std::string_view folder);
  int GetFolder(int number, int slot, std::string& folder) const;

 private:
  int RenameFree(int number, std::string_view name);
  int StoreFileNames(std::string_view name, SiteSiteRec& record);
  bool IsFree(std::string_view name, int except);
};

}  // namespace zvrsit
