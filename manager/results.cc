// The giving back of results.
#include "manager/site_mgr.h"

namespace zvrsit {

int SiteMgr::DeleteVecRecCell(vec<SiteRecCell>* cells) {
  delete cells;
  return 0;
}

int SiteMgr::DeleteStrings(std::vector<std::string*>* list) {
  if (list == nullptr) return -1;
  list->clear();
  return 0;
}

}  // namespace zvrsit
