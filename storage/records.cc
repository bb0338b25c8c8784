#include "storage/records.h"

#include "util/little_endian.h"
#include "util/server_fields.h"

namespace zvrsit {

namespace {

// The words that each class adds to its base, in the order in which they lie on disk. `word` is
// called with each of them; the same list serves writing and reading.

template <class Word>
void ForEachOwnWord(auto& record, const SiteBaseRec*, Word word) {
  word(record.id);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteNodeRec*, Word word) {
  word(record.name);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteUrlRec*, Word word) {
  word(record.state);
  word(record.lastChecked);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteRelRec*, Word word) {
  word(record.from.kind);
  word(record.from.id);
  word(record.to.kind);
  word(record.to.id);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteLinkRec*, Word word) {
  word(record.text);
  word(record.type);
  word(record.count);
  word(record.alternative);
  word(record.offset);
}

template <class Word>
void ForEachOwnWord(auto& record, const SitePathRec*, Word word) {
  word(record.fileType);
  word(record.title);
  word(record.exists);
  word(record.size);
  word(record.creationTime);
  word(record.modificationTime);
  word(record.accessTime);
  word(record.membership);
  word(record.listCount);
  word(record.listData);
  word(record.lastModified);
  word(record.expires);
  word(record.generator);
  word(record.keywords);
  word(record.description);
  word(record.contentType);
  word(record.metaText);
  word(record.unread);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteSiteRec*, Word word) {
  word(record.rebuildState);
  word(record.topFile);
  word(record.useDocRoot);
  word(record.defaultUrl);
  word(record.linkRules);
  word(record.servProf);
  for (auto& folder : record.folders) word(folder);
  word(record.urlFile);
  word(record.pathFile);
  word(record.linkFile);
  word(record.folderFile);
  word(record.relFile);
}

template <class Word>
void ForEachOwnWord(auto& record, const SiteServRec*, Word word) {
  ForEachServerField<SiteServRec>(
      [&](ServerField, std::int32_t SiteServRec::*field) { word(record.*field); });
}

// Writes or reads the own words of `record` after the `offset` bytes of its base, and gives the
// offset after them. A negative offset, a base that failed, is handed on.
template <class Rec>
int WriteOwnWords(const Rec& record, void* buffer, int offset) {
  if (buffer == nullptr || offset < 0) return -1;
  char* at = static_cast<char*>(buffer) + offset;
  ForEachOwnWord(record, &record, [&at](std::int32_t word) {
    StoreLE32(at, word);
    at += 4;
  });
  return static_cast<int>(at - static_cast<char*>(buffer));
}

template <class Rec>
int ReadOwnWords(Rec& record, const void* buffer, int offset) {
  if (buffer == nullptr || offset < 0) return -1;
  const char* at = static_cast<const char*>(buffer) + offset;
  ForEachOwnWord(record, &record, [&at](std::int32_t& word) {
    word = LoadLE32(at);
    at += 4;
  });
  return static_cast<int>(at - static_cast<const char*>(buffer));
}

}  // namespace

int SiteBaseRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, 0);
}
int SiteBaseRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, 0);
}

int SiteNodeRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteBaseRec::Serialize(buffer));
}
int SiteNodeRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteBaseRec::Deserialize(buffer));
}

int SiteUrlRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteNodeRec::Serialize(buffer));
}
int SiteUrlRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteNodeRec::Deserialize(buffer));
}

int SiteRelRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteBaseRec::Serialize(buffer));
}
int SiteRelRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteBaseRec::Deserialize(buffer));
}

int SiteLinkRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteRelRec::Serialize(buffer));
}
int SiteLinkRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteRelRec::Deserialize(buffer));
}

int SitePathRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteNodeRec::Serialize(buffer));
}
int SitePathRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteNodeRec::Deserialize(buffer));
}

int SiteSiteRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteNodeRec::Serialize(buffer));
}
int SiteSiteRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteNodeRec::Deserialize(buffer));
}

int SiteServRec::Serialize(void* buffer) const {
  return WriteOwnWords(*this, buffer, SiteNodeRec::Serialize(buffer));
}
int SiteServRec::Deserialize(const void* buffer) {
  return ReadOwnWords(*this, buffer, SiteNodeRec::Deserialize(buffer));
}

}  // namespace zvrsit
