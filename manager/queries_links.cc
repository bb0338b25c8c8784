// Questions about links.
#include <algorithm>
#include <utility>

#include "manager/cells.h"
#include "manager/site_mgr.h"

namespace zvrsit {

namespace {

// The live numbers of a table, ascending.
template <class Visit>
void ForEachNumber(const SiteTable& table, Visit visit) {
  for (int number = table.NextNumber(0); number >= 0; number = table.NextNumber(number + 1)) {
    visit(number);
  }
}

}  // namespace

std::vector<int>* SiteMgr::EnumLink() {
  if (!HasFiles(linkDB)) return nullptr;
  auto numbers = std::make_unique<std::vector<int>>();
  ForEachNumber(*linkDB, [&](int number) { numbers->push_back(number); });
  return numbers.release();
}

int SiteMgr::GetLink(int number, SiteLink& link) {
  SiteLinkRec rec;
  if (!HasFiles(linkDB) || !HasFiles(pathDB) || linkDB->Get(number, rec) < 0) return -1;
  link.from = rec.from;
  link.to = rec.to;
  link.type = static_cast<std::uint32_t>(rec.type);
  link.count = rec.count;
  link.offset = rec.offset;
  link.text = linkDB->TextView(rec.text);
  link.alt = linkDB->TextView(rec.alternative);
  link.exists = rec.to.kind != kKindPath;
  link.outside = false;
  if (rec.to.kind == kKindPath) {
    SitePathRec target;
    link.exists = pathDB->Get(rec.to.id, target) == 0 && target.exists != 0;
    link.outside = !link.exists && !IsInSite(pathDB->TextView(target.name));
  }
  return 0;
}

vec<SiteRecCell>* SiteMgr::LinkCells(const std::string& path, bool fromIt) {
  if (!HasFiles(pathDB) || !HasFiles(urlDB) || !HasFiles(linkDB)) return nullptr;
  const int number = pathDB->Find(path);
  if (number < 0) return nullptr;
  std::vector<int> links;
  const UrlID id = PathID(number);
  if (linkDB->Query(fromIt ? id : kAnyUrlID, fromIt ? kAnyUrlID : id, links) < 0) return nullptr;
  auto cells = std::make_unique<Cells>();
  cells->reserve(links.size());
  for (const int link : links) {
    SiteLinkRec rec;
    if (linkDB->Get(link, rec) < 0) continue;
    SiteRecCell cell = EntryCell(fromIt ? rec.to : rec.from);
    cell.SetLinkType(rec.type);
    cells->push_back(std::move(cell));
  }
  return cells.release();
}

vec<SiteRecCell>* SiteMgr::GetForeLinks(const std::string& path) {
  return LinkCells(path, true);
}

vec<SiteRecCell>* SiteMgr::GetBackLinks(const std::string& path) {
  return LinkCells(path, false);
}

vec<SiteRecCell>* SiteMgr::GetBrokenLinks() {
  if (!HasFiles(pathDB) || !HasFiles(linkDB)) return nullptr;
  auto cells = std::make_unique<Cells>();
  ForEachNumber(*pathDB, [&](int number) {
    SitePathRec rec;
    if (pathDB->Get(number, rec) < 0 || rec.exists != 0) return;
    if (linkDB->CountTo(PathID(number)) > 0) cells->push_back(PathCell(*pathDB, rec));
  });
  return cells.release();
}

}  // namespace zvrsit
