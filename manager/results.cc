// Record numbers of links, and the giving back of results.
#include <memory>
#include <utility>

#include "manager/record_access.h"
#include "manager/site_mgr.h"

namespace zvrsit {

namespace {

std::vector<int>* QueryLinks(SiteLinkDB* table, const UrlID& from, const UrlID& to) {
  auto numbers = std::make_unique<std::vector<int>>();
  if (table == nullptr || table->Query(from, to, *numbers) < 0) return nullptr;
  return numbers.release();
}

}  // namespace

std::vector<int>* SiteMgr::GetForeLinks(const UrlID& id) {
  return QueryLinks(linkDB, id, kAnyUrlID);
}

std::vector<int>* SiteMgr::GetBackLinks(const UrlID& id) {
  return QueryLinks(linkDB, kAnyUrlID, id);
}

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
