// What the disk and a page's document say of an entry.
#include <string>

#include "legacy/page_reader.h"
#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "legacy/sit_prof.h"
#include "links/html_values.h"
#include "platform/file.h"
#include "platform/folder_search.h"
#include "util/disk_name.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

namespace {

constexpr std::int32_t kStatusOfDisk =
    kStatusFound | kStatusMissing | kStatusOutside | kStatusUnusable;

}  // namespace

void SitMgrBase::Inside::FillFromDisk(SitUrlRec& record) const {
  record.status &= ~kStatusOfDisk;
  record.fileType = static_cast<std::int32_t>(ClassifyFileType(record.key));
  platform::FileStat stat;
  if (platform::Stat(record.key, stat) < 0) {
    record.status |= kStatusMissing;
    return;
  }
  record.status |= kStatusFound;
  if (!record.key.starts_with(SiteFolder())) record.status |= kStatusOutside;
  if (!stat.isRegular() || !IsSpelledAsOnDisk(record.key)) record.status |= kStatusUnusable;
  record.size = static_cast<std::int32_t>(stat.size);
  record.creationTime = stat.creationTime;
  record.modificationTime = stat.modificationTime;
  record.accessTime = stat.accessTime;
}

int SitMgrBase::InspectUrl(const UrlID& id) {
  SitUrlRec record;
  if (id.kind != kKindPath || GetUrlRec(id, record) < 0) {
    inside_->history->NewStep();
    return id.kind != kKindPath ? inside_->Fail(inside_->linkDB ? kSitBadArgument : kSitNotOpen)
                                : -1;
  }
  inside_->FillFromDisk(record);
  return SetUrlRec(id, record) < 0 ? -1 : record.status;
}

int SitMgrBase::Inside::AddInspected(const std::string& path) {
  if (const int found = urlDB->Find(path); found >= 0) return Succeed(found);
  history->NewStep();
  SitUrlRec record;
  record.key = path;
  FillFromDisk(record);
  const int index = urlDB->Add(record);
  return index < 0 ? Fail(kSitWriteFailed) : Succeed(index);
}

Document* SitMgrBase::Inside::LoadDocument(const std::string& path) {
  SitPageReader& reader = Reader();
  Document* document = (dom != nullptr ? dom : &reader.ownDom)->createDocument("HTML");
  if (document == nullptr || !reader.file.open(path, 0)) return document;
  if (reader.conversion.Import(reader.file.top(), reader.file.size(), 0)) {
    document->createNodes(reader.conversion.text(), static_cast<int>(reader.conversion.length()),
                          nullptr, true);
  }
  reader.file.close();
  return document;
}

void SitMgrBase::Inside::FreeDocument(Document* document) {
  (dom != nullptr ? dom : &Reader().ownDom)->deleteDocument(document);
}

int SitMgrBase::SaveTitle(const UrlID& page, const Document& document) {
  ExtractPage(document, LinkRules::Classic, inside_->Reader().rows);
  return inside_->SaveTexts(page, true, false);
}

int SitMgrBase::SaveMeta(const UrlID& page, const Document& document) {
  ExtractPage(document, LinkRules::Classic, inside_->Reader().rows);
  return inside_->SaveTexts(page, false, true);
}

int SitMgrBase::SaveLinkEach(const UrlID& page, const Document& document) {
  ExtractPage(document, LinkRules::Classic, inside_->Reader().rows);
  return inside_->SaveRows(page, document);
}

int SitMgrBase::Inside::SaveDocument(const UrlID& page, const Document& document) {
  if (DropForeLinks(page) < 0) return -1;
  ExtractPage(document, LinkRules::Classic, Reader().rows);
  if (SaveTexts(page, true, true) < 0) return -1;
  return SaveRows(page, document);
}

int SitMgrBase::Inside::SaveTexts(const UrlID& page, bool title, bool metas) {
  SitUrlRec record;
  if (manager.GetUrlRec(page, record) < 0) {
    history->NewStep();
    return -1;
  }
  const PageRows& rows = Reader().rows;
  if (title) record.title = rows.hasTitle ? rows.title : std::string_view();
  if (metas) {
    std::string* const texts[kMetaProperties] = {&record.lastModified, &record.expires,
                                                 &record.generator,    &record.keywords,
                                                 &record.description,  &record.contentType};
    for (std::string* text : texts) text->clear();
    for (const MetaRow& meta : rows.metas) {
      if (meta.key != MetaKey::kRefresh) *texts[static_cast<std::size_t>(meta.key)] = meta.content;
    }
  }
  return manager.SetUrlRec(page, record);
}

int SitMgrBase::Inside::SaveRows(const UrlID& page, const Document& document) {
  const SitBlockDB* store = UrlStoreOf(page);
  if (store == nullptr || page.kind != kKindPath) return -1;
  if (const int state = store->State(page.id); state != kSitOk) return Fail(state);
  SitPageReader& reader = Reader();
  const SiteRec profile = SiteNow();
  const std::string docRoot =
      profile.useDocRoot != 0 ? SiteString(profile.dir[0]).value_or("") : "";
  reader.resolver.BeginPage(docRoot.empty() ? SiteFolder() : docRoot, store->Key(page.id));

  const int before = FailedWrites();
  for (const MetaRow& meta : reader.rows.metas) {
    if (meta.key == MetaKey::kRefresh) RegisterLink(page, kSitLinkRefresh, meta.content, {});
  }
  bool registered = false;
  for (const LinkRow& row : reader.rows.links) {
    if (row.ofSameElement && !registered) continue;
    const int type = SitLinkTypeOf(row.type);
    UrlID target;
    registered = type != 0 && RegisterLink(page, type, row.target, row.alternative, &target) >= 0;
    if (registered && row.type == LT_APPLET && target.kind == kKindPath) {
      RegisterAppletFolder(page, target);
    }
  }
  for (const std::uint32_t index : document.elementsOf(Tag::kLink)) {
    const AttributeList attributes = document.element(index).attributes();
    const Attribute href = attributes.find(Attr::kHref);
    const Attribute rel = attributes.find(Attr::kRel);
    if (!href || !rel || !IsStyleSheetRel(rel.value())) continue;
    RegisterLink(page, kSitLinkStyleSheet, href.value(), {});
  }
  return Written(before);
}

int SitMgrBase::Inside::RegisterTarget(std::string_view target, UrlID& id) {
  SitPageReader& reader = Reader();
  if (target.empty()) return Fail(kSitBadArgument);
  switch (reader.resolver.Resolve(target, reader.target)) {
    case TargetKind::kLocal:
      if (reader.target.empty()) return Fail(kSitBadArgument);
      id = {kKindPath, AddInspected(reader.target)};
      break;
    case TargetKind::kExternal:
      id = {kKindUrl, manager.UrlAdd(kKindUrl, reader.target)};
      break;
    default:
      return Fail(kSitBadArgument);
  }
  return id.id < 0 ? -1 : Succeed();
}

int SitMgrBase::Inside::RegisterLink(const UrlID& page, int type, std::string_view target,
                                     std::string_view alternative, UrlID* to) {
  UrlID id;
  if (RegisterTarget(target, id) < 0) return -1;
  if (to != nullptr) *to = id;
  return RegisterLinkTo(page, id, type, target, alternative);
}

int SitMgrBase::Inside::RegisterLinkTo(const UrlID& page, const UrlID& to, int type,
                                       std::string_view text, std::string_view alternative) {
  const int link = manager.LinkAdd(page, to);
  if (link < 0) return -1;
  const auto record = ReadLink(link);
  if (!record) return -1;
  // A pair has one record: its type and texts are those of the first reference.
  if (record->refCount > 1) return Succeed(link);
  const int before = FailedWrites();
  record->linkType = type;
  if (!text.empty()) record->asIsUrlId = linkDB->AddString(std::string(text).c_str());
  if (!alternative.empty()) {
    record->imgAltId = linkDB->AddString(std::string(alternative).c_str());
  }
  linkDB->Write(*record);
  return Written(before, link);
}

int SitMgrBase::Inside::RegisterAppletFolder(const UrlID& page, const UrlID& applet) {
  const std::string folder(FolderOf(urlDB->Key(applet.id)));
  platform::FindData found;
  platform::FindHandle handle = platform::FindFirst(folder + "*.*", found);
  if (handle == nullptr) return Succeed();
  do {
    if (found.name == "." || found.name == "..") continue;
    const int file = AddInspected(folder + found.name);
    if (file >= 0) RegisterLinkTo(page, {kKindPath, file}, kSitLinkObject, found.name, {});
  } while (platform::FindNext(handle, found));
  platform::FindClose(handle);
  return Succeed();
}

int SitMgrBase::Inside::RegisterParents(const std::string& path, const UrlID& child) {
  const std::string root = SiteFolder();
  UrlID below = child;
  std::string folder(FolderOf(path));
  while (!root.empty() && folder.starts_with(root)) {
    const bool known = folderDB->Find(folder) >= 0;
    const int parent = manager.FolderAdd(folder);
    if (parent < 0 || manager.RelAdd({kKindFolder, parent}, below) < 0) return -1;
    // The folders above a known one are registered already.
    if (known) break;
    below = {kKindFolder, parent};
    folder = FolderOf(folder.substr(0, folder.size() - 1));
  }
  return Succeed();
}

}  // namespace zvrsit
