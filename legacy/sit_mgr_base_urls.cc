// Entries of the URL file and the junk file.
#include "legacy/sit_block_db.h"
#include "legacy/sit_hist.h"
#include "legacy/sit_mgr_inside.h"
#include "legacy/sit_pair_db.h"
#include "util/file_type.h"

namespace zvrsit {

SitBlockDB* SitMgrBase::Inside::StoreOf(int kind) {
  lastError = linkDB ? kSitBadArgument : kSitNotOpen;
  if (kind == kKindPath) return urlDB.get();
  if (kind == kKindUrl) return junkDB.get();
  return kind == kKindFolder ? folderDB.get() : nullptr;
}

SitBlockDB* SitMgrBase::Inside::UrlStoreOf(const UrlID& id) {
  SitBlockDB* store = StoreOf(id.kind);
  return id.kind == kKindFolder || id.id < 0 ? nullptr : store;
}

int SitMgrBase::UrlNum(int kind) {
  const SitBlockDB* store = inside_->UrlStoreOf({kind, 0});
  return store != nullptr ? inside_->Succeed(store->Num()) : -1;
}

int SitMgrBase::UrlAdd(int kind, const std::string& text) {
  inside_->history->NewStep();
  SitBlockDB* store = inside_->UrlStoreOf({kind, 0});
  if (store == nullptr || text.empty()) return -1;
  if (const int found = store->Find(text); found >= 0) return inside_->Succeed(found);
  SitUrlRec record;
  record.key = text;
  record.fileType = static_cast<std::int32_t>(ClassifyFileType(text));
  const int index = store->Add(record);
  return index < 0 ? inside_->Fail(kSitWriteFailed) : inside_->Succeed(index);
}

int SitMgrBase::UrlDel(const UrlID& id) {
  inside_->history->NewStep();
  SitBlockDB* store = inside_->UrlStoreOf(id);
  if (store == nullptr) return -1;
  const int result = store->Delete(id.id);
  return result == kSitOk ? inside_->Succeed() : inside_->Fail(result);
}

int SitMgrBase::UrlMove(const UrlID& id, const std::string& text) {
  inside_->history->NewStep();
  SitBlockDB* store = inside_->UrlStoreOf(id);
  if (store == nullptr || text.empty()) return -1;
  SitUrlRec record;
  int result = store->Read(id.id, record);
  if (result != kSitOk) return inside_->Fail(result);
  record.key = text;
  record.fileType = static_cast<std::int32_t>(ClassifyFileType(text));
  result = store->Write(id.id, record);
  return result == kSitOk ? inside_->Succeed() : inside_->Fail(result);
}

int SitMgrBase::UrlFind(const std::string& text, UrlID& id) {
  if (!inside_->linkDB) return inside_->Fail(kSitNotOpen);
  for (const int kind : {kKindPath, kKindUrl}) {
    const int index = inside_->StoreOf(kind)->Find(text);
    if (index < 0) continue;
    id = {kind, index};
    return inside_->Succeed();
  }
  return inside_->Fail(kSitNotFound);
}

std::string* SitMgrBase::UrlPath(const UrlID& id) {
  // A peep holds the URL file alone, with no site open.
  if (!inside_->urlDB) return inside_->FailText(kSitNotOpen);
  if (id.kind != kKindPath || id.id < 0) return inside_->FailText(kSitBadArgument);
  if (const int state = inside_->urlDB->State(id.id); state != kSitOk)
    return inside_->FailText(state);
  inside_->lastError = kSitOk;
  return new std::string(inside_->urlDB->Key(id.id));
}

std::string* SitMgrBase::UrlUrl(const UrlID& id) {
  if (id.kind == kKindPath) return UrlPath(id);
  const SitBlockDB* store = inside_->UrlStoreOf(id);
  if (store == nullptr) return nullptr;
  if (const int state = store->State(id.id); state != kSitOk) return inside_->FailText(state);
  inside_->lastError = kSitOk;
  return new std::string(store->Key(id.id));
}

int SitMgrBase::GetUrlRec(const UrlID& id, SitUrlRec& record) {
  SitBlockDB* store = inside_->UrlStoreOf(id);
  if (store == nullptr) return -1;
  const int result = store->Read(id.id, record);
  return result == kSitOk ? inside_->Succeed() : inside_->Fail(result);
}

int SitMgrBase::SetUrlRec(const UrlID& id, const SitUrlRec& record) {
  inside_->history->NewStep();
  SitBlockDB* store = inside_->UrlStoreOf(id);
  if (store == nullptr) return -1;
  if (const int state = store->State(id.id); state != kSitOk) return inside_->Fail(state);
  SitUrlRec stored = record;
  stored.key = store->Key(id.id);
  const int result = store->Write(id.id, stored);
  return result == kSitOk ? inside_->Succeed() : inside_->Fail(result);
}

int SitMgrBase::Inside::GetUrlNumber(const UrlID& id, std::int32_t SitUrlRec::*field) {
  SitUrlRec record;
  return manager.GetUrlRec(id, record) == 0 ? record.*field : -1;
}

int SitMgrBase::Inside::SetUrlNumber(const UrlID& id, std::int32_t SitUrlRec::*field, int value) {
  SitUrlRec record;
  if (manager.GetUrlRec(id, record) < 0) {
    history->NewStep();
    return -1;
  }
  record.*field = value;
  return manager.SetUrlRec(id, record);
}

std::string* SitMgrBase::Inside::GetUrlText(const UrlID& id, std::string SitUrlRec::*field) {
  SitUrlRec record;
  return manager.GetUrlRec(id, record) == 0 ? new std::string(record.*field) : nullptr;
}

int SitMgrBase::Inside::SetUrlText(const UrlID& id, std::string SitUrlRec::*field,
                                   const std::string& text) {
  SitUrlRec record;
  if (manager.GetUrlRec(id, record) < 0 || text.empty()) {
    history->NewStep();
    return lastError == kSitOk ? Fail(kSitBadArgument) : -1;
  }
  record.*field = text;
  return manager.SetUrlRec(id, record);
}

int SitMgrBase::SetUrlTitle(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::title, text);
}
std::string* SitMgrBase::GetUrlTitle(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::title);
}

int SitMgrBase::SetUrlLastModified(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::lastModified, text);
}
std::string* SitMgrBase::GetUrlLastModified(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::lastModified);
}

int SitMgrBase::SetUrlExpires(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::expires, text);
}
std::string* SitMgrBase::GetUrlExpires(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::expires);
}

int SitMgrBase::SetUrlGenerator(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::generator, text);
}
std::string* SitMgrBase::GetUrlGenerator(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::generator);
}

int SitMgrBase::SetUrlKeywords(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::keywords, text);
}
std::string* SitMgrBase::GetUrlKeywords(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::keywords);
}

int SitMgrBase::SetUrlDescription(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::description, text);
}
std::string* SitMgrBase::GetUrlDescription(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::description);
}

int SitMgrBase::SetUrlContentType(const UrlID& id, const std::string& text) {
  return inside_->SetUrlText(id, &SitUrlRec::contentType, text);
}
std::string* SitMgrBase::GetUrlContentType(const UrlID& id) {
  return inside_->GetUrlText(id, &SitUrlRec::contentType);
}

int SitMgrBase::SetUrlFileType(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::fileType, value);
}
int SitMgrBase::GetUrlFileType(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::fileType);
}

int SitMgrBase::SetUrlSize(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::size, value);
}
int SitMgrBase::GetUrlSize(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::size);
}

int SitMgrBase::SetUrlCreationTime(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::creationTime, value);
}
int SitMgrBase::GetUrlCreationTime(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::creationTime);
}

int SitMgrBase::SetUrlModificationTime(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::modificationTime, value);
}
int SitMgrBase::GetUrlModificationTime(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::modificationTime);
}

int SitMgrBase::SetUrlAccessTime(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::accessTime, value);
}
int SitMgrBase::GetUrlAccessTime(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::accessTime);
}

int SitMgrBase::SetUrlStatus(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::status, value);
}
int SitMgrBase::GetUrlStatus(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::status);
}

int SitMgrBase::SetUrlLastChecked(const UrlID& id, int value) {
  return inside_->SetUrlNumber(id, &SitUrlRec::lastChecked, value);
}
int SitMgrBase::GetUrlLastChecked(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::lastChecked);
}

int SitMgrBase::SetUrlFtpMember(const UrlID& id, int marks) {
  const int old = GetUrlFtpMember(id);
  return inside_->SetUrlNumber(id, &SitUrlRec::ftpMember,
                               inside_->lastError == kSitOk ? old | marks : marks);
}

int SitMgrBase::UnsetUrlFtpMember(const UrlID& id, int marks) {
  const int old = GetUrlFtpMember(id);
  return inside_->SetUrlNumber(id, &SitUrlRec::ftpMember,
                               inside_->lastError == kSitOk ? old & ~marks : 0);
}

int SitMgrBase::GetUrlFtpMember(const UrlID& id) {
  return inside_->GetUrlNumber(id, &SitUrlRec::ftpMember);
}

}  // namespace zvrsit
