#include "tables/site_serv_prof_db.h"

#include "storage/guarded.h"
#include "util/scramble.h"

namespace zvrsit {

bool SiteServProfDB::IsFree(std::string_view name, int except) {
  return isOpen() && !name.empty() && !IsTaken(name, except);
}

int SiteServProfDB::Add(std::string_view name) {
  return Guarded([&] {
    SiteServRec record;
    return IsFree(name, -1) ? AddProfile(name, record) : -1;
  });
}

int SiteServProfDB::Rename(int number, std::string_view name) {
  return Guarded([&] {
    SiteServRec record;
    return IsFree(name, number) && Get(number, record) == 0 ? StoreRenamed(record, name) : -1;
  });
}

int SiteServProfDB::Copy(int number, std::string_view name) {
  return Guarded([&] {
    SiteServRec record;
    if (!IsFree(name, -1) || Get(number, record) < 0) return -1;
    ShareTexts(record);
    return AddProfile(name, record);
  });
}

int SiteServProfDB::SetPassword(int number, std::int32_t SiteServRec::*field,
                                std::string_view password) {
  return Guarded([&] { return SetText(number, field, Scramble(password)); });
}

int SiteServProfDB::GetPassword(int number, std::int32_t SiteServRec::*field,
                                std::string& password) const {
  std::string scrambled;
  if (GetText(number, field, scrambled) < 0) return -1;
  return Guarded([&] {
    password = Unscramble(scrambled);
    return 0;
  });
}

}  // namespace zvrsit
