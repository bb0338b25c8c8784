// Links, folders and relations.
#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"

namespace zvrsit {

bool SitMgrBase::Inside::IsLinkEnd(const UrlID& id) {
  return (id.kind == kKindPath || id.kind == kKindUrl) && id.id >= 0;
}

bool SitMgrBase::Inside::IsRelEnd(const UrlID& id) {
  return (id.kind == kKindFolder || id.kind == kKindPath) && id.id >= 0;
}

int SitMgrBase::LinkNum() {
  return inside_->linkDB ? inside_->Succeed(inside_->linkDB->Slots()) : inside_->Fail(kSitNotOpen);
}

int SitMgrBase::LinkAdd(const UrlID& from, const UrlID& to) {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (!inside_->IsLinkEnd(from) || !inside_->IsLinkEnd(to)) return inside_->Fail(kSitBadArgument);
  const int before = inside_->FailedWrites();
  const int link = inside_->linkDB->Add(from, to);
  return link < 0 ? inside_->Fail(kSitWriteFailed) : inside_->Written(before, link);
}

std::unique_ptr<SitPairRec> SitMgrBase::Inside::ReadLink(int link) {
  lastError = kSitNotOpen;
  if (!linkDB) return nullptr;
  lastError = kSitPastEnd;
  if (link < 0 || link >= linkDB->Slots()) return nullptr;
  lastError = kSitNotFound;
  auto record = linkDB->Read(link);
  if (!record || record->id != link) return nullptr;
  lastError = kSitOk;
  return record;
}

int SitMgrBase::Inside::DropLink(SitPairRec& record, bool force) {
  const int before = FailedWrites();
  const int left = linkDB->Delete(record, force);
  if (left > 0) return Succeed(left);
  // Undo restores the strings before the record, and takes the target's text first: so that one
  // goes last.
  if (record.imgAltId >= 0) linkDB->DeleteString(record.imgAltId);
  if (record.asIsUrlId >= 0) linkDB->DeleteString(record.asIsUrlId);
  return left < 0 ? Fail(kSitDeleteFailed) : Written(before, 0, kSitDeleteFailed);
}

int SitMgrBase::LinkDel(int link, int force) {
  inside_->history->NewStep();
  const auto record = inside_->ReadLink(link);
  return record ? inside_->DropLink(*record, force != 0) : -1;
}

int SitMgrBase::LinkMove(int link, const UrlID& from, const UrlID& to) {
  inside_->history->NewStep()->groupMark = kGroupBegin;
  if (!inside_->IsLinkEnd(from) || !inside_->IsLinkEnd(to))
    return inside_->Fail(inside_->linkDB ? kSitBadArgument : kSitNotOpen);
  const auto old = inside_->ReadLink(link);
  if (!old) return -1;
  const std::string asIsUrl = inside_->linkDB->GetString(old->asIsUrlId).value_or("");
  const std::string imgAlt = inside_->linkDB->GetString(old->imgAltId).value_or("");
  if (LinkDel(link, 1) < 0) return -1;
  const int moved = LinkAdd(from, to);
  if (moved < 0) return -1;
  const auto record = inside_->ReadLink(moved);
  // What was said of a pair that was there already stays, and Undo finds it as it was.
  if (record && record->refCount == 1) {
    const int type = IsLinkType(old->linkType) ? old->linkType : record->linkType;
    if (inside_->SetLinkFields(moved, type, asIsUrl, imgAlt) < 0) return -1;
  }
  // A failed move is meant to have no end of its group.
  inside_->history->NewStep()->groupMark = kGroupEnd;
  return inside_->Succeed(moved);
}

int SitMgrBase::Inside::SetLinkFields(int link, int type, const std::string& asIsUrl,
                                      const std::string& imgAlt) {
  if (!asIsUrl.empty() && manager.SetLinkAsIsUrl(link, asIsUrl) < 0) return -1;
  if (!imgAlt.empty() && manager.SetLinkImgAlt(link, imgAlt) < 0) return -1;
  return manager.SetLinkType(link, type);
}

int SitMgrBase::SetLinkType(int link, int type) {
  inside_->history->NewStep();
  if (!IsLinkType(type)) return inside_->Fail(inside_->linkDB ? kSitBadArgument : kSitNotOpen);
  const auto record = inside_->ReadLink(link);
  if (!record) return -1;
  record->linkType = type;
  return inside_->linkDB->Write(*record) < 0 ? inside_->Fail(kSitWriteFailed) : inside_->Succeed();
}

int SitMgrBase::GetLinkType(int link) {
  const auto record = inside_->ReadLink(link);
  return record ? record->linkType : -1;
}

int SitMgrBase::Inside::SetLinkText(int link, std::int32_t SitPairRec::*field,
                                    const std::string& text) {
  history->NewStep();
  if (text.empty()) return Fail(linkDB ? kSitBadArgument : kSitNotOpen);
  const auto record = ReadLink(link);
  if (!record) return -1;
  const int before = FailedWrites();
  const int old = (*record).*field;
  const int added = linkDB->AddString(text.c_str());
  if (added < 0) return Fail(kSitWriteFailed);
  (*record).*field = added;
  if (linkDB->Write(*record) < 0) return Fail(kSitWriteFailed);
  // The old string goes last: Undo restores it first and gives its new id to the old record.
  if (old >= 0) linkDB->DeleteString(old);
  return Written(before);
}

std::string* SitMgrBase::Inside::GetLinkText(int link, std::int32_t SitPairRec::*field) {
  const auto record = ReadLink(link);
  if (!record) return nullptr;
  const auto text = linkDB->GetString((*record).*field);
  return text ? new std::string(*text) : FailText(kSitNoValue);
}

int SitMgrBase::SetLinkAsIsUrl(int link, const std::string& text) {
  return inside_->SetLinkText(link, &SitPairRec::asIsUrlId, text);
}

std::string* SitMgrBase::GetLinkAsIsUrl(int link) {
  return inside_->GetLinkText(link, &SitPairRec::asIsUrlId);
}

int SitMgrBase::SetLinkImgAlt(int link, const std::string& text) {
  return inside_->SetLinkText(link, &SitPairRec::imgAltId, text);
}

std::string* SitMgrBase::GetLinkImgAlt(int link) {
  return inside_->GetLinkText(link, &SitPairRec::imgAltId);
}

int SitMgrBase::LinkBothSides(int link, UrlID& from, UrlID& to) {
  const auto record = inside_->ReadLink(link);
  if (!record) return -1;
  from = record->from;
  to = record->to;
  return inside_->Succeed();
}

int SitMgrBase::GetLinkStatus(int link) {
  const auto record = inside_->ReadLink(link);
  if (!record) return -1;
  SitUrlRec target;
  return GetUrlRec(record->to, target) < 0 ? inside_->FailTarget()
                                           : inside_->Succeed(target.status);
}

int SitMgrBase::Inside::FailTarget() {
  return lastError == kSitNotFound ? -1 : Fail(kSitNoStore);
}

std::vector<int> SitMgrBase::LinksBetween(const UrlID& from, const UrlID& to) {
  inside_->lastError = inside_->linkDB ? kSitOk : kSitNotOpen;
  return inside_->linkDB ? inside_->linkDB->Matching(from, to) : std::vector<int>();
}

int SitMgrBase::UrlForeLinks(const UrlID& id) {
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (!inside_->IsLinkEnd(id)) return inside_->Fail(kSitBadArgument);
  const auto record = inside_->linkDB->Find(id, kAnyUrlID);
  return record ? inside_->Succeed(record->id) : inside_->Fail(kSitNotFound);
}

int SitMgrBase::UrlBackLinks(const UrlID& id) {
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (!inside_->IsLinkEnd(id)) return inside_->Fail(kSitBadArgument);
  const auto record = inside_->linkDB->Find(kAnyUrlID, id);
  return record ? inside_->Succeed(record->id) : inside_->Fail(kSitNotFound);
}

int SitMgrBase::Inside::DropForeLinks(const UrlID& from) {
  // The last one first: Undo then adds them in their order, and their strings, of which each takes
  // the lowest free id, mostly get the ids that they had.
  const std::vector<int> links = linkDB->Matching(from, kAnyUrlID);
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    if (manager.LinkDel(*link, 1) < 0) return -1;
  }
  return Succeed();
}

int SitMgrBase::FolderNum() {
  return inside_->linkDB ? inside_->Succeed(inside_->folderDB->Num()) : inside_->Fail(kSitNotOpen);
}

int SitMgrBase::FolderAdd(const std::string& folder) {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (folder.empty()) return inside_->Fail(kSitBadArgument);
  SitUrlRec record;
  record.key = folder.back() == '\\' ? folder : folder + '\\';
  if (const int found = inside_->folderDB->Find(record.key); found >= 0)
    return inside_->Succeed(found);
  const int index = inside_->folderDB->Add(record);
  return index < 0 ? inside_->Fail(kSitWriteFailed) : inside_->Succeed(index);
}

int SitMgrBase::FolderDel(int folder) {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const int result = inside_->folderDB->Delete(folder);
  return result == kSitOk ? inside_->Succeed() : inside_->Fail(result);
}

int SitMgrBase::FolderFind(const std::string& folder) {
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  const int found = inside_->folderDB->Find(folder.ends_with('\\') ? folder : folder + '\\');
  return found < 0 ? inside_->Fail(kSitNotFound) : inside_->Succeed(found);
}

std::string* SitMgrBase::FolderName(int folder) {
  if (!inside_->linkDB) return inside_->FailText(kSitNotOpen);
  if (const int state = inside_->folderDB->State(folder); state != kSitOk)
    return inside_->FailText(state);
  inside_->lastError = kSitOk;
  return new std::string(inside_->folderDB->Key(folder));
}

int SitMgrBase::RelAdd(const UrlID& parent, const UrlID& child) {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (!inside_->IsRelEnd(parent) || !inside_->IsRelEnd(child))
    return inside_->Fail(kSitBadArgument);
  const int before = inside_->FailedWrites();
  const std::vector<int> present = inside_->relDB->Matching(parent, child);
  const int relation = present.empty() ? inside_->relDB->Add(parent, child) : present.front();
  return relation < 0 ? inside_->Fail(kSitWriteFailed) : inside_->Written(before, relation);
}

int SitMgrBase::RelDel(const UrlID& parent, const UrlID& child) {
  inside_->history->NewStep();
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  if (!inside_->IsRelEnd(parent) || !inside_->IsRelEnd(child))
    return inside_->Fail(kSitBadArgument);
  const std::vector<int> present = inside_->relDB->Matching(parent, child);
  if (present.empty()) return inside_->Fail(kSitNotFound);
  const int before = inside_->FailedWrites();
  for (const int relation : present) {
    const auto record = inside_->relDB->Read(relation);
    if (!record || inside_->relDB->Delete(*record, true) < 0)
      return inside_->Fail(kSitDeleteFailed);
  }
  return inside_->Written(before, 0, kSitDeleteFailed);
}

int SitMgrBase::Inside::NextRelated(const UrlID& from, const UrlID& to, UrlID& other) {
  if (!linkDB) return Fail(kSitNotOpen);
  if (!IsRelEnd(from == kAnyUrlID ? to : from)) return Fail(kSitBadArgument);
  const auto record = relDB->Find(from, to);
  if (!record) return Fail(kSitNotFound);
  other = from == kAnyUrlID ? record->from : record->to;
  return Succeed();
}

int SitMgrBase::RelNextChild(const UrlID& parent, UrlID& child) {
  return inside_->NextRelated(parent, kAnyUrlID, child);
}

int SitMgrBase::RelNextParent(const UrlID& child, UrlID& parent) {
  return inside_->NextRelated(kAnyUrlID, child, parent);
}

}  // namespace zvrsit
