#include "manager/cells.h"

#include <memory>

namespace zvrsit {

SiteRecCell PathCell(const SitePathDB& paths, const SitePathRec& rec) {
  SiteRecCell cell;
  cell.SetID(PathID(rec.id));
  cell.SetName(std::string(paths.TextView(rec.name)));
  cell.SetTitle(std::string(paths.TextView(rec.title)));
  cell.SetFileType(rec.fileType);
  const bool wasSeen = rec.exists != 0 || rec.modificationTime != 0;
  if (wasSeen) cell.SetSize(static_cast<std::uint32_t>(rec.size));
  cell.SetTime(rec.modificationTime);
  cell.SetFlag(rec.exists);
  return cell;
}

SiteRecCell UrlCell(const SiteUrlDB& urls, const SiteUrlRec& rec) {
  SiteRecCell cell;
  cell.SetID(UrlID(kKindUrl, rec.id));
  cell.SetName(std::string(urls.TextView(rec.name)));
  cell.SetFileType(static_cast<int>(ClassifyFileType(cell.GetName())));
  cell.SetTime(rec.lastChecked);
  cell.SetFlag(rec.state);
  return cell;
}

SiteRecCell FolderCell(const SiteFolderDB& folders, int number) {
  SiteRecCell cell;
  cell.SetID(FolderID(number));
  cell.SetName(std::string(folders.NameView(number)));
  return cell;
}

std::vector<std::string*>* ListNames(const NamedTableBase& table) {
  auto names = std::make_unique<std::vector<std::string*>>();
  ForEachNumber(table, [&](int number) {
    std::string name;
    if (table.Name(number, name) == 0) names->push_back(new std::string(std::move(name)));
  });
  return names.release();
}

}  // namespace zvrsit
