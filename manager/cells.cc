#include "manager/cells.h"

namespace zvrsit {

SiteRecCell PathCell(const SitePathDB& paths, const SitePathRec& rec) {
  SiteRecCell cell;
  cell.SetID(PathID(rec.id));
  cell.SetName(std::string(paths.TextView(rec.name)));
  cell.SetTitle(std::string(paths.TextView(rec.title)));
  cell.SetFileType(rec.fileType);
  const bool seen = rec.exists != 0 || rec.modificationTime != 0;
  if (seen) cell.SetSize(static_cast<std::uint32_t>(rec.size));
  cell.SetTime(rec.modificationTime);
  cell.SetFlag(rec.exists);
  return cell;
}

SiteRecCell UrlCell(const SiteUrlDB& urls, const SiteUrlRec& rec) {
  SiteRecCell cell;
  cell.SetID(UrlID(kKindUrl, rec.id));
  cell.SetName(std::string(urls.TextView(rec.name)));
  cell.SetFileType(static_cast<int>(ClassifyFileType(urls.TextView(rec.name))));
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

}  // namespace zvrsit
