// Links, folders and relations.
#include "legacy/sit_mgr_base.h"

#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_pair_db.h"

namespace zvrsit {

bool SitMgrBase::IsLinkEnd(const UrlID& id) {
  return (id.kind == kKindPath || id.kind == kKindUrl) && id.id >= 0;
}

bool SitMgrBase::IsRelEnd(const UrlID& id) {
  return (id.kind == kKindFolder || id.kind == kKindPath) && id.id >= 0;
}

int SitMgrBase::LinkNum() {
  return linkDB_ ? Succeed(linkDB_->Slots()) : Fail(kSitNotOpen);
}

int SitMgrBase::LinkAdd(const UrlID& from, const UrlID& to) {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsLinkEnd(from) || !IsLinkEnd(to)) return Fail(kSitBadArgument);
  const int before = FailedWrites();
  const int link = linkDB_->Add(from, to);
  return link < 0 ? Fail(kSitWriteFailed) : Written(before, link);
}

std::unique_ptr<SitPairRec> SitMgrBase::ReadLink(int link) {
  lastError_ = kSitNotOpen;
  if (!linkDB_) return nullptr;
  lastError_ = kSitPastEnd;
  if (link < 0 || link >= linkDB_->Slots()) return nullptr;
  lastError_ = kSitNotFound;
  auto record = linkDB_->Read(link);
  if (!record || record->id != link) return nullptr;
  lastError_ = kSitOk;
  return record;
}

int SitMgrBase::DropLink(SitPairRec& record, bool force) {
  const int before = FailedWrites();
  const int left = linkDB_->Delete(record, force);
  if (left > 0) return Succeed(left);
  // Undo restores the strings before the record, and takes the target's text first: so that one
  // goes last.
  if (record.imgAltId >= 0) linkDB_->DeleteString(record.imgAltId);
  if (record.asIsUrlId >= 0) linkDB_->DeleteString(record.asIsUrlId);
  return left < 0 ? Fail(kSitDeleteFailed) : Written(before, 0, kSitDeleteFailed);
}

int SitMgrBase::LinkDel(int link, int force) {
  history_->NewStep();
  const auto record = ReadLink(link);
  return record ? DropLink(*record, force != 0) : -1;
}

int SitMgrBase::LinkMove(int link, const UrlID& from, const UrlID& to) {
  history_->NewStep()->groupMark = kGroupBegin;
  if (!IsLinkEnd(from) || !IsLinkEnd(to)) return Fail(linkDB_ ? kSitBadArgument : kSitNotOpen);
  const auto old = ReadLink(link);
  if (!old) return -1;
  const std::string asIsUrl = linkDB_->GetString(old->asIsUrlId).value_or("");
  const std::string imgAlt = linkDB_->GetString(old->imgAltId).value_or("");
  if (LinkDel(link, 1) < 0) return -1;
  const int moved = LinkAdd(from, to);
  if (moved < 0) return -1;
  const auto record = ReadLink(moved);
  // What was said of a pair that was there already stays, and Undo finds it as it was.
  if (record && record->refCount == 1) {
    const int type = IsLinkType(old->linkType) ? old->linkType : record->linkType;
    if (SetLinkFields(moved, type, asIsUrl, imgAlt) < 0) return -1;
  }
  // A failed move is meant to have no end of its group.
  history_->NewStep()->groupMark = kGroupEnd;
  return Succeed(moved);
}

int SitMgrBase::SetLinkFields(int link, int type, const std::string& asIsUrl,
                              const std::string& imgAlt) {
  if (!asIsUrl.empty() && SetLinkAsIsUrl(link, asIsUrl) < 0) return -1;
  if (!imgAlt.empty() && SetLinkImgAlt(link, imgAlt) < 0) return -1;
  return SetLinkType(link, type);
}

int SitMgrBase::SetLinkType(int link, int type) {
  history_->NewStep();
  if (!IsLinkType(type)) return Fail(linkDB_ ? kSitBadArgument : kSitNotOpen);
  const auto record = ReadLink(link);
  if (!record) return -1;
  record->linkType = type;
  return linkDB_->Write(*record) < 0 ? Fail(kSitWriteFailed) : Succeed();
}

int SitMgrBase::GetLinkType(int link) {
  const auto record = ReadLink(link);
  return record ? record->linkType : -1;
}

int SitMgrBase::SetLinkText(int link, std::int32_t SitPairRec::*field, const std::string& text) {
  history_->NewStep();
  if (text.empty()) return Fail(linkDB_ ? kSitBadArgument : kSitNotOpen);
  const auto record = ReadLink(link);
  if (!record) return -1;
  const int before = FailedWrites();
  const int old = (*record).*field;
  const int added = linkDB_->AddString(text.c_str());
  if (added < 0) return Fail(kSitWriteFailed);
  (*record).*field = added;
  if (linkDB_->Write(*record) < 0) return Fail(kSitWriteFailed);
  // The old string goes last: Undo restores it first and gives its new id to the old record.
  if (old >= 0) linkDB_->DeleteString(old);
  return Written(before);
}

std::string* SitMgrBase::GetLinkText(int link, std::int32_t SitPairRec::*field) {
  const auto record = ReadLink(link);
  if (!record) return nullptr;
  const auto text = linkDB_->GetString((*record).*field);
  return text ? new std::string(*text) : FailText(kSitNoValue);
}

int SitMgrBase::SetLinkAsIsUrl(int link, const std::string& text) {
  return SetLinkText(link, &SitPairRec::asIsUrlId, text);
}

std::string* SitMgrBase::GetLinkAsIsUrl(int link) {
  return GetLinkText(link, &SitPairRec::asIsUrlId);
}

int SitMgrBase::SetLinkImgAlt(int link, const std::string& text) {
  return SetLinkText(link, &SitPairRec::imgAltId, text);
}

std::string* SitMgrBase::GetLinkImgAlt(int link) {
  return GetLinkText(link, &SitPairRec::imgAltId);
}

int SitMgrBase::LinkBothSides(int link, UrlID& from, UrlID& to) {
  const auto record = ReadLink(link);
  if (!record) return -1;
  from = record->from;
  to = record->to;
  return Succeed();
}

int SitMgrBase::GetLinkStatus(int link) {
  const auto record = ReadLink(link);
  if (!record) return -1;
  SitUrlRec target;
  return GetUrlRec(record->to, target) < 0 ? FailTarget() : Succeed(target.status);
}

int SitMgrBase::FailTarget() {
  return lastError_ == kSitNotFound ? -1 : Fail(kSitNoStore);
}

std::vector<int> SitMgrBase::LinksBetween(const UrlID& from, const UrlID& to) {
  lastError_ = linkDB_ ? kSitOk : kSitNotOpen;
  return linkDB_ ? linkDB_->Matching(from, to) : std::vector<int>();
}

int SitMgrBase::UrlForeLinks(const UrlID& id) {
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsLinkEnd(id)) return Fail(kSitBadArgument);
  const auto record = linkDB_->Find(id, kAnyUrlID);
  return record ? Succeed(record->id) : Fail(kSitNotFound);
}

int SitMgrBase::UrlBackLinks(const UrlID& id) {
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsLinkEnd(id)) return Fail(kSitBadArgument);
  const auto record = linkDB_->Find(kAnyUrlID, id);
  return record ? Succeed(record->id) : Fail(kSitNotFound);
}

int SitMgrBase::DropForeLinks(const UrlID& from) {
  // The last one first: Undo then adds them in their order, and their strings, of which each takes
  // the lowest free id, mostly get the ids that they had.
  const std::vector<int> links = linkDB_->Matching(from, kAnyUrlID);
  for (auto link = links.rbegin(); link != links.rend(); ++link) {
    if (LinkDel(*link, 1) < 0) return -1;
  }
  return Succeed();
}

int SitMgrBase::FolderNum() {
  return linkDB_ ? Succeed(folderDB_->Num()) : Fail(kSitNotOpen);
}

int SitMgrBase::FolderAdd(const std::string& folder) {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  if (folder.empty()) return Fail(kSitBadArgument);
  SitUrlRec record;
  record.key = folder.back() == '\\' ? folder : folder + '\\';
  if (const int found = folderDB_->Find(record.key); found >= 0) return Succeed(found);
  const int index = folderDB_->Add(record);
  return index < 0 ? Fail(kSitWriteFailed) : Succeed(index);
}

int SitMgrBase::FolderDel(int folder) {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  const int result = folderDB_->Delete(folder);
  return result == kSitOk ? Succeed() : Fail(result);
}

int SitMgrBase::FolderFind(const std::string& folder) {
  if (!linkDB_) return Fail(kSitNotOpen);
  const int found = folderDB_->Find(folder.ends_with('\\') ? folder : folder + '\\');
  return found < 0 ? Fail(kSitNotFound) : Succeed(found);
}

std::string* SitMgrBase::FolderName(int folder) {
  if (!linkDB_) return FailText(kSitNotOpen);
  if (const int state = folderDB_->State(folder); state != kSitOk) return FailText(state);
  lastError_ = kSitOk;
  return new std::string(folderDB_->Key(folder));
}

int SitMgrBase::RelAdd(const UrlID& parent, const UrlID& child) {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsRelEnd(parent) || !IsRelEnd(child)) return Fail(kSitBadArgument);
  const int before = FailedWrites();
  const std::vector<int> present = relDB_->Matching(parent, child);
  const int relation = present.empty() ? relDB_->Add(parent, child) : present.front();
  return relation < 0 ? Fail(kSitWriteFailed) : Written(before, relation);
}

int SitMgrBase::RelDel(const UrlID& parent, const UrlID& child) {
  history_->NewStep();
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsRelEnd(parent) || !IsRelEnd(child)) return Fail(kSitBadArgument);
  const std::vector<int> present = relDB_->Matching(parent, child);
  if (present.empty()) return Fail(kSitNotFound);
  const int before = FailedWrites();
  for (const int relation : present) {
    const auto record = relDB_->Read(relation);
    if (!record || relDB_->Delete(*record, true) < 0) return Fail(kSitDeleteFailed);
  }
  return Written(before, 0, kSitDeleteFailed);
}

int SitMgrBase::NextRelated(const UrlID& from, const UrlID& to, UrlID& other) {
  if (!linkDB_) return Fail(kSitNotOpen);
  if (!IsRelEnd(from == kAnyUrlID ? to : from)) return Fail(kSitBadArgument);
  const auto record = relDB_->Find(from, to);
  if (!record) return Fail(kSitNotFound);
  other = from == kAnyUrlID ? record->from : record->to;
  return Succeed();
}

int SitMgrBase::RelNextChild(const UrlID& parent, UrlID& child) {
  return NextRelated(parent, kAnyUrlID, child);
}

int SitMgrBase::RelNextParent(const UrlID& child, UrlID& parent) {
  return NextRelated(kAnyUrlID, child, parent);
}

}  // namespace zvrsit
