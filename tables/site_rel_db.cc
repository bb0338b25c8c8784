#include "tables/site_rel_db.h"

namespace zvrsit {

int SiteRelDB::Add(const UrlID& parent, const UrlID& child) {
  if (!isOpen()) return -1;
  SiteRelRec record;
  record.from = parent;
  record.to = child;
  return AddRecord(record);
}

int SiteRelDB::Delete(int number) {
  SiteRelRec record;
  if (number < 0 || !isOpen() || records_->Get(number, &record) < 0) return -1;
  if (records_->Delete(number) < 0) return -1;
  RemoveEnds(record);
  return 0;
}

int SiteRelDB::Clear() {
  if (!isOpen()) return -1;
  ForgetEnds();
  records_->DeleteAll([](char*) {});
  return 0;
}

}  // namespace zvrsit
