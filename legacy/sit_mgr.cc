// The operations that change the open site.
#include "legacy/sit_mgr.h"

#include <vector>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

int SitMgr::ClearLastError() {
  return inside_->Succeed();
}

int SitMgr::RecoverFromLastError() {
  if (inside_->lastError != kSitOk) Undo();
  SiteRebuildDB(0);
  return inside_->Succeed();
}

int SitMgr::Save(const std::string& path, Document* document) {
  const Inside::Group group(*inside_->history);
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (path.empty()) return inside_->Fail(kSitBadArgument);
  const int file = inside_->RegisterFile(path);
  if (file < 0) return -1;
  const UrlID id(kKindPath, file);
  if (inside_->RegisterParents(path, id) < 0) return -1;
  if (ClassifyFileType(path) != FT_HTML) return inside_->Succeed();
  if (document != nullptr) return inside_->SaveDocument(id, *document);
  Document* loaded = inside_->LoadDocument(path);
  const int result =
      loaded != nullptr ? inside_->SaveDocument(id, *loaded) : inside_->Fail(kSitCannotOpen);
  inside_->FreeDocument(loaded);
  return result;
}

int SitMgr::Remove(const std::string& path) {
  const Inside::Group group(*inside_->history);
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const UrlID id(kKindPath, inside_->urlDB->Find(path));
  if (id.id < 0) return inside_->Fail(kSitNotFound);
  if (inside_->DropForeLinks(id) < 0) return -1;
  if (inside_->linkDB->Matching(kAnyUrlID, id).empty()) return DropEntry(id);
  SitUrlRec kept;
  kept.status = kStatusMissing;
  kept.fileType = GetUrlFileType(id);
  kept.ftpMember = GetUrlFtpMember(id);
  return SetUrlRec(id, kept);
}

int SitMgr::DropEntry(const UrlID& id) {
  for (const int relation : inside_->relDB->Matching(kAnyUrlID, id)) {
    const auto record = inside_->relDB->Read(relation);
    if (record && RelDel(record->from, record->to) < 0) return -1;
  }
  return UrlDel(id);
}

int SitMgr::Move(const std::string& from, const std::string& to) {
  const Inside::Group group(*inside_->history);
  return Remove(from) < 0 ? -1 : Save(to);
}

int SitMgr::SiteRebuildDB(int complete) {
  const Inside::Group group(*inside_->history);
  if (SitMgrBase::SiteRebuildDB(complete) < 0) return -1;
  // A site without a top file has no family; that is no failure of the rebuild.
  if (UpdateLinkFamily() < 0 && inside_->lastError != kSitNoValue &&
      inside_->lastError != kSitNotFound)
    return -1;
  // Only the end of the group is left, and undoing that does nothing.
  inside_->history->Clear();
  return inside_->Succeed();
}

int SitMgr::UpdateLinkFamily() {
  const Inside::Group group(*inside_->history);
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const std::string top = inside_->TopFile();
  if (top.empty()) return inside_->Fail(kSitNoValue);
  const int first = inside_->urlDB->Find(top);
  if (first < 0) return inside_->Fail(kSitNotFound);
  std::vector<char> reached(static_cast<std::size_t>(inside_->urlDB->Num()), 0);
  std::vector<int> work = {first};
  reached[static_cast<std::size_t>(first)] = 1;
  while (!work.empty()) {
    const int file = work.back();
    work.pop_back();
    for (const int link : inside_->linkDB->Matching({kKindPath, file}, kAnyUrlID)) {
      const auto record = inside_->linkDB->Read(link);
      if (!record || record->to.kind != kKindPath ||
          inside_->urlDB->State(record->to.id) != kSitOk) {
        continue;
      }
      char& mark = reached[static_cast<std::size_t>(record->to.id)];
      if (mark == 0) work.push_back(record->to.id);
      mark = 1;
    }
  }
  for (int i = 0; i < inside_->urlDB->Num(); ++i) {
    const UrlID id(kKindPath, i);
    const int marks = GetUrlFtpMember(id);
    const bool isMember = reached[static_cast<std::size_t>(i)] != 0;
    if (inside_->lastError != kSitOk || ((marks & kMemberReached) != 0) == isMember) continue;
    if (isMember ? SetUrlFtpMember(id, kMemberReached) < 0
                 : UnsetUrlFtpMember(id, kMemberReached) < 0) {
      return -1;
    }
  }
  return inside_->Succeed();
}

int SitMgr::SetUrlProperty(const std::string& url, const SitUrlRec& property) {
  const Inside::Group group(*inside_->history);
  UrlID id;
  return UrlFind(url, id) < 0 ? -1 : SetUrlRec(id, property);
}

int SitMgr::SetLinkProperty(const std::string& from, const std::string& to,
                            const SitLinkProperty& property) {
  const Inside::Group group(*inside_->history);
  const int link = FindLink(from, to);
  if (link < 0) return -1;
  if (!IsLinkType(property.type)) return inside_->Fail(kSitBadArgument);
  return inside_->SetLinkFields(link, property.type, property.asIsUrl, property.imgAlt);
}

int SitMgr::FolderNew(const std::string& folder) {
  const Inside::Group group(*inside_->history);
  const int added = FolderAdd(folder);
  if (added < 0) return -1;
  const std::string& path = inside_->folderDB->Key(added);
  if (inside_->RegisterParents(path.substr(0, path.size() - 1), {kKindFolder, added}) < 0)
    return -1;
  return inside_->Succeed(added);
}

}  // namespace zvrsit
