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

  // Adds a profile; its number, or -1. -1 for an empty name, and for a name that another profile
  // has, ASCII letter case ignored. Rename and Copy refuse the same names.
  [[nodiscard]] int Add(std::string_view name);
  [[nodiscard]] int Rename(int number, std::string_view name);
  [[nodiscard]] int Copy(int number, std::string_view name);

  // A password field: &SiteServRec::password or &SiteServRec::firewallPassword. The password is
  // given and taken in clear, and stored scrambled. Otherwise as SetText and GetText.
  [[nodiscard]] int SetPassword(int number, std::int32_t SiteServRec::*field,
                                std::string_view password);
  [[nodiscard]] int GetPassword(int number, std::int32_t SiteServRec::*field,
                                std::string& password) const;

 private:
  bool IsFree(std::string_view name, int except);
};

}  // namespace zvrsit
