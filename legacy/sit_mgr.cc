// The operations that change the open site.
#include "legacy/sit_mgr.h"

#include <vector>

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_pair_db.h"
#include "util/file_type.h"
#include "util/mb_string.h"

namespace zvrsit {

int SitMgr::ClearLastError() {
  return Succeed();
}

int SitMgr::RecoverFromLastError() {
  if (lastError_ != kSitOk) Undo();
  SiteRebuildDB(0);
  return Succeed();
}

int SitMgr::Save(const std::string& path, Document* document) {
  const Group group(*history_);
  if (!linkDB_) return Fail(kSitNotOpen);
  if (path.empty()) return Fail(kSitBadArgument);
  const int file = RegisterFile(path);
  if (file < 0) return -1;
  const UrlID id(kKindPath, file);
  if (RegisterParents(path, id) < 0) return -1;
  if (ClassifyFileType(path) != FT_HTML) return Succeed();
  if (document != nullptr) return SaveDocument(id, *document);
  Document* loaded = LoadDocument(path);
  const int result = loaded != nullptr ? SaveDocument(id, *loaded) : Fail(kSitCannotOpen);
  FreeDocument(loaded);
  return result;
}

int SitMgr::Remove(const std::string& path) {
  const Group group(*history_);
  if (!linkDB_) return Fail(kSitNotOpen);
  const UrlID id(kKindPath, urlDB_->Find(path));
  if (id.id < 0) return Fail(kSitNotFound);
  if (DropForeLinks(id) < 0) return -1;
  if (linkDB_->Matching(kAnyUrlID, id).empty()) return DropEntry(id);
  SitUrlRec kept;
  kept.status = kStatusMissing;
  kept.fileType = GetUrlFileType(id);
  kept.ftpMember = GetUrlFtpMember(id);
  return SetUrlRec(id, kept);
}

int SitMgr::DropEntry(const UrlID& id) {
  for (const int relation : relDB_->Matching(kAnyUrlID, id)) {
    const auto record = relDB_->Read(relation);
    if (record && RelDel(record->from, record->to) < 0) return -1;
  }
  return UrlDel(id);
}

int SitMgr::Move(const std::string& from, const std::string& to) {
  const Group group(*history_);
  return Remove(from) < 0 ? -1 : Save(to);
}

int SitMgr::SiteRebuildDB(int complete) {
  const Group group(*history_);
  if (SitMgrBase::SiteRebuildDB(complete) < 0) return -1;
  // A site without a top file has no family; that is no failure of the rebuild.
  if (UpdateLinkFamily() < 0 && lastError_ != kSitNoValue && lastError_ != kSitNotFound) return -1;
  // Only the end of the group is left, and undoing that does nothing.
  history_->Clear();
  return Succeed();
}

int SitMgr::UpdateLinkFamily() {
  const Group group(*history_);
  if (!linkDB_) return Fail(kSitNotOpen);
  const std::string top = TopFile();
  if (top.empty()) return Fail(kSitNoValue);
  const int first = urlDB_->Find(top);
  if (first < 0) return Fail(kSitNotFound);
  std::vector<char> reached(static_cast<std::size_t>(urlDB_->Num()), 0);
  std::vector<int> work = {first};
  reached[static_cast<std::size_t>(first)] = 1;
  while (!work.empty()) {
    const int file = work.back();
    work.pop_back();
    for (const int link : linkDB_->Matching({kKindPath, file}, kAnyUrlID)) {
      const auto record = linkDB_->Read(link);
      if (!record || record->to.kind != kKindPath || urlDB_->State(record->to.id) != kSitOk) {
        continue;
      }
      char& mark = reached[static_cast<std::size_t>(record->to.id)];
      if (mark == 0) work.push_back(record->to.id);
      mark = 1;
    }
  }
  for (int i = 0; i < urlDB_->Num(); ++i) {
    const UrlID id(kKindPath, i);
    const int marks = GetUrlFtpMember(id);
    const bool isMember = reached[static_cast<std::size_t>(i)] != 0;
    if (lastError_ != kSitOk || ((marks & kMemberReached) != 0) == isMember) continue;
    if (isMember ? SetUrlFtpMember(id, kMemberReached) < 0
                 : UnsetUrlFtpMember(id, kMemberReached) < 0) {
      return -1;
    }
  }
  return Succeed();
}

int SitMgr::SetUrlProperty(const std::string& url, const SitUrlRec& property) {
  const Group group(*history_);
  UrlID id;
  return UrlFind(url, id) < 0 ? -1 : SetUrlRec(id, property);
}

int SitMgr::SetLinkProperty(const std::string& from, const std::string& to,
                            const SitLinkProperty& property) {
  const Group group(*history_);
  const int link = FindLink(from, to);
  if (link < 0) return -1;
  if (!IsLinkType(property.type)) return Fail(kSitBadArgument);
  return SetLinkFields(link, property.type, property.asIsUrl, property.imgAlt);
}

int SitMgr::FolderNew(const std::string& folder) {
  const Group group(*history_);
  const int added = FolderAdd(folder);
  if (added < 0) return -1;
  const std::string& path = folderDB_->Key(added);
  if (RegisterParents(path.substr(0, path.size() - 1), {kKindFolder, added}) < 0) return -1;
  return Succeed(added);
}

}  // namespace zvrsit
