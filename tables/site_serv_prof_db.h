// SiteServProfDB: the profiles of the servers that sites are published to.
#pragma once

#include <string>
#include <string_view>

#include "tables/profile_table.h"

namespace zvrsit {

class SiteServProfDB : public ProfileTable<SiteServRec> {
 public:
  // The creator chooses the mode of the files.
  explicit SiteServProfDB(bool wholeFile = true) : ProfileTable(wholeFile) {}

  // Adds a profile; its number, or -1 for an empty name or one that another profile has but for the
  // case of ASCII letters. Rename and Copy refuse the same.
  int Add(std::string_view name);
  int Rename(int number, std::string_view name);
  int Copy(int number, std::string_view name);

  // A password field, &SiteServRec::password or &SiteServRec::firewallPassword, given and taken
  // plain and stored scrambled; otherwise as SetText and GetText.
  int SetPassword(int number, std::int32_t SiteServRec::*field, std::string_view password);
  int GetPassword(int number, std::int32_t SiteServRec::*field, std::string& password) const;

 private:
  bool IsFree(std::string_view name, int except);
};

}  // namespace zvrsit
