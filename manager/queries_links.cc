// Questions about links.
#include <memory>
#include <utility>

#include "manager/cells.h"
#include "manager/work.h"

namespace zvrsit {

namespace {

std::vector<int>* QueryLinks(SiteLinkDB* links, const UrlID& from, const UrlID& to) {
  auto numbers = std::make_unique<std::vector<int>>();
  if (!HasFiles(links) || links->Query(from, to, *numbers) < 0) return nullptr;
  return numbers.release();
}

// By path number: whether the file is not there, or not in the site.
std::vector<bool> FindMissing(const SitePathDB& paths) {
  std::vector<bool> missing(static_cast<std::size_t>(paths.Count()), true);
  ForEachNumber(paths, [&](int number) {
    SitePathRec rec;
    if (paths.Get(number, rec) == 0 && rec.exists != 0) {
      missing[static_cast<std::size_t>(number)] = false;
    }
  });
  return missing;
}

// Whether a path stands for a name that no file can have: it ends in a separator, as no path of a
// file does.
bool IsUnservable(std::string_view path) {
  if (!path.ends_with('\\')) return false;
  for (const std::string_view code : {"%2F", "%2f", "%5C", "%5c", "%00"}) {
    if (path.find(code) != std::string_view::npos) return true;
  }
  return false;
}

// A cell with only its id when the entry cannot be read.
SiteRecCell EntryCell(const SiteMgr& manager, const UrlID& id) {
  const SitePathDB& paths = *manager.GetPathDB();
  const SiteUrlDB& urls = *manager.GetUrlDB();
  SitePathRec path;
  SiteUrlRec url;
  if (id.kind == kKindPath && paths.Get(id.id, path) == 0) return PathCell(paths, path);
  if (id.kind == kKindUrl && urls.Get(id.id, url) == 0) return UrlCell(urls, url);
  SiteRecCell cell;
  cell.SetID(id);
  return cell;
}

enum class LinkEnd { kFrom, kTo };

// The links that have the file `path` at one end, as cells of the entry at the other.
vec<SiteRecCell>* LinkCells(const SiteMgr& manager, LinkEnd end, const std::string& path) {
  const SitePathDB* const paths = manager.GetPathDB();
  SiteLinkDB* const table = manager.GetLinkDB();
  if (!HasFiles(paths) || !HasFiles(manager.GetUrlDB()) || !HasFiles(table)) return nullptr;
  const int number = paths->Find(path);
  if (number < 0) return nullptr;
  const bool fromIt = end == LinkEnd::kFrom;
  const UrlID id = PathID(number);
  std::vector<int> links;
  if (table->Query(fromIt ? id : kAnyUrlID, fromIt ? kAnyUrlID : id, links) < 0) return nullptr;
  auto cells = std::make_unique<Cells>();
  cells->reserve(links.size());
  for (const int link : links) {
    SiteLinkRec rec;
    if (table->Get(link, rec) < 0) continue;
    SiteRecCell cell = EntryCell(manager, fromIt ? rec.to : rec.from);
    cell.SetLinkType(rec.type);
    cells->push_back(std::move(cell));
  }
  return cells.release();
}

}  // namespace

std::vector<int>* SiteMgr::GetForeLinks(const UrlID& id) {
  return QueryLinks(linkDB, id, kAnyUrlID);
}

std::vector<int>* SiteMgr::GetBackLinks(const UrlID& id) {
  return QueryLinks(linkDB, kAnyUrlID, id);
}

std::vector<int>* SiteMgr::EnumLink() {
  if (!HasFiles(linkDB)) return nullptr;
  auto numbers = std::make_unique<std::vector<int>>();
  ForEachNumber(*linkDB, [&](int number) { numbers->push_back(number); });
  return numbers.release();
}

std::vector<int>* SiteMgr::EnumBrokenLink() {
  if (!HasFiles(linkDB) || !HasFiles(pathDB)) return nullptr;
  const std::vector<bool> missing = FindMissing(*pathDB);
  auto numbers = std::make_unique<std::vector<int>>();
  ForEachNumber(*linkDB, [&](int number) {
    SiteRelRec link;
    if (linkDB->records()->Get(number, &link) < 0 || link.to.kind != kKindPath) return;
    const auto target = static_cast<std::size_t>(link.to.id);
    if (link.to.id < 0 || target >= missing.size() || missing[target]) numbers->push_back(number);
  });
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
  link.outside = link.unservable = false;
  if (link.exists) return 0;
  SitePathRec target;
  if (pathDB->Get(rec.to.id, target) < 0) return 0;
  link.exists = target.exists != 0;
  link.unservable = !link.exists && IsUnservable(pathDB->TextView(target.name));
  // A file that is there has its flag only if it lies below the site folder.
  const bool isInSite =
      inside->siteFolder && pathDB->TextView(target.name).starts_with(*inside->siteFolder);
  link.outside = !link.exists && !isInSite;
  return 0;
}

vec<SiteRecCell>* SiteMgr::GetForeLinks(const std::string& path) {
  return LinkCells(*this, LinkEnd::kFrom, path);
}

vec<SiteRecCell>* SiteMgr::GetBackLinks(const std::string& path) {
  return LinkCells(*this, LinkEnd::kTo, path);
}

vec<SiteRecCell>* SiteMgr::GetBrokenLinks() {
  const std::unique_ptr<std::vector<int>> links(EnumBrokenLink());
  if (links == nullptr) return nullptr;
  std::vector<int> linkCounts(static_cast<std::size_t>(pathDB->Count()));
  for (const int number : *links) {
    SiteRelRec link;
    if (linkDB->records()->Get(number, &link) < 0 || link.to.id < 0) continue;
    const auto target = static_cast<std::size_t>(link.to.id);
    if (target < linkCounts.size()) ++linkCounts[target];
  }
  auto cells = std::make_unique<Cells>();
  ForEachNumber(*pathDB, [&](int number) {
    const int count = linkCounts[static_cast<std::size_t>(number)];
    SitePathRec rec;
    if (count == 0 || pathDB->Get(number, rec) < 0) return;
    cells->push_back(PathCell(*pathDB, rec));
    cells->back().SetFlag(count);
  });
  return cells.release();
}

}  // namespace zvrsit
